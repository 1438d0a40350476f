#pragma once
// --audio FILE for the commands that run scenes: the process's sound
// analysis plays the file on a clock that follows the scene, so that scene
// time t hears the file around t seconds in. Without a file the sound stays
// silent.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class CScopedFakeClock;

class CToolSound {
 public:
  CToolSound();
  ~CToolSound();
  // Takes "--audio FILE" out of the arguments; false (with a message on
  // stderr) when the file can't be played.
  bool TakeOption(std::vector<std::string> &args);
  // Analyses the file up to `seconds` into it; nothing without a file.
  void AdvanceTo(double seconds);

 private:
  std::unique_ptr<CScopedFakeClock> m_Clock;
  int64_t m_Start = 0;
};
