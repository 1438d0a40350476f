#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

class CSceneBase;

// Seconds between ticks, from the high-resolution counter when there is one,
// else from the millisecond clock.
class CFrameTimer {
 public:
  void Start();
  void Tick();
  float GetDelta() const { return m_Delta; }

  bool m_HighResolution = false;
  int64_t m_LastCounter = 0;
  int64_t m_Frequency = 1;
  float m_Delta = 0.0f;
};

// One CSV line a frame, "time,ms,scene": the playing scene's clock, what the
// frame cost in milliseconds (simulation, drawing and presenting; not the
// wait for the frame-rate cap) and the scene's file (its name when it has
// none). Lines collect in a large
// buffer that is written every couple of seconds and at the end, so that the
// log doesn't slow the frames it measures.
class CFrameTimeLog {
 public:
  CFrameTimeLog() = default;
  ~CFrameTimeLog() { Close(); }
  CFrameTimeLog(const CFrameTimeLog &) = delete;
  CFrameTimeLog &operator=(const CFrameTimeLog &) = delete;

  // Creates the file with its header line; false when it can't be written.
  bool Open(const std::string &path);
  void Close();
  // A frame starts at its first update; later calls in the frame are ignored.
  void BeginFrame();
  // Writes the frame begun last; nothing when none was begun.
  void EndFrame(const CSceneBase *scene);

 private:
  FILE *m_File = nullptr;
  bool m_InFrame = false;
  CFrameTimer m_Timer;
  float m_SinceFlush = 0.0f;
  const CSceneBase *m_Scene = nullptr;
  std::string m_SceneField;
};
