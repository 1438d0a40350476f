#pragma once
// Text as textured quads from a bitmap font: a binary .fnt description and a
// 256 x 256 picture beside it (white glyphs, coverage in alpha, so text takes
// the color of whatever draws it). A text node clears the batch's count,
// writes its text each Update and draws the batch at draw time.
//
//   m_Font.SetFont("nodedata/fonts/font1.fnt", 100);        // in Init
//   m_Font.Batch().SetCount(0);                              // in Update
//   m_Font.WriteLines(0, 0, 0, text, count, FONT_ALIGN_CENTER);

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "portdata/PDObject.h"
#include "render/Render.h"
#include "portdata/RenderQuads.h"

class CTexture;

// One glyph, in pixels of the font picture.
struct CFontChar {
  float x = 0, y = 0;           // top left corner in the picture
  float width = 0, height = 0;  // size in the picture
  float xoffset = 0, yoffset = 0;  // the box relative to the pen
  float xadvance = 0;           // how far the pen moves
  int16_t page = 0;
  uint32_t channelMask = 0;
  std::vector<float> kerning;  // pairs: second character code, amount in pixels

  // The amount for `second` following this glyph; 0 without a pair.
  float Kerning(int second) const;
};

enum FontAlign { FONT_ALIGN_LEFT = 0, FONT_ALIGN_CENTER = 1, FONT_ALIGN_RIGHT = 2 };

// Called by Write for each glyph: the user word, the write pointer, the
// glyph's number among the quads of the batch, the line, the corner (which
// it may change), the size and both uv corners. Null drops the glyph; the
// write pointer itself asks for the default quad at the (changed) corner;
// any other pointer means the hook wrote the quad and moved past it.
using FontVertexHook = CQuadBatch::Quad *(*)(void *user, CQuadBatch::Quad *out, int quad, int line, float corner[3],
                                             float w, float h, const float uv0[2], const float uv1[2]);

class CFont : public CPDObject {
 public:
  static constexpr int MAX_GLYPHS = 256;
  static constexpr int IMAGE_SIZE = 256;

  CFont();
  ~CFont() override;

  // Reserves room for maxQuads quads and, unless the font already holds
  // `name`, loads it. 0 on success and for a missing file (logged), -1 for
  // a file that isn't a font.
  int SetFont(const std::string &name, int maxQuads);

  // Width of a line in units (a count below 1: the whole text).
  float GetTextWidth(const char *text, int count) const;
  float GetKerning(int first, int second) const;
  // One line with the pen starting at (x, y); spacing widens each blank.
  void Write(float x, float y, float z, const char *text, int count, float spacing = 0);
  void WriteCentered(float x, float y, float z, const char *text, int count);
  // The text cut at line feeds (empty lines vanish), one line height apart.
  void WriteLines(float x, float y, float z, const char *text, int count, int align);

  void Draw(CRender *render) override;
  bool RestoreDevice(CRender *render);
  void InvalidateDevice(CRender *render);
  CTexture *GetTexture(CRender *render) const { return dObjs[render->m_DeviceSlot].m_Texture; }

  void SetVertexHook(FontVertexHook hook, void *user) {
    m_Hook = hook;
    m_HookUser = user;
  }
  CRenderQuads &Batch() { return m_Quads; }
  // The glyph drawn for byte c: the file's, or the default glyph.
  const CFontChar &Glyph(unsigned char c) const { return m_Glyphs[c] ? *m_Glyphs[c] : m_DefaultGlyph; }
  bool HasGlyph(unsigned char c) const { return m_Glyphs[c] != nullptr; }
  // Units per pixel: 1 / line height once loaded. A node may change it.
  float m_Scale = 1.0f;
  int16_t m_LineHeight = 0, m_Base = 0, m_ImageWidth = 0, m_ImageHeight = 0;
  const std::string &Name() const { return m_Name; }

 private:
  friend class CFontLoaderBinaryFormat;
  CFontChar &GlyphToFill(uint32_t id);
  CQuadBatch::Quad *Room();

  FontVertexHook m_Hook = nullptr;
  void *m_HookUser = nullptr;
  std::unique_ptr<CFontChar> m_Glyphs[MAX_GLYPHS];
  CFontChar m_DefaultGlyph;
  std::string m_Name;
  CRenderQuads m_Quads;
  int m_MaxQuads = 0;
  struct DeviceObjects {
    CTexture *m_Texture = nullptr;
  } dObjs[MaxRenderUnits];
};

// The picture that belongs to a font: its folder and base name with ".png".
std::string FontImageName(const std::string &fontName);
