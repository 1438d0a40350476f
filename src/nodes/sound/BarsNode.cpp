#include "nodes/sound/BarsNode.h"

#include <algorithm>

#include "nodes/sound/LocalCurve.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CBarsNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "Bars", [] { return static_cast<CNode *>(new CBarsNode); },
                             "Draws a set of bars by local evaluation of input");
  info->AddInPort(new CPortInt("NumBars", "Number of bars", 512, 0, 10000));
  info->AddInPort(new CPortFloat("BarHeight", "Height of each bar (Local)", 1.0f, 0.1f, -10000.0f, 10000.0f));
  info->AddInPort(new CPortColor("Color", "Color of the bars", {1, 1, 1, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortEffect("OutlineEffect", "Effect to apply to the outline of the bars"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CBarsNode::Init() {
  m_NumBars = InPort<CPortInt>("NumBars");
  m_BarHeight = InPort<CPortFloat>("BarHeight");
  m_Color = InPort<CPortColor>("Color");
  InitBatchPorts("OutlineEffect");
  return true;
}

void CBarsNode::Update(float time, FrameInfo *) {
  if (m_Updated) return;
  UpdateInPorts(time);
  const int n = LocalCurveCount(m_NumBars->m_Value);
  m_Lines.SetSize(n);
  const float color[4] = {m_Color->m_Value.r, m_Color->m_Value.g, m_Color->m_Value.b, m_Color->m_Value.a};
  // One bar has no step; its single position is 0.
  const float step = n > 1 ? 1.0f / static_cast<float>(n - 1) : 0.0f;
  for (int i = 0; i < n; ++i) {
    const float t = static_cast<float>(i) * step;
    const float h = SampleLocal(*m_BarHeight, t);
    m_Lines.AddLine(t - 0.5f, 0.0f, 0.0f, t - 0.5f, h, 0.0f, color);
  }
  PublishObject();
}
