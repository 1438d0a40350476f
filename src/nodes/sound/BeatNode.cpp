#include "nodes/sound/BeatNode.h"

#include <algorithm>

#include "audio/SoundReader.h"
#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

CNodeInfo *CBeatNode::CreateInfo() {
  auto *info = new CNodeInfo(
      9, "Beat", [] { return static_cast<CNode *>(new CBeatNode); },
      "Detects the beat in the currently playing music and output its as a value going from 0.0 to 1.0");
  info->AddInPort(new CPortFloat("NoMusic", "Value to use if no music is playing", 1.0f, 0.01f, -10000.0f, 10000.0f));
  info->AddInPort(new CPortFloat("Amplification", "How much to amplify the values", 1.0f, 0.01f, 0.0f, 10000.0f));
  info->AddInPort(new CPortFloat("Min", "Minimum value", 0.0f, 0.01f, -10000.0f, 10000.0f));
  info->AddInPort(new CPortFloat("Max", "Maximum value", 1.0f, 0.01f, -10000.0f, 10000.0f));
  info->AddOutPort(new CPortFloat("BeatStrength", "The strength of the current beat", 0.0f, 0.01f, 0.0f, 1.0f));
  return info;
}

bool CBeatNode::Init() {
  m_NoMusic = InPort<CPortFloat>("NoMusic");
  m_Amplification = InPort<CPortFloat>("Amplification");
  m_Min = InPort<CPortFloat>("Min");
  m_Max = InPort<CPortFloat>("Max");
  m_Strength = OutPort<CPortFloat>("BeatStrength");
  return true;
}

void CBeatNode::Update(float time, FrameInfo *) {
  UpdateInPorts(time);
  const ISoundReader &sound = GetSoundReader();
  if (!sound.HasMusic()) {
    m_Strength->m_Value = m_NoMusic->m_Value;
  } else {
    const float v = sound.Level() * m_Amplification->m_Value;
    const float lo = m_Min->m_Value, hi = m_Max->m_Value;
    // Capped from above only: with Min above Max the value falls as the beat rises.
    m_Strength->m_Value = std::min(lo + v * (hi - lo), std::max(lo, hi));
  }
  m_Strength->m_Changed = true;
}
