#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "nodes/texture/GeneratedTexture.h"

class CPortString;

// A picture from a file in any format FreeImage reads. A file that is not
// there is looked for with the extension ".dds" instead; one that can't be
// read gives a transparent black 32 x 32 texture.
class CNTFile : public CGeneratedTextureNode {
 public:
  static CNodeInfo *CreateInfo();
  CNTFile();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;

  // The texels of the file, top row first, bytes R, G, B, A. False (logged)
  // when it can't be read.
  static bool LoadImage(const std::string &name, std::vector<uint32_t> &texels, int &width, int &height);

 private:
  // Reads the file when its name differs from the one tried last, so each
  // name is read, and a failure logged, once.
  void Load();

  CPortString *m_Filename = nullptr;
  std::string m_Tried;
  bool m_Loaded = false;
  std::vector<uint32_t> m_Texels;
  int m_ImageWidth = 0, m_ImageHeight = 0;
};
