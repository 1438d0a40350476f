#include "nodes/object/LineBounceNode.h"

#include <algorithm>

#include "nodes/object/SimRandom.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CLineBounceNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "LineBounce", [] { return static_cast<CNode *>(new CLineBounceNode); },
                             "A number of lines bouncing around in a box");
  info->AddInPort(new CPortEffect("Effect", "Effect"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  info->AddInPort(new CPortColor("Color", "Color of the line", {0, 1, 0, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortFloat("PointSpeed",
                                 "Movement speed of each point. The point speed will be updated at each bounce", 1.0f,
                                 0.001f, 0.0f, 10.0f));
  info->AddInPort(new CPortInt("NumObjects", "Number of objects", 2, 1, 1000));
  info->AddInPort(new CPortInt("NumPointsPerObj", "Number of lines in each object", 5, 2, 100));
  info->AddInPort(new CPortInt("NumTrails", "Number of trails that will be left by the objects", 5, 0, 1000));
  info->AddInPort(new CPortFloat("Width", "Width of space", 1.0f, 0.01f, 0.0f, 100000.0f));
  info->AddInPort(new CPortFloat("Height", "Height of space", 1.0f, 0.01f, 0.0f, 100000.0f));
  info->AddInPort(new CPortFloat("Depth", "Depth of space", 0.0f, 0.01f, 0.0f, 100000.0f));
  info->AddInPort(new CPortBool("AdjustForAspect", "Adjust the width and height depending on the screen aspect", true));
  return info;
}

bool CLineBounceNode::Init() {
  InitBatchPorts("Effect");
  m_Color = InPort<CPortColor>("Color");
  m_PointSpeed = InPort<CPortFloat>("PointSpeed");
  m_NumObjects = InPort<CPortInt>("NumObjects");
  m_NumPoints = InPort<CPortInt>("NumPointsPerObj");
  m_NumTrails = InPort<CPortInt>("NumTrails");
  m_Width = InPort<CPortFloat>("Width");
  m_Height = InPort<CPortFloat>("Height");
  m_Depth = InPort<CPortFloat>("Depth");
  m_AdjustForAspect = InPort<CPortBool>("AdjustForAspect");
  return true;
}

void CLineBounceNode::Restart(const CVector3 &box, int objects, int points) {
  m_Objects.resize(objects);
  const float speed = m_PointSpeed->m_Value;
  for (Object &o : m_Objects)
    for (int i = 0; i < points; ++i) {
      Point &p = o.points[i];
      p.position = {DrawSigned(), DrawSigned(), DrawSigned()};
      const CVector3 u = RandomUnitVector();
      // The same speed in world units whatever the box's shape.
      p.velocity = Normalize({u.x * box.x, u.y * box.y, u.z * box.z}) * speed;
    }
  m_Lines.SetSize(objects * points);
}

void CLineBounceNode::Update(float, FrameInfo *frame) {
  if (m_Updated || !frame) return;
  UpdateInPorts(frame->Time);
  CVector3 box{m_Width->m_Value, m_Height->m_Value, m_Depth->m_Value};
  const float aspect = frame->Aspect;
  if (m_AdjustForAspect->m_Value && aspect > 0.0f) {
    if (aspect > 1.0f)
      box.x *= aspect;
    else
      box.y *= 1.0f / aspect;
  }
  const int objects = std::clamp(m_NumObjects->m_Value, 1, 1000);
  const int points = std::clamp(m_NumPoints->m_Value, 2, MaxPoints);
  const bool changed = m_Width->m_Changed || m_Height->m_Changed || m_Depth->m_Changed ||
                       m_AdjustForAspect->m_Changed || m_NumTrails->m_Changed || m_NumObjects->m_Changed ||
                       m_NumPoints->m_Changed;
  if (aspect != frame->PrevAspect || changed || static_cast<int>(m_Objects.size()) != objects)
    Restart(box, objects, points);

  const float speed = m_PointSpeed->m_Value, dt = frame->DeltaTime;
  for (Object &o : m_Objects)
    for (int i = 0; i < points; ++i) {
      Point &p = o.points[i];
      bool bounced = false;
      for (auto [pos, vel] : {std::pair{&p.position.x, &p.velocity.x}, std::pair{&p.position.y, &p.velocity.y},
                              std::pair{&p.position.z, &p.velocity.z}})
        if ((*pos > 1.0f && *vel > 0.0f) || (*pos < -1.0f && *vel < 0.0f)) {
          *vel = -*vel;
          bounced = true;
        }
      if (bounced) p.velocity = Normalize(p.velocity) * speed;
      p.position = p.position + p.velocity * dt;
    }

  m_Lines.SetSize(objects * points);
  const float color[4] = {m_Color->m_Value.r, m_Color->m_Value.g, m_Color->m_Value.b, m_Color->m_Value.a};
  const CVector3 half = box * 0.5f;
  auto at = [&](const Point &p) {
    return CVector3{p.position.x * half.x, p.position.y * half.y, p.position.z * half.z};
  };
  for (const Object &o : m_Objects) {
    const int lines = points > 2 ? points : points - 1;
    for (int i = 0; i < lines; ++i) {
      const CVector3 a = at(o.points[i]), b = at(o.points[(i + 1) % points]);
      m_Lines.AddLine(a.x, a.y, a.z, b.x, b.y, b.z, color);
    }
  }
  PublishObject();
}
