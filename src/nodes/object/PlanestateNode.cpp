#include "nodes/object/PlanestateNode.h"

#include <algorithm>
#include <cmath>

#include "nodes/object/SimRandom.h"
#include "scene/BatchDrawList.h"
#include "scene/DrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"

namespace {
// Yaw, pitch and roll from angles in degrees (y about the vertical, then x, then z).
CMatrix PlaneRotation(const Vec3f &deg) {
  constexpr float k = 0.017453292f;
  const float sx = std::sin(deg.x * k), cx = std::cos(deg.x * k), sy = std::sin(deg.y * k), cy = std::cos(deg.y * k);
  const float sz = std::sin(deg.z * k), cz = std::cos(deg.z * k);
  CMatrix m;
  m(0, 0) = cz * cy + sz * sx * sy, m(0, 1) = cx * sz, m(0, 2) = cy * sx * sz - sy * cz;
  m(1, 0) = sx * sy * cz - sz * cy, m(1, 1) = cz * cx, m(1, 2) = cy * sx * cz + sy * sz;
  m(2, 0) = cx * sy, m(2, 1) = -sx, m(2, 2) = cy * cx;
  return m;
}

Vec3f Times(const Vec3f &v, float s) { return {v.x * s, v.y * s, v.z * s}; }
float Sum(const Color4f &c) { return c.r + c.g + c.b + c.a; }
}  // namespace

