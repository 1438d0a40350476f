#pragma once

#include "nodes/sound/SoundChannelNode.h"

// The spectrum at the asked position, 0 the lowest frequency, 1 the highest.
class CSpectrumNode : public CSoundChannelNode {
 public:
  static CNodeInfo *CreateInfo();

 protected:
  float Sample(const ISoundReader &sound, int channel, float t) const override;
};
