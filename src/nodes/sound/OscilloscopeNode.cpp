#include "nodes/sound/OscilloscopeNode.h"

#include "nodes/sound/LocalCurve.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *COscilloscopeNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "Oscilloscope", [] { return static_cast<CNode *>(new COscilloscopeNode); },
                             "A oscilloscope");
  info->AddInPort(new CPortInt("NumLines", "Number of line segments", 576, 0, 10000));
  info->AddInPort(new CPortColor("Color", "Color of the lines", {1, 1, 1, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortFloat("Wave", "The wave that should be shown (Local)", 0.0f, 0.01f, 0.0f, 1.0f));
  info->AddInPort(new CPortEffect("Effect", "Effect to apply to the lines"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool COscilloscopeNode::Init() {
  m_NumLines = InPort<CPortInt>("NumLines");
  m_Color = InPort<CPortColor>("Color");
  m_Wave = InPort<CPortFloat>("Wave");
  InitBatchPorts("Effect");
  return true;
}

void COscilloscopeNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame ? frame->Time : 0.0f);
  const int n = LocalCurveCount(m_NumLines->m_Value);
  m_Lines.SetSize(n);
  const float color[4] = {m_Color->m_Value.r, m_Color->m_Value.g, m_Color->m_Value.b, m_Color->m_Value.a};
  if (n > 0) {
    const float step = 1.0f / static_cast<float>(n);
    float px = -0.5f, py = SampleLocal(*m_Wave, 0.0f);
    for (int i = 1; i <= n; ++i) {
      const float t = static_cast<float>(i) * step;
      const float y = SampleLocal(*m_Wave, t);
      m_Lines.AddLine(px, py, 0.0f, t - 0.5f, y, 0.0f, color);
      px = t - 0.5f;
      py = y;
    }
  }
  PublishObject();
}