CNodeInfo *CPlanestateNode::CreateInfo() {
  auto *info = new CNodeInfo(
      2, "Planestate", [] { return static_cast<CNode *>(new CPlanestateNode); },
      "Objects moving around in hypnotic ways. Will draw a 'Object' in each location. If there isn't any 'Object' "
      "connection it will draw quads using 'Effect' instead");
  const Vec3f step{0.1f, 0.1f, 0.1f}, vmin{-10000, -10000, -10000}, vmax{10000, 10000, 10000};
  const Color4f black{0, 0, 0, 0}, white{1, 1, 1, 1};
  info->AddInPort(new CPortEffect("PointEffect", "Point Effect"));
  info->AddInPort(new CPortObject("PointObject", "Point Object"));
  info->AddInPort(new CPortEffect("OutlineEffect", "Outline Effect"));
  info->AddInPort(new CPortEffect("Effect", "Effect"));
  info->AddInPort(new CPortObject("Object", "Object. If not corrected we will use quads using the 'effect' instead"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  info->AddInPort(new CPortInt("NumObjects", "Number of objects", 1, 1, MaxObjects));
  info->AddInPort(new CPortFloat("ObjectYDelta", "Distance between each object", 1.0f, 0.001f, -1000.0f, 1000.0f));
  info->AddInPort(new CPortVector("CenterAxisRot", "Rotation of the center axis", {0, 0, 0}, step, vmin, vmax));
  info->AddInPort(new CPortVector("ObjectCAxisRot", "Objects center axis rotation", {0, 0, 0}, step, vmin, vmax));
  info->AddInPort(new CPortVector("ObjectRot", "Objects rotation", {0, 0, 0}, step, vmin, vmax));
  info->AddInPort(new CPortVector("ObjectScale", "Scale of objects", {1, 1, 1}, step, vmin, vmax));
  info->AddInPort(new CPortVector("CenterAxisDist", "Objects distance from center axis", {0, 0, 0}, step, vmin, vmax));
  info->AddInPort(new CPortColor("ObjectCol", "Color of object", white, black, white));
  info->AddInPort(new CPortColor("PointCol", "Point color", black, black, white));
  info->AddInPort(new CPortColor("OutlineCol", "Outline color of the plane", black, black, white));
  info->AddInPort(new CPortVector("PointSize", "Point size", {1, 1, 1}, step, vmin, vmax));
  info->AddInPort(new CPortVector("ObjectPivotPos", "Pivot position of objects", {0, 0, 0}, step, vmin, vmax));
  info->AddInPort(new CPortInt("PrimType", "Type of primitive", 2, 0, 4))
      ->AddValue(0, "Point")
      ->AddValue(2, "Texture")
      ->AddValue(3, "Axis texture")
      ->AddValue(4, "Object");
  return info;
}

bool CPlanestateNode::Init() {
  m_PointEffect = InPort<CPortEffect>("PointEffect");
  m_PointObject = InPort<CPortObject>("PointObject");
  m_OutlineEffect = InPort<CPortEffect>("OutlineEffect");
  m_Effect = InPort<CPortEffect>("Effect");
  m_ObjectIn = InPort<CPortObject>("Object");
  m_ObjectOut = OutPort<CPortObject>("Object");
  m_NumObjects = InPort<CPortInt>("NumObjects");
  m_YDelta = InPort<CPortFloat>("ObjectYDelta");
  m_CenterAxisRot = InPort<CPortVector>("CenterAxisRot");
  m_ObjectCAxisRot = InPort<CPortVector>("ObjectCAxisRot");
  m_ObjectRot = InPort<CPortVector>("ObjectRot");
  m_ObjectScale = InPort<CPortVector>("ObjectScale");
  m_CenterAxisDist = InPort<CPortVector>("CenterAxisDist");
  m_ObjectCol = InPort<CPortColor>("ObjectCol");
  m_PointCol = InPort<CPortColor>("PointCol");
  m_OutlineCol = InPort<CPortColor>("OutlineCol");
  m_PointSize = InPort<CPortVector>("PointSize");
  m_Pivot = InPort<CPortVector>("ObjectPivotPos");
  m_PrimType = InPort<CPortInt>("PrimType");
  return true;
}

CPlanestateNode::PlaneState CPlanestateNode::Snapshot() const {
  PlaneState s;
  s.rotation = m_ObjectRot->m_Value;
  s.scale = m_ObjectScale->m_Value;
  s.distance = m_CenterAxisDist->m_Value;
  s.pivot = m_Pivot->m_Value;
  s.objectColor = m_ObjectCol->m_Value;
  s.outlineColor = m_OutlineCol->m_Value;
  s.pointColor = m_PointCol->m_Value;
  s.pointSize = m_PointSize->m_Value;
  return s;
}

void CPlanestateNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame ? frame->Time : 0.0f);
  const PlaneState now = Snapshot();
  if (std::fabs(Sum(now.outlineColor)) > 0.001f) m_HasOutline = true;
  if (std::fabs(Sum(now.pointColor)) > 0.001f) m_HasPoints = true;
  const int count = std::clamp(m_NumObjects->m_Value, 1, MaxObjects);
  const int type = std::clamp(m_PrimType->m_Value, static_cast<int>(PRIM_Point), static_cast<int>(PRIM_Object));
  if (m_NumObjects->m_Changed || static_cast<int>(m_Planes.size()) != count) {
    m_Planes.resize(count);
    if (!m_ObjectIn->IsConnected()) m_Quads.SetSize(count);
    m_Lines.SetSize(4 * count);
    m_DirtyUnits = ALL_UNITS;
  }
  if (m_NumObjects->m_Changed || m_PrimType->m_Changed || m_Points.PrimitiveType() != type) {
    m_Points.SetSize(4 * count, type);
    m_DirtyUnits = ALL_UNITS;
  }
  if (m_FirstRun) {
    m_FirstRun = false;
    for (PlaneState &p : m_Planes) p = now;
  }
  // The oldest plane comes to the front and shows the ports as they stand.
  std::rotate(m_Planes.rbegin(), m_Planes.rbegin() + 1, m_Planes.rend());
  m_Planes.front() = now;
  PlaceRecords(count);
  WriteBatches(count);
  m_ObjectOut->m_Value = this;
}

void CPlanestateNode::PlaceRecords(int count) {
  const CMatrix rc = PlaneRotation(m_CenterAxisRot->m_Value);
  const float yDelta = m_YDelta->m_Value;
  for (int i = 0; i < count; ++i) {
    PlaneState &p = m_Planes[i];
    const CMatrix rk = PlaneRotation(Times(m_ObjectCAxisRot->m_Value, static_cast<float>(i + 1)));
    const CMatrix ro = PlaneRotation(p.rotation);
    const CVector3 pivot = TransformNormal(ToVector(p.pivot), ro);
    CMatrix a = ScalingMatrix(p.scale.x, p.scale.y, p.scale.z) * ro;
    a(3, 0) = p.distance.x + pivot.x;
    a(3, 1) = p.distance.y + pivot.y + yDelta * static_cast<float>(i) - yDelta * static_cast<float>(count) * 0.5f;
    a(3, 2) = p.distance.z + pivot.z;
    p.matrix = a * rk * rc;
  }
}

