#include "nodes/sound/SoundTextureNode.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "audio/SoundReader.h"
#include "render/DeviceCheck.h"
#include "render/Render.h"
#include "render/Resources.h"
#include "render/RenderTypes.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
uint32_t Channel8(float v) { return static_cast<uint32_t>(std::lround(std::clamp(v, 0.0f, 1.0f) * 255.0f)); }
}  // namespace

CNodeInfo *CSoundTextureNode::CreateInfo() {
  auto *info = new CNodeInfo(
      4, "SoundTexture", [] { return static_cast<CNode *>(new CSoundTextureNode); },
      "Creates a texture with the sound spectrum or waveform of the left and right channel in the g and b color "
      "component and the mono in the r component. Middle point is 0.5 for the waveform.");
  info->AddInPort(new CPortInt("SoundType", "The type of sound we should add to the texture", 0, 0, 1))
      ->AddValue(0, "Spectrum")
      ->AddValue(1, "Waveform");
  info->AddInPort(new CPortInt("History", "Number of historical values to keep. This is the height of the texture",
                               256, 1, 4096));
  info->AddInPort(new CPortFloat("SpectrumAmplification",
                                 "How much to amplifying the spectrum before adding it to the texture", 1.0f, 0.1f,
                                 0.0f, 100.0f));
  info->AddOutPort(new CPortTexture("Texture", "Texture"));
  return info;
}

bool CSoundTextureNode::Init() {
  m_SoundType = InPort<CPortInt>("SoundType");
  m_History = InPort<CPortInt>("History");
  m_Amplification = InPort<CPortFloat>("SpectrumAmplification");
  m_Texture = OutPort<CPortTexture>("Texture");
  return true;
}

void CSoundTextureNode::Update(float time, FrameInfo *) {
  m_Texture->SetTexture(this);
  if (m_Updated) return;
  UpdateInPorts(time);
  // A connection can carry any number: the ring stays within the port's range.
  const int history = std::clamp(m_History->m_Value, 1, 4096);
  const size_t words = static_cast<size_t>(history) * Width;
  if (m_WidthInUse != Width || m_HeightInUse != history || m_Ring.size() < words) {
    m_WriteRow = 0;
    m_Ring.assign(words, 0u);
    m_WidthInUse = Width;
    m_HeightInUse = history;
    m_DirtyUnits = ALL_UNITS;
  }
  const ISoundReader &sound = GetSoundReader();
  if (sound.HasMusic() && sound.FrameCounter() != m_LastFrame) {
    m_LastFrame = sound.FrameCounter();
    WriteRowFromSound();
    m_WriteRow = (m_WriteRow + 1) % history;
    std::fill(std::begin(m_Upload), std::end(m_Upload), true);
  }
  m_Flags = 0;
  m_Mode = history > 1 ? 2 : 1;
}

void CSoundTextureNode::WriteRowFromSound() {
  const ISoundReader &sound = GetSoundReader();
  uint32_t *row = m_Ring.data() + static_cast<size_t>(m_WriteRow) * Width;
  const bool spectrum = m_SoundType->m_Value == 0;
  const float a = m_Amplification->m_Value;
  for (int x = 0; x < Width; ++x) {
    const float t = static_cast<float>(x) / Width;
    float red, green, blue;
    if (spectrum) {
      const float l = sound.GetSpectrum(0, t), r = sound.GetSpectrum(1, t);
      red = (l + r) * 0.5f * a;
      green = l * a;
      blue = r * a;
    } else {
      const float l = sound.GetWaveform(0, t), r = sound.GetWaveform(1, t);
      red = (l + r) * 0.25f + 0.5f;
      green = l * 0.5f + 0.5f;
      blue = r * 0.5f + 0.5f;
    }
    row[x] = Channel8(red) | (Channel8(green) << 8) | (Channel8(blue) << 16);
  }
}

bool CSoundTextureNode::RestoreDevice(CRender *render) {
  InvalidateDevice(render);
  const int history = std::max(m_HeightInUse, 1);
  CTexture *&texture = m_Textures[render->m_DeviceSlot];
  if (DEVICE_FAILED(!(texture = render->CreateTexture(Width, history, 0, TF_A8R8G8B8, TT_Dynamic)))) return false;
  m_WidthInUse = Width;
  m_HeightInUse = history;
  std::fill(std::begin(m_Upload), std::end(m_Upload), true);
  return true;
}

void CSoundTextureNode::InvalidateDevice(CRender *render) {
  CTexture *&texture = m_Textures[render->m_DeviceSlot];
  if (!texture) return;
  texture->Release();
  delete texture;
  texture = nullptr;
}

CTexture *CSoundTextureNode::GetTexture(CRender *render) {
  const int slot = render->m_DeviceSlot;
  CTexture *texture = m_Textures[slot];
  // A texture of an older History waits for the one the dirty flag brings.
  if (!texture || !m_Upload[slot] || texture->m_Height != m_HeightInUse) return texture;
  m_Upload[slot] = false;
  // Oldest row first, so that the newest is the texture's last row.
  const int rows = m_HeightInUse;
  const size_t rowBytes = Width * sizeof(uint32_t);
  uint32_t *out = texture->Lock();
  if (!out) return texture;
  const size_t tail = static_cast<size_t>(rows - m_WriteRow);
  std::memcpy(out, m_Ring.data() + static_cast<size_t>(m_WriteRow) * Width, tail * rowBytes);
  std::memcpy(out + tail * Width, m_Ring.data(), static_cast<size_t>(m_WriteRow) * rowBytes);
  texture->Unlock();
  return texture;
}
