#include "portdata/Font.h"

#include <FreeImage.h>

#include <algorithm>
#include <cstring>

#include "core/Log.h"
#include "render/DeviceCheck.h"
#include "portdata/FontLoader.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"

namespace {
// Copies a picture into the 256 x 256 texels, top row first; a picture of
// another size fills what overlaps. False when it can't be read.
bool LoadFontImage(const std::string &path, uint32_t *texels) {
  FREE_IMAGE_FORMAT format = FreeImage_GetFileType(path.c_str(), 0);
  if (format == FIF_UNKNOWN) format = FreeImage_GetFIFFromFilename(path.c_str());
  if (format == FIF_UNKNOWN) return false;
  FIBITMAP *loaded = FreeImage_Load(format, path.c_str(), 0);
  if (!loaded) return false;
  FIBITMAP *image = FreeImage_ConvertTo32Bits(loaded);
  FreeImage_Unload(loaded);
  if (!image) return false;
  const int width = std::min<int>(FreeImage_GetWidth(image), CFont::IMAGE_SIZE);
  const int height = std::min<int>(FreeImage_GetHeight(image), CFont::IMAGE_SIZE);
  const int rows = static_cast<int>(FreeImage_GetHeight(image));
  for (int y = 0; y < height; ++y) {
    const BYTE *src = FreeImage_GetScanLine(image, rows - 1 - y);  // FreeImage stores bottom-up
    uint32_t *dst = texels + y * CFont::IMAGE_SIZE;
    for (int x = 0; x < width; ++x, src += 4)
      dst[x] = src[FI_RGBA_RED] | (src[FI_RGBA_GREEN] << 8) | (src[FI_RGBA_BLUE] << 16) |
               (static_cast<uint32_t>(src[FI_RGBA_ALPHA]) << 24);
  }
  FreeImage_Unload(image);
  return true;
}

void ReleaseTexture(CTexture *&texture) {
  if (!texture) return;
  texture->Release();
  delete texture;
  texture = nullptr;
}
}  // namespace

float CFontChar::Kerning(int second) const {
  for (size_t i = 0; i + 1 < kerning.size(); i += 2)
    if (static_cast<int>(kerning[i]) == second) return kerning[i + 1];
  return 0;
}

std::string FontImageName(const std::string &fontName) {
  const size_t slash = fontName.find_last_of("/\\");
  const size_t dot = fontName.rfind('.');
  const bool hasExtension = dot != std::string::npos && (slash == std::string::npos || dot > slash);
  return (hasExtension ? fontName.substr(0, dot) : fontName) + ".png";
}

CFont::CFont() = default;

CFont::~CFont() {
  for (DeviceObjects &slot : dObjs) ReleaseTexture(slot.m_Texture);
}

CFontChar &CFont::GlyphToFill(uint32_t id) {
  if (id >= MAX_GLYPHS) return m_DefaultGlyph;
  if (!m_Glyphs[id]) m_Glyphs[id] = std::make_unique<CFontChar>();
  return *m_Glyphs[id];
}

int CFont::SetFont(const std::string &name, int maxQuads) {
  m_MaxQuads = std::max(maxQuads, 0);
  const int count = m_Quads.Count();
  m_Quads.SetSize(std::max(m_MaxQuads, static_cast<int>(m_Quads.End() - m_Quads.Quads())));
  m_Quads.SetCount(count);
  if (name == m_Name) return 0;
  m_Name = name;
  FILE *file = fopen(name.c_str(), "rb");
  if (!file) {
    LogError("Unable to load font \"%s\"", name.c_str());
    return 0;
  }
  const int result = CFontLoaderBinaryFormat(file, this, name).Load();
  // A file that broke off before its line height leaves text one pixel per unit.
  m_Scale = m_LineHeight > 0 ? 1.0f / m_LineHeight : 1.0f;
  return result;
}

float CFont::GetKerning(int first, int second) const {
  if (first < 0 || first >= MAX_GLYPHS || !m_Glyphs[first]) return 0;
  return m_Glyphs[first]->Kerning(second) * m_Scale;
}

float CFont::GetTextWidth(const char *text, int count) const {
  if (count < 1) count = static_cast<int>(strlen(text));
  float width = 0;
  for (int i = 0; i < count; ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    width += Glyph(c).xadvance * m_Scale;
    if (i + 1 < count) width += GetKerning(c, static_cast<unsigned char>(text[i + 1]));
  }
  return width;
}

