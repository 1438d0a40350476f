#include "renderogl/Screenshot.h"

#include <FreeImage.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>

#include "core/Clock.h"
#include "core/Log.h"
#include "renderogl/RenderOGLBase.h"

namespace {
void FreeImageMessage(FREE_IMAGE_FORMAT format, const char *message) {
  LogError("FreeImage: %s (format %ld)", message ? message : "", static_cast<long>(format));
}

bool Exists(const std::string &file) {
  struct stat st;
  return stat(file.c_str(), &st) == 0;
}

void SplitPath(const std::string &path, std::string &folder, std::string &base) {
  size_t slash = path.find_last_of('/');
  folder = slash == std::string::npos ? std::string() : path.substr(0, slash);
  std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
  size_t dot = name.find_last_of('.');
  base = dot == std::string::npos ? name : name.substr(0, dot);
}

void MakeFolders(const std::string &folder) {
  for (size_t i = 1; i <= folder.size(); ++i)
    if (i == folder.size() || folder[i] == '/') mkdir(folder.substr(0, i).c_str(), 0755);
}
}  // namespace

std::string CScreenshot::UniqueFileName(const std::string &path) {
  std::string folder, base;
  SplitPath(path, folder, base);
  for (long i = 1; i <= 9999; ++i) {
    WallTime t = GetClock().LocalTime();
    char date[64], name[300];
    snprintf(date, sizeof(date), "%4ld-%02ld-%02ld_%02ld-%02ld", static_cast<long>(t.year), static_cast<long>(t.month),
             static_cast<long>(t.day), static_cast<long>(t.hour), static_cast<long>(t.minute));
    if (base.empty()) snprintf(name, sizeof(name), "%s_%02ld.png", date, i);
    else snprintf(name, sizeof(name), "%s-%s-%02ld.png", date, base.c_str(), i);
    std::string file = folder.empty() || folder.back() == '/' ? folder + name : folder + "/" + name;
    if (!Exists(file)) return file;
  }
  return folder;
}

std::string CScreenshot::Capture(const std::string &path) {
  std::string folder, base;
  SplitPath(path, folder, base);
  if (!folder.empty()) MakeFolders(folder);
  return TakeScreenshot(path);
}

std::string CScreenshot::TakeScreenshot(const std::string &path) {
  std::string name = UniqueFileName(path);
  SaveAs(name);
  return name;
}

bool CScreenshot::SaveAs(const std::string &name) {
  FreeImage_SetOutputMessage(&FreeImageMessage);
  // A single window, or monitors that all show the same view, give a picture
  // of the first unit alone.
  auto &windows = m_Render.m_Windows;
  bool single = windows.empty() || !windows.front().monitor || m_Render.m_AllScreensSame;
  if (single && m_Render.UnitOfWindow(0) >= 0) m_Render.SwitchToRenderUnit(m_Render.UnitOfWindow(0));
  const CRect area = single ? CRect{0, 0, m_Render.m_UnitRect.Width(), m_Render.m_UnitRect.Height()}
                            : m_Render.m_VirtualRect;
  FIBITMAP *picture = FreeImage_Allocate(area.Width(), area.Height(), 24);
  if (!picture) return LogError("Create image failed");
  bool saved = false;
  for (int i = 0; i < static_cast<int>(windows.size()); ++i) {
    int unit = m_Render.UnitOfWindow(i);
    if (unit < 0 || !m_Render.SwitchToRenderUnit(unit)) continue;  // a black monitor stays black
    // ReadPixels fills the unit's whole rectangle, so the part has its size.
    const CRect &unitRect = m_Render.m_UnitRect;
    FIBITMAP *part = FreeImage_Allocate(unitRect.Width(), unitRect.Height(), 24);
    if (!part) break;
    m_Render.ReadPixels(FreeImage_GetBits(part));
    // Monitors left of or above the origin have negative coordinates.
    const CMonitor *monitor = windows[static_cast<size_t>(i)].monitor;
    int left = single || !monitor ? 0 : monitor->m_Rect.left - area.left;
    int top = single || !monitor ? 0 : monitor->m_Rect.top - area.top;
    // Above 255 FreeImage copies; 255 itself blends and darkens by a step.
    FreeImage_Paste(picture, part, left, top, 256);
    FreeImage_Unload(part);
    if (single) break;
  }
  FREE_IMAGE_FORMAT format = FreeImage_GetFIFFromFilename(name.c_str());
  if (format != FIF_UNKNOWN) {
    if (FreeImage_FIFSupportsWriting(format) && FreeImage_FIFSupportsExportBPP(format, 24))
      saved = FreeImage_Save(format, picture, name.c_str(), 0);
    else
      LogError("Format doesn't support writing");
  }
  FreeImage_Unload(picture);
  return saved;
}

bool CScreenshot::BeginMovie(const std::string &fileName, int soundChannels, int soundRate) {
  EndMovie();
  m_MovieGood = true;
  m_MovieFile = fileName;
  m_Movie = m_MakeMovieWriter();
  if (!m_Movie || !m_Movie->Create(fileName)) {
    LogError("Failed to create movie file \"%s\"", fileName.c_str());
    m_MovieGood = false;
  } else if (soundChannels > 0) {
    m_Movie->SetSound(soundChannels, soundRate);
  }
  return m_MovieGood;
}

bool CScreenshot::EndMovieWith(const char *what) {
  LogError("%s: %s", what, m_Movie ? m_Movie->ErrorText().c_str() : "");
  m_MovieGood = false;
  return false;
}

void CScreenshot::AddMovieFrame(int framesPerSecond) {
  if (!m_MovieGood || m_Render.UnitOfWindow(0) < 0 || !m_Render.SwitchToRenderUnit(m_Render.UnitOfWindow(0))) return;
  // ReadPixels fills the unit's whole rectangle in padded bottom-up rows.
  MoviePicture picture;
  picture.width = m_Render.m_UnitRect.Width();
  picture.height = m_Render.m_UnitRect.Height();
  picture.framesPerSecond = framesPerSecond;
  const size_t bytes = static_cast<size_t>((picture.width * 3 + 3) & ~3) * static_cast<size_t>(std::max(picture.height, 0));
  if (bytes == 0) {
    EndMovieWith("Create video failed");
    return;
  }
  m_MovieImage.resize(bytes);
  m_Render.ReadPixels(m_MovieImage.data());
  picture.bgr = m_MovieImage.data();
  ++m_MovieFrames;
  if (!m_Movie->AddFrame(picture)) EndMovieWith("Movie frame failed");
}

void CScreenshot::AddMovieSound(const float *interleaved, int frames) {
  if (m_MovieGood && frames > 0 && !m_Movie->AddSound(interleaved, frames)) EndMovieWith("Movie sound failed");
}

void CScreenshot::EndMovie() {
  if (m_Movie && m_MovieFrames > 0 && !m_Movie->Finish())
    LogError("Failed to finish movie file \"%s\": %s", m_MovieFile.c_str(), m_Movie->ErrorText().c_str());
  m_Movie.reset();
  m_MovieImage = {};
  m_MovieGood = false;
  m_MovieFrames = 0;
}
