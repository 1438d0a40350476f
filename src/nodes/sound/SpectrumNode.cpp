#include "nodes/sound/SpectrumNode.h"

#include "audio/SoundReader.h"
#include "scene/NodeInfo.h"

CNodeInfo *CSpectrumNode::CreateInfo() {
  auto *info = new CNodeInfo(9, "Spectrum", [] { return static_cast<CNode *>(new CSpectrumNode); },
                             "The current music as a spectrum");
  AddChannelPorts(*info, "Spectrum values for the left+right channel", "Spectrum values for the left channel",
                  "Spectrum values for the right channel");
  return info;
}

float CSpectrumNode::Sample(const ISoundReader &sound, int channel, float t) const {
  return sound.GetSpectrum(channel, t);
}
