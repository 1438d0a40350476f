#pragma once

#include <cstdint>

class CRender;
class CTexture;

constexpr int MAX_RENDER_UNITS = 9;

// A texture a node produces, one device texture per render unit slot.
class CPDTexture {
 public:
  virtual ~CPDTexture() = default;
  virtual bool RestoreDevice(CRender *) { return true; }
  virtual void InvalidateDevice(CRender *) {}
  // All units share one GL context, so the device slot is always 0.
  virtual CTexture *GetTexture(CRender *) { return m_Textures[0]; }
  // Called on the producer before a consumer samples it this frame.
  virtual void PrepareTexture(CRender *) {}

  uint32_t m_Flags = 0;
  int m_Mode = 2;
  CTexture *m_Textures[MAX_RENDER_UNITS] = {};
};