// The next free quad, growing the batch when the caller asked for too few.
CQuadBatch::Quad *CFont::Room() {
  const int count = m_Quads.Count();
  const int size = static_cast<int>(m_Quads.End() - m_Quads.Quads());
  if (count >= size) {
    m_Quads.SetSize(std::max(2, size * 2));
    m_Quads.SetCount(count);
  }
  return m_Quads.Quads() + count;
}

void CFont::Write(float x, float y, float z, const char *text, int count, float spacing) {
  if (count < 1) count = static_cast<int>(strlen(text));
  const float w0 = m_ImageWidth ? static_cast<float>(m_ImageWidth) : 1.0f;
  const float h0 = m_ImageHeight ? static_cast<float>(m_ImageHeight) : 1.0f;
  float penX = x;
  y += m_Base * m_Scale;
  for (int i = 0; i < count; ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    const CFontChar &g = Glyph(c);
    const float uv0[2] = {g.x / w0, g.y / h0};
    const float uv1[2] = {g.width / w0 + uv0[0], g.height / h0 + uv0[1]};
    const float w = g.width * m_Scale, h = g.height * m_Scale;
    float corner[3] = {penX + g.xoffset * m_Scale, y - g.yoffset * m_Scale, z};
    CQuadBatch::Quad *out = Room();
    CQuadBatch::Quad *next = out;
    if (m_Hook) next = m_Hook(m_HookUser, out, m_Quads.Count(), 0, corner, w, h, uv0, uv1);
    if (next == out) {
      const float X = corner[0], Y = corner[1], Z = corner[2];
      *out = {{{X + w, Y, Z, uv1[0], uv0[1], 0xFFFFFFFFu},
               {X, Y, Z, uv0[0], uv0[1], 0xFFFFFFFFu},
               {X + w, Y - h, Z, uv1[0], uv1[1], 0xFFFFFFFFu},
               {X, Y - h, Z, uv0[0], uv1[1], 0xFFFFFFFFu}}};
      next = out + 1;
    }
    if (next) m_Quads.SetCount(static_cast<int>(next - m_Quads.Quads()));
    penX += g.xadvance * m_Scale;
    if (c == ' ') penX += spacing;
    if (i + 1 < count) penX += GetKerning(c, static_cast<unsigned char>(text[i + 1]));
  }
}

void CFont::WriteCentered(float x, float y, float z, const char *text, int count) {
  Write(x - GetTextWidth(text, count) / 2, y, z, text, count);
}

void CFont::WriteLines(float x, float y, float z, const char *text, int count, int align) {
  if (count == 0) return;
  if (count < 0) count = static_cast<int>(strlen(text));
  const float lineStep = m_LineHeight * m_Scale;
  for (int start = 0; start < count;) {
    int end = start;
    while (end < count && text[end] != '\n') ++end;
    if (end > start) {
      const int n = end - start;
      float left = x;
      if (align == FONT_ALIGN_CENTER) left = x - GetTextWidth(text + start, n) / 2;
      if (align == FONT_ALIGN_RIGHT) left = x - GetTextWidth(text + start, n);
      Write(left, y, z, text + start, n);
      y -= lineStep;
    }
    start = end + 1;
  }
}

void CFont::Draw(CRender *render) { m_Quads.Draw(render); }

bool CFont::RestoreDevice(CRender *render) {
  DeviceObjects *dObjs = &this->dObjs[render->m_DeviceSlot];
  ReleaseTexture(dObjs->m_Texture);
  const int width = IMAGE_SIZE, height = IMAGE_SIZE;
  if (DEVICE_FAILED(!(dObjs->m_Texture = render->CreateTexture(width, height, 0, TF_A8R8G8B8, TT_Normal))))
    return false;
  CTexture *texture = dObjs->m_Texture;
  uint32_t *texels = texture->Lock();
  const std::string image = FontImageName(m_Name);
  if (!texels) {
    texture->Unlock();
  } else if (m_Name.empty() || !LoadFontImage(image, texels)) {
    std::fill_n(texels, IMAGE_SIZE * IMAGE_SIZE, 0u);  // invisible text rather than a failed node
    texture->Unlock();
    // No font chosen yet (device objects come before the first update) is
    // not a failure.
    if (!m_Name.empty()) LogError("Unable to load image \"%s\"", image.c_str());
  } else {
    texture->Unlock();
    texture->GenerateMipmaps();
  }
  return m_Quads.RestoreDevice(render);
}

void CFont::InvalidateDevice(CRender *render) {
  m_Quads.InvalidateDevice(render);
  ReleaseTexture(dObjs[render->m_DeviceSlot].m_Texture);
}
