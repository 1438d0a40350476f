#include "nodes/value/RotatorNode.h"

#include <cmath>

#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

CNodeInfo *CRotatorNode::CreateInfo() {
  auto *info = new CNodeInfo(7, "Rotator", [] { return static_cast<CNode *>(new CRotatorNode); },
                             "Computes rotation values");
  info->AddInPort(new CPortFloat("StartRotX", "Initial rotation along X axis", 0.0f, 1.0f, -1000.0f, 1000.0f));
  info->AddInPort(new CPortFloat("StartRotY", "Initial rotation along Y axis", 0.0f, 1.0f, -1000.0f, 1000.0f));
  info->AddInPort(new CPortFloat("StartRotZ", "Initial rotation along Z axis", 0.0f, 1.0f, -1000.0f, 1000.0f));
  info->AddInPort(new CPortFloat("RotSpeedX", "Rotation speed along X axis (Rotations/minute)", 1.5f, 1.0f, -1000.0f,
                                 1000.0f));
  info->AddInPort(new CPortFloat("RotSpeedY", "Rotation speed along Y axis (Rotations/minute)", 1.0f, 1.0f, -1000.0f,
                                 1000.0f));
  info->AddInPort(new CPortFloat("RotSpeedZ", "Rotation speed along Z axis (Rotations/minute)", 0.5f, 1.0f, -1000.0f,
                                 1000.0f));
  info->AddOutPort(new CPortFloat("RotX", "Rotation along X axis", 0.0f, 0.01f, 0.0f, 1.0f));
  info->AddOutPort(new CPortFloat("RotY", "Rotation along Y axis", 0.0f, 0.01f, 0.0f, 1.0f));
  info->AddOutPort(new CPortFloat("RotZ", "Rotation along Z axis", 0.0f, 0.01f, 0.0f, 1.0f));
  return info;
}

bool CRotatorNode::Init() {
  static const char *const names[3][3] = {
      {"StartRotX", "RotSpeedX", "RotX"}, {"StartRotY", "RotSpeedY", "RotY"}, {"StartRotZ", "RotSpeedZ", "RotZ"}};
  for (int i = 0; i < 3; ++i) {
    m_Axes[i].m_StartRot = InPort<CPortFloat>(names[i][0]);
    m_Axes[i].m_RotSpeed = InPort<CPortFloat>(names[i][1]);
    m_Axes[i].m_Rot = OutPort<CPortFloat>(names[i][2]);
  }
  return true;
}

// Advances on every pull, not once a frame: a rotator read by three in-ports
// turns three steps in that frame.
void CRotatorNode::Update(float time, FrameInfo *frame) {
  UpdateInPorts(time);
  for (Axis &a : m_Axes) {
    a.m_Angle += frame->DeltaTime * a.m_RotSpeed->m_Value * 360.0f / 60.0f;
    a.m_Angle = std::fmod(a.m_Angle, 360.0f);
    a.m_Rot->m_Value = std::fmod(a.m_StartRot->m_Value + a.m_Angle, 360.0f);
    a.m_Rot->m_Changed = true;
  }
}
