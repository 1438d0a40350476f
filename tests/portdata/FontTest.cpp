// Bitmap fonts: what the binary file gives the font, how a line and a block
// of lines are laid out, and that a cut or corrupt file is refused without
// reading past its end.
#include <FreeImage.h>
#include <gtest/gtest.h>

#include <cstring>

#include "portdata/Font.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {
// A font file built field by field: common block with line height 20 and
// base 16 in a 256 picture; glyphs A (advance 20), V (advance 18), blank
// (advance 5) and a default glyph; the pair A V kerned by -2.
struct FontBytes {
  std::string bytes = std::string("BMF\3", 4);
  template <typename T>
  static void Put(std::string &s, T v) { s.append(reinterpret_cast<const char *>(&v), sizeof(T)); }
  FontBytes &Block(char type, const std::string &payload) {
    bytes += type;
    Put<uint32_t>(bytes, static_cast<uint32_t>(payload.size()));
    bytes += payload;
    return *this;
  }
  static std::string Common(int16_t lineHeight) {
    std::string p;
    for (int16_t v : {lineHeight, int16_t(16), int16_t(256), int16_t(256), int16_t(1)}) Put(p, v);
    return p + '\0';
  }
  static std::string Char(uint32_t id, float x, float w, float advance) {
    std::string p;
    Put(p, id);
    for (float v : {x, 8.0f, w, 12.0f, 1.0f, 4.0f, advance}) Put(p, v);
    return p + '\0' + '\xf';
  }
  static std::string Kern(uint32_t first, int32_t second, float amount) {
    std::string p;
    Put(p, first);
    Put(p, second);
    Put(p, amount);
    return p;
  }
  static FontBytes Standard() {
    FontBytes f;
    f.Block(1, "info").Block(2, Common(20)).Block(3, std::string("font.png\0", 9));
    f.Block(4, Char('A', 0, 18, 20) + Char('V', 20, 16, 18) + Char(' ', 40, 0, 5) + Char(0xFFFFFFFFu, 50, 10, 11) +
                   Char(300, 60, 10, 10));
    return f.Block(5, Kern('A', 'V', -2));
  }
};

struct LoadedFont {
  TempDir dir;
  CFont font;
  int result;
  explicit LoadedFont(const std::string &bytes) {
    std::string path = dir.Write("font.fnt", bytes);
    result = font.SetFont(path, 16);
  }
  // Left edges (X of the second corner) of the quads written since the last call.
  std::vector<float> Lefts() {
    std::vector<float> x;
    for (int i = 0; i < font.Batch().Count(); ++i) x.push_back(font.Batch().Quads()[i].v[1].x);
    font.Batch().SetCount(0);
    return x;
  }
};
}  // namespace

TEST(Font, MetricsKerningTheDefaultGlyphAndLineLayout) {
  LoadedFont f(FontBytes::Standard().bytes);
  ASSERT_EQ(f.result, 0);
  EXPECT_FLOAT_EQ(f.font.m_Scale, 0.05f);
  EXPECT_NEAR(f.font.GetKerning('A', 'V'), -0.1f, 1e-6);
  // A then V is narrower by the pair than their advances; V then A is not kerned.
  EXPECT_NEAR(f.font.GetTextWidth("AV", 0), (20 + 18 - 2) * 0.05f, 1e-5);
  EXPECT_NEAR(f.font.GetTextWidth("VA", 0), (20 + 18) * 0.05f, 1e-5);
  // A byte the file doesn't define (and code 300, which it can't) takes the default glyph.
  EXPECT_FALSE(f.font.HasGlyph('Z'));
  EXPECT_FALSE(f.font.HasGlyph(300 & 0xFF));
  EXPECT_FLOAT_EQ(f.font.GetTextWidth("Z", 0), 11 * 0.05f);
  f.font.Write(0, 0, 0, "Z", 1);
  const CQuadBatch::Quad &q = f.font.Batch().Quads()[0];
  EXPECT_FLOAT_EQ(q.v[0].x - q.v[1].x, 10 * 0.05f);      // the default glyph's width
  EXPECT_FLOAT_EQ(q.v[1].u, 50.0f / 256);                 // and its place in the picture
  EXPECT_FLOAT_EQ(q.v[1].y, (16 - 4) * 0.05f);            // base above the pen, less yoffset
  f.Lefts();  // WriteLines from an empty batch: each line aligned, empty lines dropped
  const float av = f.font.GetTextWidth("AV", 0), a = f.font.GetTextWidth("A", 0), off = 0.05f;  // xoffset 1 px
  const struct {
    int align;
    std::vector<float> lefts;
  } cases[] = {
      {0, {off, off + 20 * 0.05f - 0.1f, off}},
      {1, {off - av / 2, off - av / 2 + 20 * 0.05f - 0.1f, off - a / 2}},
      {2, {off - av, off - av + 20 * 0.05f - 0.1f, off - a}},
      {3, {off, off + 20 * 0.05f - 0.1f, off}},  // anything else is left
  };
  for (const auto &c : cases) {
    f.font.WriteLines(0, 0, 0, "AV\n\nA", 5, c.align);
    const std::vector<float> lefts = f.Lefts();
    ASSERT_EQ(lefts.size(), 3u) << c.align;
    for (size_t i = 0; i < 3; ++i) EXPECT_NEAR(lefts[i], c.lefts[i], 1e-5) << c.align << " quad " << i;
  }
  // The second line stands one line height lower, not two.
  f.font.WriteLines(0, 0, 0, "A\n\nA", 4, 0);
  EXPECT_FLOAT_EQ(f.font.Batch().Quads()[0].v[1].y - f.font.Batch().Quads()[1].v[1].y, 1.0f);
}

