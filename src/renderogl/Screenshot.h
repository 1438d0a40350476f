#pragma once
// Pictures of what the renderer drew last, as PNG files that never overwrite
// each other: the folder of the path, the date to the minute, the base name
// and a count.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/MovieWriter.h"

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

  // A movie of the first unit: one key frame per AddMovieFrame at the rate
  // given, complete once EndMovie has returned. Any failure ends the movie
  // (logged once); later frames are ignored until the next BeginMovie.
  // With soundChannels > 0 the movie gets a sound stream, fed by
  // AddMovieSound with interleaved samples at soundRate.
  bool BeginMovie(const std::string &fileName, int soundChannels = 0, int soundRate = 44100);
  void AddMovieFrame(int framesPerSecond);
  void AddMovieSound(const float *interleaved, int frames);
  bool MovieGood() const { return m_MovieGood; }
  void EndMovie();
  int MovieFrames() const { return m_MovieFrames; }

  // Where movies are written; FFmpeg unless a test puts a fake here.
  std::function<std::unique_ptr<IMovieWriter>()> m_MakeMovieWriter = &MakeMovieWriter;

 private:
  bool EndMovieWith(const char *what);

  CRenderOGLBase &m_Render;
  std::unique_ptr<IMovieWriter> m_Movie;
  std::vector<uint8_t> m_MovieImage;
  bool m_MovieGood = false;
  int m_MovieFrames = 0;
  std::string m_MovieFile;
};
