#include "nodes/sim/AsteroidsNode.h"

#include <cmath>

#include "nodes/object/ObjectCopies.h"
#include "nodes/sim/SaneValue.h"
#include "scene/BatchDrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CAsteroidsNode::CreateInfo() {
  auto *info = new CNodeInfo(8, "Asteroids", [] { return static_cast<CNode *>(new CAsteroidsNode); },
                             "A self playing asteroids game");
  info->AddInPort(new CPortFloat("Width", "Width of asteroid field", 1, 0.01f, 0.0001f, 100000));
  info->AddInPort(new CPortFloat("Height", "Height of asteroid field", 1, 0.01f, 0.0001f, 100000));
  info->AddInPort(new CPortInt("NumAsteroids", "Number of asteroids", 10, 1, 100000));
  info->AddInPort(
      new CPortInt("NumFragments", "Number of fragments a large asteroid gets split into", 3, 1, 100000));
  info->AddInPort(new CPortFloat("LevelTime", "How long to wait before we reset the whole level (sec)", 300, 1,
                                 0.1f, 100000));
  info->AddInPort(new CPortEffect("Effect", "Effect"));
  info->AddInPort(ObjectColorPort("ShipCol", "Color of the ship"));
  info->AddInPort(ObjectColorPort("BulletCol", "Color of the bullets"));
  info->AddInPort(ObjectColorPort("AsteroidCol", "Color of the asteroids"));
  info->AddInPort(
      new CPortBool("AdjustForAspect", "Adjust the width and height depending on the screen aspect", true));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CAsteroidsNode::Init() {
  InitBatchPorts("Effect");
  m_Width = InPort<CPortFloat>("Width");
  m_Height = InPort<CPortFloat>("Height");
  m_NumAsteroids = InPort<CPortInt>("NumAsteroids");
  m_NumFragments = InPort<CPortInt>("NumFragments");
  m_LevelLength = InPort<CPortFloat>("LevelTime");
  m_ShipCol = InPort<CPortColor>("ShipCol");
  m_BulletCol = InPort<CPortColor>("BulletCol");
  m_AsteroidCol = InPort<CPortColor>("AsteroidCol");
  m_AdjustForAspect = InPort<CPortBool>("AdjustForAspect");
  m_LastTime = -1;
  return true;
}

// A new shape of field or of rock slots restarts at once; otherwise the
// level ends when its rocks are gone or its time is up, and its clock runs
// three times as fast while fewer than three rocks are left.
bool CAsteroidsNode::LevelOver(const FrameInfo &frame) {
  if (frame.Aspect != frame.PrevAspect || m_Width->m_Changed || m_Height->m_Changed || m_NumFragments->m_Changed ||
      m_NumAsteroids->m_Changed || m_AdjustForAspect->m_Changed)
    return true;
  const int rocks = m_Game.RockCount();
  if (rocks < 3) m_LevelTime += 2 * frame.DeltaTime;
  return rocks == 0 || !(m_LevelTime <= m_LevelLength->m_Value);
}

void CAsteroidsNode::Update(float, FrameInfo *frame) {
  if (m_Updated || !frame) return;
  const float dt = SaneValue(frame->DeltaTime, 0, 1);
  m_LevelTime += dt;
  if (!UpdateInPorts(frame->Time) && frame->Time == m_LastTime) return;
  m_LastTime = frame->Time;
  if (m_NumFragments->m_Changed || m_NumAsteroids->m_Changed || m_Game.m_Rocks.empty())
    m_Game.SetSlots(m_NumAsteroids->m_Value, m_NumFragments->m_Value);

  float w = m_Width->m_Value, h = m_Height->m_Value;
  const float aspect = frame->Aspect;
  if (m_AdjustForAspect->m_Value && std::isfinite(aspect) && aspect > 0) {
    if (aspect > 1)
      w *= aspect;
    else
      h *= 1 / aspect;
  }
  m_Game.SetField(w, h);
  if (LevelOver(*frame)) {
    m_LevelTime = 0;
    m_LastTime = -1;
    m_Game.ResetLevel();
  }
  m_Game.Step(dt);
  const auto rgba = [](const CPortColor *p, float out[4]) {
    out[0] = p->m_Value.r, out[1] = p->m_Value.g, out[2] = p->m_Value.b, out[3] = p->m_Value.a;
  };
  float ship[4], bullet[4], rock[4];
  rgba(m_ShipCol, ship);
  rgba(m_BulletCol, bullet);
  rgba(m_AsteroidCol, rock);
  m_Game.BuildLines(m_Lines, ship, bullet, rock);
  PublishObject();
}

void CAsteroidsNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  if (!m_EffectPort->IsConnected()) return;
  const CMatrix centre = TranslationMatrix(-m_Game.m_Width * 0.5f, -m_Game.m_Height * 0.5f, 0);
  AddBatchToDrawList(list, parents, camera, m_EffectPort->m_Value, m_Lines, m_Lines.Count(), &centre);
}
