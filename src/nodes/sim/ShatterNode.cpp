#include "nodes/sim/ShatterNode.h"

#include <algorithm>
#include <cmath>

#include "nodes/sim/SaneValue.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
constexpr float kStep = 0.033333335f;

CPortFloat *Seconds(const char *name, const char *desc, float def) {
  return new CPortFloat(name, desc, def, 0.01f, 0, 1000);
}
float Seconds(const CPortFloat *p) { return SaneValue(p->m_Value, 0, 1000); }
}  // namespace

CNodeInfo *CShatterNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "Shatter", [] { return static_cast<CNode *>(new CShatterNode); }, "Shatters a 2d plane");
  info->AddInPort(new CPortVector("Gravity", "Direction and strength of gravity", {0, -0.9f, 0}, {0.1f, 0.1f, 0.1f},
                                  {-10000, -10000, -10000}, {10000, 10000, 10000}));
  info->AddInPort(Seconds("ShatterDelay", "How long to wait before the object is shattered (Sec)", 2));
  info->AddInPort(Seconds("ShatterTime", "How long time the shatter process will last (Sec)", 12));
  info->AddInPort(Seconds("RebuildTime", "Minimum time to rebuilt the object again (Sec)", 0.25f));
  info->AddInPort(Seconds("RebuildTimeVar", "Variation time added to the rebuild tim (Sec)", 4));
  info->AddInPort(new CPortInt("NumPoints", "Number of points", 1000, 1, 100000));
  info->AddInPort(new CPortEffect("Effect", "Effect applied to the object"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CShatterNode::Init() {
  InitBatchPorts("Effect");
  m_Gravity = InPort<CPortVector>("Gravity");
  m_ShatterDelay = InPort<CPortFloat>("ShatterDelay");
  m_ShatterTime = InPort<CPortFloat>("ShatterTime");
  m_RebuildTime = InPort<CPortFloat>("RebuildTime");
  m_RebuildTimeVar = InPort<CPortFloat>("RebuildTimeVar");
  m_NumPoints = InPort<CPortInt>("NumPoints");
  return true;
}

void CShatterNode::Update(float, FrameInfo *frame) {
  PublishObject();
  if (m_Updated || !frame) return;
  UpdateInPorts(frame->Time);
  const float dt = SaneValue(frame->DeltaTime, 0, 1);
  m_Accumulator += dt;
  m_Clock += dt;
  if (m_Accumulator < kStep) return;
  m_Accumulator -= kStep;
  const CShatterPlane::Timing t{Seconds(m_ShatterDelay), Seconds(m_ShatterTime), Seconds(m_RebuildTime),
                                 Seconds(m_RebuildTimeVar)};
  if (t.rebuild + t.delay + t.duration + t.rebuildVar < m_Clock) {
    m_Clock = 0;
    m_Plane.Rebuild(m_NumPoints->m_Value);
  }
  m_Plane.Step(m_Clock, SaneVector(m_Gravity->m_Value), t);
}