TEST(Font, CutOrCorruptFilesAreRefusedWithTheirReason) {
  const std::string good = FontBytes::Standard().bytes;
  const std::string cut = FontBytes().Block(2, FontBytes::Common(20)).Block(4, FontBytes::Char('A', 0, 1, 1)).bytes;
  const struct {
    const char *what;
    std::string bytes;
    const char *error;
    int result;
  } cases[] = {
      {"wrong magic", "BMF\2" + good.substr(4), "Unrecognized format for", -1},
      {"shorter than the magic", "BM", "Unrecognized format for", -1},
      {"unknown block", FontBytes().Block(9, "xx").bytes, "Unexpected block type (9)", -1},
      {"cut in a block header", good.substr(0, 6), "ends inside a block header", -1},
      {"cut in a payload", cut.substr(0, cut.size() - 3), "ends inside a block", -1},
      {"huge block", FontBytes().Block(4, "").bytes.substr(0, 5) + std::string("\xff\xff\xff\x7f", 4),
       "larger than any font needs", -1},
      {"short common block", FontBytes().Block(2, "\x14").bytes, nullptr, 0},
      {"partial char record", FontBytes().Block(4, FontBytes::Char('A', 0, 1, 1).substr(0, 20)).bytes, nullptr, 0},
  };
  for (const auto &c : cases) {
    LogCapture log;
    LoadedFont f(c.bytes);
    EXPECT_EQ(f.result, c.result) << c.what;
    if (c.error) EXPECT_NE(log.LastError().find(c.error), std::string::npos) << c.what << ": " << log.LastError();
    else EXPECT_TRUE(log.errors.empty()) << c.what;
    EXPECT_FALSE(f.font.HasGlyph('A')) << c.what;
    f.font.WriteLines(0, 0, 0, "AV", 2, 1);  // still usable
  }
  // Kerning in front of the characters is lost, silently.
  FontBytes early;
  early.Block(2, FontBytes::Common(20)).Block(5, FontBytes::Kern('A', 'V', -2)).Block(4, FontBytes::Char('A', 0, 1, 1));
  LoadedFont f(early.bytes);
  EXPECT_EQ(f.result, 0);
  EXPECT_EQ(f.font.GetKerning('A', 'V'), 0);
}

// The shipped fonts as the baker wrote them: every glyph's box lies in the
// picture and holds coverage there, and nothing is drawn outside the boxes.
TEST(Font, BakedFontsMatchTheirPictures) {
  for (const char *name : {"font1", "fontledbig"}) {
    SCOPED_TRACE(name);
    const std::string base = std::string(VELMOR_SOURCE_ROOT) + "/assets/nodedata/fonts/" + name;
    CFont font;
    LogCapture log;
    ASSERT_EQ(font.SetFont(base + ".fnt", 100), 0);
    ASSERT_TRUE(log.errors.empty()) << log.LastError();
    EXPECT_EQ(font.m_ImageWidth, 256);
    EXPECT_GT(font.m_LineHeight, font.m_Base);
    FIBITMAP *image = FreeImage_Load(FIF_PNG, FontImageName(base + ".fnt").c_str(), 0);
    ASSERT_NE(image, nullptr);
    ASSERT_EQ(FreeImage_GetBPP(image), 32u);
    std::vector<int> owner(256 * 256, 0);
    int glyphs = 0;
    for (int c = 0; c < 256; ++c) {
      if (!font.HasGlyph(c)) continue;
      ++glyphs;
      const CFontChar &g = font.Glyph(c);
      ASSERT_TRUE(g.x >= 0 && g.y >= 0 && g.x + g.width <= 256 && g.y + g.height <= 256) << c;
      EXPECT_GT(g.xadvance, 0) << c;
      int covered = 0;
      for (int y = int(g.y); y < int(g.y + g.height); ++y)
        for (int x = int(g.x); x < int(g.x + g.width); ++x) {
          owner[y * 256 + x] = 1;
          covered += FreeImage_GetScanLine(image, 255 - y)[4 * x + FI_RGBA_ALPHA] > 0;
        }
      if (c != ' ') {
        EXPECT_GT(covered, 0) << "glyph " << c << " is empty in the picture";
      }
    }
    EXPECT_GE(glyphs, 15);
    for (int y = 0; y < 256; ++y)
      for (int x = 0; x < 256; ++x)
        if (!owner[y * 256 + x]) {
          ASSERT_EQ(FreeImage_GetScanLine(image, 255 - y)[4 * x + FI_RGBA_ALPHA], 0) << x << "," << y;
        }
    FreeImage_Unload(image);
  }
}
