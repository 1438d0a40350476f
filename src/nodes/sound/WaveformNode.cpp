#include "nodes/sound/WaveformNode.h"

#include "audio/SoundReader.h"
#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

CNodeInfo *CWaveformNode::CreateInfo() {
  auto *info = new CNodeInfo(9, "Waveform", [] { return static_cast<CNode *>(new CWaveformNode); },
                             "The waveform of the music in the range -1.0 to 1.0");
  AddChannelPorts(*info, "Waveform values for the left+right channel", "Waveform data for the left channel",
                  "Waveform data for the right channel");
  info->AddOutPort(new CPortFloat("AvgLeftChannel", "Average of the waveform data for the left channel", 0.0f, 0.01f,
                                  0.0f, 1.0f));
  info->AddOutPort(new CPortFloat("AvgRightChannel", "Average of the waveform data for the right channel", 0.0f,
                                  0.01f, 0.0f, 1.0f));
  return info;
}

bool CWaveformNode::Init() {
  CSoundChannelNode::Init();
  m_AvgLeft = OutPort<CPortFloat>("AvgLeftChannel");
  m_AvgRight = OutPort<CPortFloat>("AvgRightChannel");
  return true;
}

float CWaveformNode::Sample(const ISoundReader &sound, int channel, float t) const {
  return sound.GetWaveform(channel, t);
}

void CWaveformNode::UpdateExtra(const ISoundReader &, bool music) {
  // The analysis computes no channel averages: with music they stay 0.
  m_AvgLeft->m_Value = music ? 0.0f : m_NoMusicLeft->m_Value;
  m_AvgRight->m_Value = music ? 0.0f : m_NoMusicRight->m_Value;
  m_AvgLeft->m_Changed = m_AvgRight->m_Changed = true;
}
