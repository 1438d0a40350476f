#pragma once
// Pictures of what the renderer drew last, as PNG files that never overwrite
// each other: the folder of the path, the date to the minute, the base name
// and a count.

#include <string>

class CRenderOGLBase;

class CScreenshot {
 public:
  explicit CScreenshot(CRenderOGLBase &render) : m_Render(render) {}

  // Creates the folder of `path`, then takes the picture; the file name.
  std::string Capture(const std::string &path);
  // One picture of the virtual rect: each monitor's unit at its own place,
  // or the first unit alone for a single window or AllScreensSame. The name
  // is returned whether or not saving worked.
  std::string TakeScreenshot(const std::string &path);
  // The same picture saved under exactly this name; false when it wasn't.
  bool SaveAs(const std::string &name);

  // The first "<date>-<base>-NN.png" (or "<date>_NN.png") in the folder of
  // `path` that doesn't exist yet; the folder itself when all are taken.
  static std::string UniqueFileName(const std::string &path);

 private:
  CRenderOGLBase &m_Render;
};
