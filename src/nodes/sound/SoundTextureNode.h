#pragma once

#include <cstdint>
#include <vector>

#include "portdata/PDTexture.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortFloat;
class CPortInt;
class CPortTexture;

// The sound as a 256-wide texture with History rows: each analysed frame
// adds one row (spectrum or waveform; mono in red, left in green, right in
// blue) and the newest row is the texture's last.
class CSoundTextureNode : public CNode, public CPDTexture {
 public:
  static constexpr int Width = 256;

  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;
  CTexture *GetTexture(CRender *render) override;

  // The ring as it stands, row `writeRow` written next (for tests).
  const std::vector<uint32_t> &Ring() const { return m_Ring; }
  int WriteRow() const { return m_WriteRow; }

 private:
  void WriteRowFromSound();

  CPortInt *m_SoundType = nullptr, *m_History = nullptr;
  CPortFloat *m_Amplification = nullptr;
  CPortTexture *m_Texture = nullptr;

  std::vector<uint32_t> m_Ring;
  int m_WriteRow = 0;
  int m_WidthInUse = 0, m_HeightInUse = 0;
  bool m_Upload[MAX_RENDER_UNITS] = {};
  int m_LastFrame = -1;
};
