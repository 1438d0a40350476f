#pragma once
// What record mode needs of movie writing and screenshots.

#include <string>

class IMovieRecorder {
 public:
  virtual ~IMovieRecorder() = default;
  virtual bool StartMovie(const std::string &file) = 0;
  virtual bool WriteMovieFrame(int framesPerSecond) = 0;
  virtual void EndMovie() = 0;
  virtual bool SaveScreenshot(const std::string &file) = 0;
};
