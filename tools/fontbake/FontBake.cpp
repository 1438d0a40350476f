// Bakes a TrueType/OpenType face into a bitmap font: a 256 x 256 PNG of
// white glyphs with their coverage in alpha, and the binary .fnt beside it
// with the metrics and kerning pairs. The dot-matrix mode samples the face
// on a coarse grid and draws each lit cell as a round dot.
//
//   velmor-fontbake [--led] [--chars TEXT] FACE.ttf OUT.fnt
//
// The largest pixel size at which every character fits the picture wins.

#include <FreeImage.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace {
constexpr int kImage = 256;
constexpr int kPad = 2;       // empty texels around each glyph, so filtering never bleeds
constexpr int kLedCell = 4;   // texels per dot of the dot-matrix mode
constexpr float kLedDot = 1.6f;  // dot radius in texels

struct Glyph {
  uint32_t id = 0;
  int width = 0, height = 0;       // in the picture
  float xoffset = 0, yoffset = 0, xadvance = 0;
  std::vector<uint8_t> coverage;   // width * height
  int x = 0, y = 0;                // placed in the picture
};

struct Baked {
  int lineHeight = 0, base = 0;
  std::vector<Glyph> glyphs;
  std::vector<std::pair<std::pair<uint32_t, uint32_t>, float>> kerning;
};

// A coverage bitmap of the glyph as FreeType renders it.
Glyph RenderGlyph(FT_Face face, uint32_t code, int base) {
  Glyph g;
  g.id = code;
  if (FT_Load_Char(face, code, FT_LOAD_RENDER)) return g;
  const FT_Bitmap &bm = face->glyph->bitmap;
  g.width = static_cast<int>(bm.width);
  g.height = static_cast<int>(bm.rows);
  g.coverage.resize(static_cast<size_t>(g.width) * g.height);
  for (int y = 0; y < g.height; ++y)
    std::memcpy(&g.coverage[y * g.width], bm.buffer + y * bm.pitch, g.width);
  g.xoffset = static_cast<float>(face->glyph->bitmap_left);
  g.yoffset = static_cast<float>(base - face->glyph->bitmap_top);
  g.xadvance = face->glyph->advance.x / 64.0f;
  return g;
}

// The glyph sampled on the pixel grid of the face (one pixel a dot) and
// drawn as round dots of kLedCell texels: a lit display of that many cells.
Glyph LedGlyph(FT_Face face, uint32_t code, int base) {
  Glyph cells = RenderGlyph(face, code, base);
  Glyph g = cells;
  g.width = cells.width * kLedCell;
  g.height = cells.height * kLedCell;
  g.coverage.assign(static_cast<size_t>(g.width) * g.height, 0);
  for (int cy = 0; cy < cells.height; ++cy)
    for (int cx = 0; cx < cells.width; ++cx) {
      if (cells.coverage[cy * cells.width + cx] < 100) continue;
      for (int py = 0; py < kLedCell; ++py)
        for (int px = 0; px < kLedCell; ++px) {
          const float dx = px + 0.5f - kLedCell / 2.0f, dy = py + 0.5f - kLedCell / 2.0f;
          const float a = std::clamp(kLedDot + 0.5f - std::sqrt(dx * dx + dy * dy), 0.0f, 1.0f);
          g.coverage[(cy * kLedCell + py) * g.width + cx * kLedCell + px] = static_cast<uint8_t>(a * 255);
        }
    }
  const float cell = static_cast<float>(kLedCell);
  g.xoffset *= cell;
  g.yoffset *= cell;
  g.xadvance = std::round(g.xadvance) * cell;
  return g;
}

// Shelf packing, tallest first; false when the picture is too small.
bool Pack(std::vector<Glyph> &glyphs) {
  std::vector<Glyph *> order;
  for (Glyph &g : glyphs) order.push_back(&g);
  std::stable_sort(order.begin(), order.end(), [](const Glyph *a, const Glyph *b) { return a->height > b->height; });
  int x = 0, y = 0, shelf = 0;
  for (Glyph *g : order) {
    const int w = g->width + kPad, h = g->height + kPad;
    if (x + w > kImage) {
      x = 0;
      y += shelf;
      shelf = 0;
    }
    if (w > kImage || y + h > kImage) return false;
    g->x = x + kPad / 2;
    g->y = y + kPad / 2;
    x += w;
    shelf = std::max(shelf, h);
  }
  return true;
}

bool Bake(FT_Face face, int pixels, bool led, const std::vector<uint32_t> &chars, Baked &out) {
  if (FT_Set_Pixel_Sizes(face, 0, pixels)) return false;
  const int scale = led ? kLedCell : 1;
  const int base = static_cast<int>(face->size->metrics.ascender >> 6);
  out = Baked{};
  out.lineHeight = static_cast<int>(face->size->metrics.height >> 6) * scale;
  out.base = base * scale;
  for (uint32_t c : chars) out.glyphs.push_back(led ? LedGlyph(face, c, base) : RenderGlyph(face, c, base));
  if (!Pack(out.glyphs)) return false;
  if (!FT_HAS_KERNING(face) || led) return true;
  for (uint32_t a : chars)
    for (uint32_t b : chars) {
      FT_Vector k;
      if (FT_Get_Kerning(face, FT_Get_Char_Index(face, a), FT_Get_Char_Index(face, b), FT_KERNING_UNFITTED, &k))
        continue;
      if (k.x != 0) out.kerning.push_back({{a, b}, k.x / 64.0f});
    }
  return true;
}

