#pragma once
// Readers of font description files. The only format in use is binary:
// "BMF" and version 3, then blocks of a type byte, a 32-bit payload size and
// the payload (info, common, pages, characters, kerning pairs).

#include <cstdint>
#include <cstdio>
#include <string>

class CFont;

class CFontLoader {
 public:
  // Takes the open file and closes it when done.
  CFontLoader(FILE *file, CFont *font, const std::string &name) : m_File(file), m_Font(font), m_Name(name) {}
  virtual ~CFontLoader();
  // 0 when the whole file was read, -1 (logged) when it isn't a font or
  // breaks off; what was read before the fault stays in the font.
  virtual int Load() = 0;

 protected:
  void Close();
  FILE *m_File;
  CFont *m_Font;
  std::string m_Name;
  int m_Flags = 0;
};

class CFontLoaderBinaryFormat : public CFontLoader {
 public:
  using CFontLoader::CFontLoader;
  int Load() override;

  // Record sizes of the character and kerning blocks.
  static constexpr int CHAR_RECORD = 34;
  static constexpr int KERNING_RECORD = 12;
  // No font needs more: a block claiming more is a corrupt file.
  static constexpr uint32_t MAX_BLOCK = 1u << 20;

 private:
  int Fail(const char *what);
  void ReadCommon(const uint8_t *p, uint32_t size);
  void ReadChars(const uint8_t *p, uint32_t size);
  void ReadKerning(const uint8_t *p, uint32_t size);
};
