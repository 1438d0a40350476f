#pragma once

#include "nodes/sound/SoundChannelNode.h"

// The captured waveform at the asked position, with the channel averages.
class CWaveformNode : public CSoundChannelNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;

 protected:
  float Sample(const ISoundReader &sound, int channel, float t) const override;
  void UpdateExtra(const ISoundReader &sound, bool music) override;

 private:
  CPortFloat *m_AvgLeft = nullptr, *m_AvgRight = nullptr;
};
