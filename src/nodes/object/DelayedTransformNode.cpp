#include "nodes/object/DelayedTransformNode.h"

#include <algorithm>
#include <cmath>

#include "nodes/object/ObjectCopies.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"

namespace {
using Quat = CDelayedTransformNode::Quat;
constexpr float kDegToRad = 0.01745329238474369f;

Quat operator*(const Quat &a, const Quat &b) {  // Hamilton product
  return {a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y, a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x,
          a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w, a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z};
}

// qz * qy * qx of the angles in degrees.
Quat FromAngles(const Vec3f &degrees) {
  auto half = [](float deg, float &s, float &c) {
    s = std::sin(deg * kDegToRad * 0.5f);
    c = std::cos(deg * kDegToRad * 0.5f);
  };
  float sx, cx, sy, cy, sz, cz;
  half(degrees.x, sx, cx);
  half(degrees.y, sy, cy);
  half(degrees.z, sz, cz);
  return Quat{0, 0, sz, cz} * Quat{0, sy, 0, cy} * Quat{sx, 0, 0, cx};
}

// Not normalized: the weights alone keep it near unit length.
Quat Slerp(const Quat &a, const Quat &b, float t) {
  const float d = a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
  const float dd = d > 0 ? d : -d;
  float s0 = 1 - t, s1 = t;
  if (1 - dd > 0.001f) {
    const float theta = std::acos(dd), s = std::sin(theta);
    s0 = std::sin(theta * (1 - t)) / s;
    s1 = std::sin(theta * t) / s;
  }
  if (d <= 0) s1 = -s1;
  return {s0 * a.x + s1 * b.x, s0 * a.y + s1 * b.y, s0 * a.z + s1 * b.z, s0 * a.w + s1 * b.w};
}

CVector3 Lerp(const CVector3 &a, const CVector3 &b, float f) { return a + (b - a) * f; }
Quat Lerp(const Quat &a, const Quat &b, float f) {
  return {a.x + (b.x - a.x) * f, a.y + (b.y - a.y) * f, a.z + (b.z - a.z) * f, a.w + (b.w - a.w) * f};
}

template <typename T>
void Fix(CDelayedTransformNode::Track<T> &track, const T &value) {
  track = {value, value, value};
}
template <typename T>
void Shift(CDelayedTransformNode::Track<T> &track, const CDelayedTransformNode::Track<T> &before) {
  track.from = track.current;
  track.to = before.to;
}
}  // namespace

