#pragma once
// What Waveform and Spectrum share: three NoMusic values, an amplification,
// and left, right and mono outputs read from the sound at the position given
// as the time of Update (0 to 1), so that a node drawing many elements gets
// one value per element by local evaluation.

#include "scene/Node.h"

class CNodeInfo;
class CPortFloat;
class ISoundReader;

class CSoundChannelNode : public CNode {
 public:
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

 protected:
  // The in-ports and the three channel outputs, described per type.
  static void AddChannelPorts(CNodeInfo &info, const char *monoDesc, const char *leftDesc, const char *rightDesc);
  virtual float Sample(const ISoundReader &sound, int channel, float t) const = 0;
  // After the channel outputs are set: music says whether they came from sound.
  virtual void UpdateExtra(const ISoundReader &, bool) {}

  CPortFloat *m_NoMusicLeft = nullptr, *m_NoMusicRight = nullptr, *m_NoMusicMono = nullptr;
  CPortFloat *m_Amplification = nullptr;
  CPortFloat *m_Mono = nullptr, *m_Left = nullptr, *m_Right = nullptr;
};