template <typename T>
void Put(std::vector<uint8_t> &bytes, T value) {
  const auto *p = reinterpret_cast<const uint8_t *>(&value);
  bytes.insert(bytes.end(), p, p + sizeof(T));
}

void Block(std::vector<uint8_t> &file, uint8_t type, const std::vector<uint8_t> &payload) {
  file.push_back(type);
  Put<uint32_t>(file, static_cast<uint32_t>(payload.size()));
  file.insert(file.end(), payload.begin(), payload.end());
}

bool WriteFnt(const Baked &font, const std::string &path, const std::string &imageName) {
  std::vector<uint8_t> file = {'B', 'M', 'F', 3}, info, common, pages, chars, kerning;
  info.assign(14, 0);  // not read back
  for (int16_t v : {font.lineHeight, font.base, kImage, kImage, 1}) Put<int16_t>(common, v);
  common.push_back(0);  // flags
  pages.insert(pages.end(), imageName.begin(), imageName.end());
  pages.push_back(0);
  for (const Glyph &g : font.glyphs) {
    Put<uint32_t>(chars, g.id);
    for (float v : {static_cast<float>(g.x), static_cast<float>(g.y), static_cast<float>(g.width),
                    static_cast<float>(g.height), g.xoffset, g.yoffset, g.xadvance})
      Put<float>(chars, v);
    chars.push_back(0);   // page
    chars.push_back(15);  // all channels
  }
  for (const auto &[pair, amount] : font.kerning) {
    Put<uint32_t>(kerning, pair.first);
    Put<int32_t>(kerning, static_cast<int32_t>(pair.second));
    Put<float>(kerning, amount);
  }
  Block(file, 1, info);
  Block(file, 2, common);
  Block(file, 3, pages);
  Block(file, 4, chars);
  if (!kerning.empty()) Block(file, 5, kerning);
  FILE *f = fopen(path.c_str(), "wb");
  if (!f) return false;
  const bool ok = fwrite(file.data(), 1, file.size(), f) == file.size();
  return fclose(f) == 0 && ok;
}

bool WritePng(const Baked &font, const std::string &path) {
  FIBITMAP *image = FreeImage_Allocate(kImage, kImage, 32);
  if (!image) return false;
  for (int y = 0; y < kImage; ++y) std::memset(FreeImage_GetScanLine(image, y), 0, kImage * 4);
  for (const Glyph &g : font.glyphs)
    for (int y = 0; y < g.height; ++y) {
      BYTE *row = FreeImage_GetScanLine(image, kImage - 1 - (g.y + y));
      for (int x = 0; x < g.width; ++x) {
        BYTE *p = row + 4 * (g.x + x);
        p[FI_RGBA_RED] = p[FI_RGBA_GREEN] = p[FI_RGBA_BLUE] = 255;
        p[FI_RGBA_ALPHA] = g.coverage[y * g.width + x];
      }
    }
  const bool ok = FreeImage_Save(FIF_PNG, image, path.c_str(), PNG_Z_BEST_COMPRESSION);
  FreeImage_Unload(image);
  return ok;
}

std::string BaseName(const std::string &path) {
  const size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}
}  // namespace

int main(int argc, char **argv) {
  bool led = false;
  std::string charText, facePath, outPath;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (arg == "--led") led = true;
    else if (arg == "--chars" && i + 1 < argc) charText = argv[++i];
    else if (facePath.empty()) facePath = arg;
    else outPath = arg;
  }
  if (facePath.empty() || outPath.size() < 5 || outPath.substr(outPath.size() - 4) != ".fnt") {
    fprintf(stderr, "usage: velmor-fontbake [--led] [--chars TEXT] FACE.ttf OUT.fnt\n");
    return 2;
  }
  std::vector<uint32_t> chars;
  if (charText.empty())
    for (uint32_t c = 32; c < 127; ++c) chars.push_back(c);
  else
    for (unsigned char c : charText) chars.push_back(c);

  FT_Library library;
  FT_Face face;
  if (FT_Init_FreeType(&library) || FT_New_Face(library, facePath.c_str(), 0, &face)) {
    fprintf(stderr, "velmor-fontbake: cannot open face %s\n", facePath.c_str());
    return 1;
  }
  Baked font;
  int pixels = led ? 24 : 64;
  while (pixels > 4 && !Bake(face, pixels, led, chars, font)) --pixels;
  const std::string pngPath = outPath.substr(0, outPath.size() - 4) + ".png";
  const bool ok = pixels > 4 && WriteFnt(font, outPath, BaseName(pngPath)) && WritePng(font, pngPath);
  printf("%s: %zu glyphs at %d px, line height %d, %zu kerning pairs\n", outPath.c_str(), font.glyphs.size(), pixels,
         font.lineHeight, font.kerning.size());
  FT_Done_Face(face);
  FT_Done_FreeType(library);
  return ok ? 0 : 1;
}