CNodeInfo *CDelayedTransformNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "DelayedTransform", [] { return static_cast<CNode *>(new CDelayedTransformNode); },
                             "Rotates a set of objects at different scales using a delay");
  info->AddInPort(new CPortObject("Object", "Object"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  info->AddInPort(new CPortInt("NumObjects", "Number of objects", 5, 1, 1000));
  info->AddInPort(
      new CPortFloat("Delay", "Delay before moving current transform to the next object", 0.5f, 0.01f, 0, 100000));
  info->AddInPort(ObjectVectorPort("PosDelta", "Position change between each object", {0, 0, 0}));
  info->AddInPort(ObjectVectorPort("RotDelta", "Rotation rotation change between each object", {0, 0, 0}));
  info->AddInPort(
      ObjectVectorPort("ScaleDelta", "How much to scale each object relative to the last object", {0.1f, 0.1f, 0.1f}));
  info->AddInPort(ObjectVectorPort("DelayedPosDelta", "Delayed position", {0, 0, 0}));
  info->AddInPort(ObjectVectorPort("DelayedRotDelta", "Delayed rotation", {0, 0, 0}));
  info->AddInPort(ObjectVectorPort("DelayedScaleDelta", "How much to scale each object relative to the last object",
                                   {0.1f, 0.1f, 0.1f}));
  info->AddInPort(ObjectColorPort("Color", "The color of the center object"));
  return info;
}

bool CDelayedTransformNode::Init() {
  m_Object = InPort<CPortObject>("Object");
  m_Out = OutPort<CPortObject>("Object");
  m_NumObjects = InPort<CPortInt>("NumObjects");
  m_Delay = InPort<CPortFloat>("Delay");
  m_PosDelta = InPort<CPortVector>("PosDelta");
  m_RotDelta = InPort<CPortVector>("RotDelta");
  m_ScaleDelta = InPort<CPortVector>("ScaleDelta");
  m_DelayedPos = InPort<CPortVector>("DelayedPosDelta");
  m_DelayedRot = InPort<CPortVector>("DelayedRotDelta");
  m_DelayedScale = InPort<CPortVector>("DelayedScaleDelta");
  m_Color = InPort<CPortColor>("Color");
  return true;
}

void CDelayedTransformNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  const int n = std::clamp(m_NumObjects->m_Value, 1, 1000);
  const bool countChanged = m_NumObjects->m_Changed;
  if (countChanged || static_cast<int>(m_Records.size()) < n) {
    m_Records.resize(n);  // rotations and colors of new records are (0, 0, 0, 1)
  }

  m_DelayTime = m_Delay->m_Value;
  const bool noDelay = std::fabs(m_DelayTime) < 0.00001f;
  m_Timer += frame->DeltaTime;
  if (m_Timer > m_DelayTime) {
    m_Timer -= m_DelayTime;
    if (m_Timer > 1.0f || noDelay) m_Timer = 0;
    if (m_Timer > m_DelayTime) m_Timer = m_DelayTime;
    // Backward, so each record sees the target of the one before as it stood.
    for (int i = n - 1; i >= 1; --i) {
      Record &r = m_Records[i];
      const Record &before = m_Records[i - 1];
      Shift(r.pos, before.pos);
      Shift(r.scale, before.scale);
      Shift(r.rot, before.rot);
      Shift(r.color, before.color);
    }
  }

  Record &lead = m_Records[0];
  const Vec3f &p = m_DelayedPos->m_Value, &s = m_DelayedScale->m_Value;
  const Color4f &c = m_Color->m_Value;
  Fix(lead.pos, CVector3{p.x, p.y, p.z});
  Fix(lead.scale, CVector3{s.x, s.y, s.z});
  Fix(lead.rot, FromAngles(m_DelayedRot->m_Value));
  Fix(lead.color, Quat{c.r, c.g, c.b, c.a});
  if (countChanged)
    for (int i = 1; i < n; ++i) {
      Record &r = m_Records[i];
      r.pos = lead.pos;
      r.scale = lead.scale;
      r.rot = lead.rot;
      r.color = lead.color;
    }

  const float f = noDelay ? 0.0f : m_Timer / m_DelayTime;
  const Vec3f &pd = m_PosDelta->m_Value, &rd = m_RotDelta->m_Value, &sd = m_ScaleDelta->m_Value;
  for (int i = 0; i < n; ++i) {
    Record &r = m_Records[i];
    r.pos.current = Lerp(r.pos.from, r.pos.to, f);
    r.scale.current = Lerp(r.scale.from, r.scale.to, f);
    r.color.current = Lerp(r.color.from, r.color.to, f);
    r.rot.current = Slerp(r.rot.from, r.rot.to, f);
    const float k = static_cast<float>(i);
    const Quat q = r.rot.current * FromAngles({rd.x * k, rd.y * k, rd.z * k});
    const float scale[3] = {r.scale.current.x + sd.x * k + 1, r.scale.current.y + sd.y * k + 1,
                            r.scale.current.z + sd.z * k + 1};
    const float rows[3][3] = {
        {2 * (q.x * q.x + q.w * q.w) - 1, 2 * (q.x * q.y + q.z * q.w), 2 * (q.z * q.x - q.w * q.y)},
        {2 * (q.x * q.y - q.z * q.w), 2 * (q.y * q.y + q.w * q.w) - 1, 2 * (q.x * q.w + q.z * q.y)},
        {2 * (q.z * q.x + q.w * q.y), 2 * (q.z * q.y - q.x * q.w), 2 * (q.z * q.z + q.w * q.w) - 1}};
    for (int row = 0; row < 3; ++row)
      for (int col = 0; col < 3; ++col) r.matrix(row, col) = scale[row] * rows[row][col];
    r.matrix(3, 0) = r.pos.current.x + pd.x * k;
    r.matrix(3, 1) = r.pos.current.y + pd.y * k;
    r.matrix(3, 2) = r.pos.current.z + pd.z * k;
  }
  m_Out->m_Value = this;
}

void CDelayedTransformNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  // The array only grows in Update: a count changed since then is held to it.
  const int n = std::min<int>(std::clamp(m_NumObjects->m_Value, 1, 1000), static_cast<int>(m_Records.size()));
  std::vector<CObjectCopy> &copies = m_CopyScratch;
  copies.resize(n);
  for (int i = 0; i < n; ++i) {
    const Quat &c = m_Records[i].color.current;
    copies[i] = {m_Records[i].matrix, {c.x, c.y, c.z, c.w}};
  }
  AddCopiesToDrawList(list, parents, camera, m_Object, copies.data(), n);
}
