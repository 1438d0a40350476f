#pragma once
// Pulls the packets of a sound source and repacks them into fixed frames of
// 576 stereo pairs for the analysis. There is no audio thread: the engine's
// update polls, on the main thread, at most 60 times a second and at most
// five packets a time. When the source fails, capture logs it once, runs
// silent and tries again every few seconds.

#include "platform/SoundSource.h"

#include <cstdint>
#include <memory>
#include <vector>

struct SoundFrame {
  static constexpr int Pairs = 576;
  SoundFrame *next = nullptr;  // link in the queue or the free list
  int32_t count = 0;           // stereo pairs written so far; 0 for a silent frame
  float samples[Pairs * 2] = {};  // interleaved left, right
};

class CSoundCapture {
 public:
  static constexpr double PollIntervalMs = 16.666666666666668;
  static constexpr int MaxPacketsPerPoll = 5;
  static constexpr double RetryIntervalMs = 3000.0;
  static constexpr int FramesPerBlock = 16;

  CSoundCapture();
  ~CSoundCapture();
  CSoundCapture(const CSoundCapture &) = delete;
  CSoundCapture &operator=(const CSoundCapture &) = delete;

  // Replaces the source (stopping the old one). Without one, StartCapture
  // uses the sound server.
  void SetSource(std::unique_ptr<ISoundSource> source);
  ISoundSource *Source() const { return m_Source.get(); }

  bool StartCapture();
  // True while capture runs; nobody needs to act on it.
  bool PollCapture();
  // Stops for good: no retries until StartCapture is called again.
  void StopCapture();

  bool IsRunning() const { return m_Running; }
  // Whether the last poll found nothing but silence; true until sound comes.
  bool IsSilent() const { return m_Silent; }
  uint32_t TotalFrames() const { return m_TotalFrames; }

  // Filled frames, oldest first; a taken frame goes back with ReleaseFrame.
  SoundFrame *PopFilledFrame();
  void ReleaseFrame(SoundFrame *frame);
  size_t PoolSize() const { return m_Blocks.size() * FramesPerBlock; }

 private:
  SoundFrame *TakeFreeFrame();
  void QueueFrame(SoundFrame *frame);
  void PushSilentFrame();
  void CopyPacket(const SoundPacket &packet);
  bool Fail(ESoundStep step, int32_t code);
  void LogFailure(ESoundStep step, int32_t code);
  void Shutdown();

  std::unique_ptr<ISoundSource> m_Source;
  bool m_Running = false;
  uint32_t m_TotalFrames = 0;
  int32_t m_BlockAlign = 0;
  bool m_Silent = true;
  double m_LastDataTime = 0.0;
  double m_LastPollTime;
  // Retries after a failure; while they fail, nothing more is logged.
  bool m_Retry = false;
  bool m_Quiet = false;
  double m_LastStartTime = 0.0;

  std::vector<std::unique_ptr<SoundFrame[]>> m_Blocks;
  SoundFrame *m_FreeList = nullptr;
  SoundFrame *m_QueueHead = nullptr;
  SoundFrame *m_QueueTail = nullptr;
  SoundFrame *m_Current = nullptr;
};
