#include "nodes/object/StarfieldNode.h"

#include <algorithm>
#include <cmath>

#include "nodes/object/SimRandom.h"
#include "scene/BatchDrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
void RandomColor(float out[4], const Color4f &lo, const Color4f &hi) {
  out[0] = RandomRange(lo.r, hi.r);
  out[1] = RandomRange(lo.g, hi.g);
  out[2] = RandomRange(lo.b, hi.b);
  out[3] = RandomRange(lo.a, hi.a);
}
}  // namespace

CNodeInfo *CStarfieldNode::CreateInfo() {
  auto *info = new CNodeInfo(11, "Starfield", [] { return static_cast<CNode *>(new CStarfieldNode); }, "A starfield");
  const Vec3f vmin{-10000, -10000, -10000}, vmax{10000, 10000, 10000};
  const Color4f black{0, 0, 0, 0}, white{1, 1, 1, 1};
  info->AddInPort(new CPortEffect("Effect", "Effect"));
  info->AddInPort(new CPortObject("Object", "Object"));
  info->AddInPort(new CPortInt("NumStars", "Number of stars", 5000, 0, 10000));
  info->AddInPort(new CPortVector("Dir", "Star movement dir", {0, 0, 0.25f}, {0.01f, 0.01f, 0.01f}, vmin, vmax));
  info->AddInPort(new CPortVector("CamRot", "Camera rotation", {0, 0, 0}, {0.1f, 0.1f, 0.1f}, vmin, vmax));
  info->AddInPort(new CPortVector("SpaceSize", "Size of space", {2, 2, 10}, {0.1f, 0.1f, 0.1f},
                                  {0.001f, 0.001f, 0.001f}, vmax));
  info->AddInPort(new CPortColor("StartColMin", "Star start color (Min)", black, black, white));
  info->AddInPort(new CPortColor("StartColMax", "Star start color (Max)", black, black, white));
  info->AddInPort(new CPortColor("EndColMin", "Star end color (Min)", white, black, white));
  info->AddInPort(new CPortColor("EndColMax", "Star end color (Max)", white, black, white));
  info->AddInPort(new CPortVector("StarSize", "Size of a single star (Used for all but point and line modes)",
                                  {0.01f, 0.01f, 0.01f}, {0.01f, 0.01f, 0.01f}, {0.001f, 0.001f, 0.001f}, vmax));
  info->AddInPort(PointPrimTypePort(1));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CStarfieldNode::Init() {
  InitBatchPorts("Effect");
  m_Object = InPort<CPortObject>("Object");
  m_NumStars = InPort<CPortInt>("NumStars");
  m_Dir = InPort<CPortVector>("Dir");
  m_SpaceSize = InPort<CPortVector>("SpaceSize");
  m_StartMin = InPort<CPortColor>("StartColMin");
  m_StartMax = InPort<CPortColor>("StartColMax");
  m_EndMin = InPort<CPortColor>("EndColMin");
  m_EndMax = InPort<CPortColor>("EndColMax");
  m_StarSize = InPort<CPortVector>("StarSize");
  m_PrimType = InPort<CPortInt>("PrimType");
  return true;
}

void CStarfieldNode::NewColors(Star &star) const {
  RandomColor(star.startColor, m_StartMin->m_Value, m_StartMax->m_Value);
  RandomColor(star.endColor, m_EndMin->m_Value, m_EndMax->m_Value);
}

void CStarfieldNode::Update(float, FrameInfo *frame) {
  if (m_Updated || !frame) return;
  UpdateInPorts(frame->Time);
  const int count = std::clamp(m_NumStars->m_Value, 0, 10000);
  const int type = std::clamp(m_PrimType->m_Value, static_cast<int>(PRIM_Point), static_cast<int>(PRIM_Object));
  if (m_NumStars->m_Changed && static_cast<int>(m_Stars.size()) <= count) {
    const int old = static_cast<int>(m_Stars.size());
    m_Stars.resize(static_cast<size_t>(count) + 100);
    for (int i = old; i < count; ++i) {
      m_Stars[i].position = {DrawSigned(), DrawSigned(), DrawSigned()};
      NewColors(m_Stars[i]);
    }
  }
  if (m_PrimType->m_Changed || m_NumStars->m_Changed || type != m_Points.PrimitiveType() ||
      m_Points.Count() != count) {
    m_Points.SetSize(count, type);
    m_DirtyUnits = ALL_UNITS;
  }
  const CVector3 dir = ToVector(m_Dir->m_Value);
  const CVector3 move = dir * frame->DeltaTime;
  const Vec3f space = m_SpaceSize->m_Value;
  const Vec3f half{m_StarSize->m_Value.x * 0.5f, m_StarSize->m_Value.y * 0.5f, m_StarSize->m_Value.z * 0.5f};
  for (int i = 0; i < count; ++i) {
    Star &s = m_Stars[i];
    std::copy(std::begin(s.color), std::end(s.color), s.previousColor);
    bool wrapped = false;
    for (float *c : {&s.position.x, &s.position.y, &s.position.z}) {
      if (*c > 1.0f) {
        *c = std::fmod(*c - 1.0f, 2.0f) - 1.0f;
        wrapped = true;
      } else if (*c < -1.0f) {
        *c = std::fmod(*c + 1.0f, 2.0f) + 1.0f;
        wrapped = true;
      }
    }
    if (wrapped) NewColors(s);
    s.position = s.position - move;
    const float e = 1.0f - std::min(Length(s.position), 1.0f);
    for (int c = 0; c < 4; ++c) s.color[c] = s.startColor[c] + e * (s.endColor[c] - s.startColor[c]);
    const CVector3 p{s.position.x * space.x, s.position.y * space.y, s.position.z * space.z};
    const uint32_t color = PackColorRounded(s.color);
    if (type == PRIM_Point) {
      m_Points.Points()[i] = {p.x, p.y, p.z, color};
    } else if (type == PRIM_Line) {
      const CVector3 tail = s.position + dir * 0.01f;
      m_Points.Lines()[i] = {{p.x, p.y, p.z, color},
                             {tail.x * space.x, tail.y * space.y, tail.z * space.z, PackColorRounded(s.previousColor)}};
    } else {
      m_Points.Sprites()[i] = {p.x, p.y, p.z, color, half.x, half.y, half.z};
    }
  }
  PublishObject();
}

void CStarfieldNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  AddPointsToDrawList(list, parents, camera, m_EffectPort->m_Value, m_Points, 0, m_Object);
}
