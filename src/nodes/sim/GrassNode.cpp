#include "nodes/sim/GrassNode.h"

#include <algorithm>
#include <cmath>

#include "nodes/sim/SaneValue.h"
#include "portdata/PDMesh.h"
#include "render/Color.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
constexpr float kLimit = 10000;
CPortFloat *GrassFloat(const char *name, const char *desc, float def, float min = -kLimit, float max = kLimit) {
  return new CPortFloat(name, desc, def, 0.001f, min, max);
}
CPortVector *GrassVector(const char *name, const char *desc, Vec3f def) {
  return new CPortVector(name, desc, def, {0.001f, 0.001f, 0.001f}, {-kLimit, -kLimit, -kLimit},
                         {kLimit, kLimit, kLimit});
}
}  // namespace

CNodeInfo *CGrassNode::CreateInfo() {
  auto *info = new CNodeInfo(
      11, "Grass", [] { return static_cast<CNode *>(new CGrassNode); },
      "Simulates some grass. A straw will be placed at each point in the mesh. The straws direction will be along the "
      "normal");
  info->AddInPort(new CPortMesh("Mesh", "Mesh that will be used to decide where to create the straws"));
  info->AddInPort(new CPortEffect("Effect", "Effect to apply"));
  info->AddInPort(GrassFloat("Width", "Straws base width", 0.02f));
  info->AddInPort(GrassFloat("WidthVar", "Straws base width variance", 0.04f));
  info->AddInPort(GrassVector("Gravity", "Gravity", {0, -4, 0}));
  info->AddInPort(GrassFloat("TopWidthFactor", "Straw top width relative to it's base width", 0));
  info->AddInPort(GrassVector("WindDir", "Global wind direction", {0, 0, 0}));
  info->AddInPort(GrassVector("LWindDirVar", "Local wind direction variance", {5, 2.5f, 5}));
  info->AddInPort(GrassFloat("Strength", "Strength of 1st constraint", 1, 0, 10));
  info->AddInPort(GrassFloat("Strength2", "Strength of 2nd constraint", 0.5f, 0, 10));
  info->AddInPort(GrassFloat("Height", "Base height of each straw", 0.25f));
  info->AddInPort(GrassFloat("HeightVar", "Height variance of each straw", 0.75f));
  info->AddInPort(new CPortInt("Segments", "Number of segments", 3, CGrassStraws::MinSegments,
                               CGrassStraws::MaxSegments));
  info->AddInPort(new CPortColor("Color", "Color of the grass", {0.4f, 0.9f, 0.6f, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CGrassNode::Init() {
  InitBatchPorts("Effect");
  m_Mesh = InPort<CPortMesh>("Mesh");
  m_Width = InPort<CPortFloat>("Width");
  m_WidthVar = InPort<CPortFloat>("WidthVar");
  m_Gravity = InPort<CPortVector>("Gravity");
  m_TopWidthFactor = InPort<CPortFloat>("TopWidthFactor");
  m_WindDir = InPort<CPortVector>("WindDir");
  m_LWindDirVar = InPort<CPortVector>("LWindDirVar");
  m_Strength = InPort<CPortFloat>("Strength");
  m_Strength2 = InPort<CPortFloat>("Strength2");
  m_Height = InPort<CPortFloat>("Height");
  m_HeightVar = InPort<CPortFloat>("HeightVar");
  m_Segments = InPort<CPortInt>("Segments");
  m_Color = InPort<CPortColor>("Color");
  return true;
}

void CGrassNode::Update(float, FrameInfo *frame) {
  if (m_Updated || !frame) return;
  UpdateInPorts(frame->Time);
  const Color4f &c = m_Color->m_Value;
  m_Straws.SetLook({m_Segments->m_Value, SaneValue(m_TopWidthFactor->m_Value), PackColor(c.r, c.g, c.b, c.a)});
  // A mesh generator marks its mesh dirty when its ports change, before
  // the mesh is generated again.
  const bool newMesh = m_Mesh->m_Changed || (m_Mesh->m_Value && m_Mesh->m_Value->m_Dirty);
  if (m_Straws.Count() > 0 && !newMesh) {
    if (m_Segments->m_Changed) m_DirtyUnits = ALL_UNITS;
    const float dt = SaneValue(frame->DeltaTime, 0, 0.1f);
    m_Straws.Simulate(dt, {SaneVector(m_Gravity->m_Value), SaneVector(m_WindDir->m_Value), SaneVector(m_LWindDirVar->m_Value)});
    // Above 1 each constraint overshoots, and four of them on two points
    // make the overshoot grow into a shiver: stronger counts as 1.
    m_Straws.Constrain(SaneValue(m_Strength->m_Value, 0, 1), SaneValue(m_Strength2->m_Value, 0, 1));
    PublishObject();
    return;
  }
  if (!m_Mesh->m_Value) return;
  m_Mesh->Prepare();
  const CMeshArray<MeshVertex> &v = m_Mesh->m_Value->m_Vertices;
  m_Straws.Build(v.Data(), v.m_Num,
                 {SaneValue(m_Height->m_Value), SaneValue(m_HeightVar->m_Value), SaneValue(m_Width->m_Value), SaneValue(m_WidthVar->m_Value)});
  m_DirtyUnits = ALL_UNITS;
  PublishObject();
}
