#include "portdata/FontLoader.h"

#include <cstring>
#include <vector>

#include "core/Log.h"
#include "portdata/Font.h"

namespace {
const uint8_t kMagic[4] = {'B', 'M', 'F', 3};

template <typename T>
T Read(const uint8_t *p) {
  T value;
  std::memcpy(&value, p, sizeof(T));  // little-endian files, little-endian hosts
  return value;
}

uint32_t ChannelMask(uint8_t channel) {
  switch (channel) {
    case 1: return 0x10000;
    case 2: return 0x100;
    case 4: return 1;
    case 8: return 0x1000000;
    default: return 0;
  }
}
}  // namespace

CFontLoader::~CFontLoader() { Close(); }

void CFontLoader::Close() {
  if (m_File) fclose(m_File);
  m_File = nullptr;
}

int CFontLoaderBinaryFormat::Fail(const char *what) {
  LogError("Font '%s' is cut or corrupt: %s", m_Name.c_str(), what);
  Close();
  return -1;
}

int CFontLoaderBinaryFormat::Load() {
  uint8_t magic[4];
  if (fread(magic, 1, 4, m_File) != 4 || std::memcmp(magic, kMagic, 4) != 0) {
    LogError("Unrecognized format for '%s'", m_Name.c_str());
    Close();
    return -1;
  }
  std::vector<uint8_t> payload;
  for (int type; (type = fgetc(m_File)) != EOF;) {
    uint8_t sizeBytes[4];
    if (fread(sizeBytes, 1, 4, m_File) != 4) return Fail("it ends inside a block header");
    const uint32_t size = Read<uint32_t>(sizeBytes);
    if (type < 1 || type > 5) {
      LogError("Unexpected block type (%d)", type);
      Close();
      return -1;
    }
    // The payload is read whole; a size beyond any font is not allocated.
    if (size > MAX_BLOCK) return Fail("a block is larger than any font needs");
    payload.assign(size, 0);
    if (size && fread(payload.data(), 1, size, m_File) != size)
      return Fail("it ends inside a block");
    switch (type) {
      case 2: ReadCommon(payload.data(), size); break;
      case 4: ReadChars(payload.data(), size); break;
      case 5: ReadKerning(payload.data(), size); break;
      default: break;  // info and page names are not needed
    }
  }
  Close();
  return 0;
}

void CFontLoaderBinaryFormat::ReadCommon(const uint8_t *p, uint32_t size) {
  int16_t *fields[4] = {&m_Font->m_LineHeight, &m_Font->m_Base, &m_Font->m_ImageWidth, &m_Font->m_ImageHeight};
  for (uint32_t i = 0; i < 4 && 2 * i + 2 <= size; ++i) *fields[i] = Read<int16_t>(p + 2 * i);
}

void CFontLoaderBinaryFormat::ReadChars(const uint8_t *p, uint32_t size) {
  for (uint32_t at = 0; at + CHAR_RECORD <= size; at += CHAR_RECORD) {
    const uint8_t *r = p + at;
    const uint32_t id = Read<uint32_t>(r);
    if (id >= CFont::MAX_GLYPHS && id != 0xFFFFFFFFu) continue;
    CFontChar &g = m_Font->GlyphToFill(id);
    float *fields[7] = {&g.x, &g.y, &g.width, &g.height, &g.xoffset, &g.yoffset, &g.xadvance};
    for (int f = 0; f < 7; ++f) *fields[f] = Read<float>(r + 4 + 4 * f);
    g.page = r[32];
    g.channelMask = ChannelMask(r[33]);
    g.kerning.clear();
  }
}

void CFontLoaderBinaryFormat::ReadKerning(const uint8_t *p, uint32_t size) {
  for (uint32_t at = 0; at + KERNING_RECORD <= size; at += KERNING_RECORD) {
    const uint32_t first = Read<uint32_t>(p + at);
    // Pairs need their first glyph: a kerning block before the characters is lost.
    if (first >= CFont::MAX_GLYPHS || !m_Font->HasGlyph(static_cast<unsigned char>(first))) continue;
    CFontChar &g = m_Font->GlyphToFill(first);
    g.kerning.push_back(static_cast<float>(Read<int32_t>(p + at + 4)));
    g.kerning.push_back(Read<float>(p + at + 8));
  }
}
