#include "nodes/object/GalaxyNode.h"

#include <algorithm>
#include <cmath>

#include "nodes/object/SimRandom.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CGalaxyNode::CreateInfo() {
  auto *info = new CNodeInfo(11, "Galaxy", [] { return static_cast<CNode *>(new CGalaxyNode); },
                             "A galaxy simulation.");
  info->AddInPort(new CPortEffect("Effect", "Effect"));
  info->AddInPort(new CPortInt("NumStars", "Number of stars", 10000, 0, 1000000));
  info->AddInPort(new CPortFloat("GalaxyRadius", "Radius of galaxy", 1.0f, 0.1f, -100000.0f, 100000.0f));
  info->AddInPort(new CPortFloat("Speed", "Speed of stars", 0.002f, 0.001f, -10000.0f, 10000.0f));
  info->AddInPort(new CPortFloat("EllipseRatio", "Ellipse ratio", 0.85f, 0.001f, -10000.0f, 10000.0f));
  info->AddInPort(new CPortFloat("Twisting", "Twisting factor", 8.0f, 0.001f, -10000.0f, 10000.0f));
  info->AddInPort(new CPortColor("Color", "Color of particle", {0.8f, 0.9f, 1, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortFloat("Size", "The size of the stars when created", 0.1f, 0.1f, 0.0f, 10000.0f));
  info->AddInPort(new CPortFloat("SizeVar", "The size of the stars when created variance", 0.1f, 0.1f, -10000.0f,
                                 10000.0f));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CGalaxyNode::Init() {
  InitBatchPorts("Effect");
  m_NumStars = InPort<CPortInt>("NumStars");
  m_Radius = InPort<CPortFloat>("GalaxyRadius");
  m_Speed = InPort<CPortFloat>("Speed");
  m_Ellipse = InPort<CPortFloat>("EllipseRatio");
  m_Twisting = InPort<CPortFloat>("Twisting");
  m_Size = InPort<CPortFloat>("Size");
  return true;
}

void CGalaxyNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame ? frame->Time : 0.0f);
  const int count = std::clamp(m_NumStars->m_Value, 0, 1000000);
  const float radius = m_Radius->m_Value;
  if (m_NumStars->m_Changed || static_cast<int>(m_Stars.size()) != count) {
    m_Stars.resize(count);
    for (GalaxyStar &s : m_Stars) {
      s.angle = RandomRange(0.0f, 6.2831855f);
      s.radius = RandomRange(1.0f, radius);
      s.color[0] = 0.5f, s.color[1] = 0.6f, s.color[2] = 0.9f, s.color[3] = 1.0f;
    }
  }
  if (count > m_Capacity || m_Points.PrimitiveType() != PRIM_Texture) {
    m_Capacity = std::max(count, m_Capacity);
    m_Points.SetSize(m_Capacity, PRIM_Texture);
    m_DirtyUnits = ALL_UNITS;
  }
  m_Points.SetCount(count);
  // A radius of 0 has no twist rather than an infinite one.
  const float q = radius != 0.0f ? m_Twisting->m_Value / radius : 0.0f;
  const float speed = m_Speed->m_Value, ratio = m_Ellipse->m_Value, size = m_Size->m_Value;
  CRenderPoints::Sprite *out = m_Points.Sprites();
  for (int i = 0; i < count; ++i) {
    GalaxyStar &s = m_Stars[i];
    s.angle += speed;  // per update, not per second
    const float r = s.radius;
    const float a = r * std::sin(s.angle), b = r * ratio * std::cos(s.angle), w = r * q;
    const float sw = std::sin(w), cw = std::cos(w);
    out[i] = {a * sw + b * cw, a * cw - b * sw, 0.0f, PackColorRounded(s.color), size, size, size};
  }
  PublishObject();
}