void CPlanestateNode::WriteBatches(int count) {
  const bool quads = !m_ObjectIn->IsConnected();
  const bool outline = m_HasOutline && m_OutlineEffect->IsConnected();
  const bool points = m_HasPoints && (m_PointEffect->IsConnected() || m_PointObject->IsConnected());
  const int type = m_Points.PrimitiveType();
  m_Lines.SetSize(4 * count);
  m_Points.SetCount(points && type != PRIM_Line ? 4 * count : 0);
  if (quads) m_Quads.SetCount(count);
  for (int i = 0; i < count; ++i) {
    const PlaneState &p = m_Planes[i];
    const CVector3 a = TransformPoint({-0.5f, 0.5f, 0}, p.matrix), b = TransformPoint({-0.5f, -0.5f, 0}, p.matrix);
    const CVector3 d = TransformPoint({0.5f, 0.5f, 0}, p.matrix), c = TransformPoint({0.5f, -0.5f, 0}, p.matrix);
    if (quads && i < m_Quads.Count()) {
      const uint32_t col = PackColorRounded(p.objectColor);
      m_Quads.Quads()[i] = {{{a.x, a.y, a.z, 0, 0, col}, {b.x, b.y, b.z, 1, 0, col}, {d.x, d.y, d.z, 0, 1, col},
                             {c.x, c.y, c.z, 1, 1, col}}};
    }
    if (outline) {
      const float col[4] = {p.outlineColor.r, p.outlineColor.g, p.outlineColor.b, p.outlineColor.a};
      m_Lines.AddLine(a.x, a.y, a.z, b.x, b.y, b.z, col);
      m_Lines.AddLine(b.x, b.y, b.z, c.x, c.y, c.z, col);
      m_Lines.AddLine(c.x, c.y, c.z, d.x, d.y, d.z, col);
      m_Lines.AddLine(d.x, d.y, d.z, a.x, a.y, a.z, col);
    }
    if (points && type != PRIM_Line) {
      const uint32_t col = PackColorRounded(p.pointColor);
      const Vec3f h = Times(p.pointSize, 0.5f);
      int k = 4 * i;
      for (const CVector3 &v : {a, b, c, d}) {
        if (type == PRIM_Point)
          m_Points.Points()[k++] = {v.x, v.y, v.z, col};
        else
          m_Points.Sprites()[k++] = {v.x, v.y, v.z, col, h.x, h.y, h.z};
      }
    }
  }
}

bool CPlanestateNode::RestoreDevice(CRender *render) {
  return m_Quads.RestoreDevice(render) && m_Lines.RestoreDevice(render) && m_Points.RestoreDevice(render);
}

void CPlanestateNode::InvalidateDevice(CRender *render) {
  m_Quads.InvalidateDevice(render);
  m_Lines.InvalidateDevice(render);
  m_Points.InvalidateDevice(render);
}

void CPlanestateNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  if (m_ObjectIn->IsConnected()) {
    for (CDrawItem *parent = parents.first; parent; parent = parent->next) {
      CDrawItemList clones;
      for (const PlaneState &p : m_Planes) {
        CDrawItem *item = list.NewItem();
        item->matrix = p.matrix * parent->matrix;
        const float col[4] = {p.objectColor.r, p.objectColor.g, p.objectColor.b, p.objectColor.a};
        for (int c = 0; c < 4; ++c) item->color[c] = parent->color[c] * col[c];
        clones.Append(item);
      }
      WalkSource(m_ObjectIn, list, clones, camera);
      parent->children.TakeAll(clones);
    }
  } else if (m_Effect->IsConnected()) {
    AddBatchToDrawList(list, parents, camera, m_Effect->m_Value, m_Quads);
  }
  if (m_HasOutline && m_OutlineEffect->IsConnected())
    AddBatchToDrawList(list, parents, camera, m_OutlineEffect->m_Value, m_Lines);
  if (m_HasPoints && (m_PointEffect->IsConnected() || m_PointObject->IsConnected()))
    AddPointsToDrawList(list, parents, camera, m_PointEffect->m_Value, m_Points, m_Points.Count(), m_PointObject);
}
