// Feeds arbitrary bytes to the font reader as a .fnt file, then lays out and
// measures text with whatever it read: nothing may read past the input,
// allocate without bound or crash.
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "portdata/Font.h"
#include "portdata/FontLoader.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FILE *file = fmemopen(const_cast<uint8_t *>(data), size, "rb");
  if (!file) return 0;
  CFont font;
  CFontLoaderBinaryFormat(file, &font, "fuzz.fnt").Load();
  font.Batch().SetSize(8);
  font.Batch().SetCount(0);
  const char text[] = "Aa V\n\xff\x80 z";
  font.WriteLines(0, 0, 0, text, sizeof(text) - 1, 1);
  font.GetTextWidth(text, sizeof(text) - 1);
  return 0;
}
