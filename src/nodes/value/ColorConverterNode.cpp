#include "nodes/value/ColorConverterNode.h"

#include "nodes/value/PullPorts.h"
#include "scene/PortValues.h"

CNodeInfo *CColorConverterNode::MakeInfo(const char *typeName, CNodeInfo::Creator creator, const char *desc,
                                         CPortFloat *first, CPortFloat *second, CPortFloat *third) {
  auto *info = new CNodeInfo(6, typeName, creator, desc);
  info->AddInPort(first);
  info->AddInPort(second);
  info->AddInPort(third);
  info->AddInPort(new CPortFloat("Alpha", "The alpha color component", 1.0f, 0.01f, 0.0f, 1.0f));
  info->AddOutPort(new CPortColor("Color", "Color", {0, 0, 0, 0}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  return info;
}

bool CColorConverterNode::Init() {
  // MakeInfo declares the three components first.
  for (int i = 0; i < 3; ++i) m_Components[i] = dynamic_cast<CPortFloat *>(m_InPorts[i]);
  m_Alpha = InPort<CPortFloat>("Alpha");
  m_Color = OutPort<CPortColor>("Color");
  return true;
}

void CColorConverterNode::Update(float time, FrameInfo *) {
  CPortFloat *const *c = m_Components;
  if (m_PullBackwards)
    PullPorts(time, {m_Alpha, c[2], c[1], c[0]});
  else
    PullPorts(time, {m_Alpha, c[0], c[1], c[2]});
  const RGBf rgb = Convert(c[0]->m_Value, c[1]->m_Value, c[2]->m_Value);
  m_Color->m_Value = {rgb.r, rgb.g, rgb.b, m_Alpha->m_Value};
  m_Color->m_Changed = true;
}

RGBf CColorConverterNode::Saturate(RGBf c) {
  return {ApplyRange(c.r, 0.0f, 1.0f), ApplyRange(c.g, 0.0f, 1.0f), ApplyRange(c.b, 0.0f, 1.0f)};
}
