#include "render/Resources.h"

#include <algorithm>
#include <cstring>

void CTexture::Fill(const uint32_t *pixels) {
  uint32_t *dst = Lock();
  if (!dst) return;
  // A 1D texture may be made with height 0; it still has one row.
  int texels = m_Width * std::max(m_Height, 1);
  std::memcpy(dst, pixels, static_cast<size_t>(std::max(texels, 0)) * sizeof(uint32_t));
  Unlock();
}

int CTexture::Dimension() const {
  if (m_Height < 2) return 1;
  return m_Depth > 1 ? 3 : 2;
}

int CTexture::TexelCount() const { return m_Width * std::max(m_Height, 1) * std::max(m_Depth, 1); }
