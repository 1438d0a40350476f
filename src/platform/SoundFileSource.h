#pragma once
// Plays a sound file as if the machine were playing it: a WAV (or any file
// libsndfile reads) at its own rate, resampled to 44100 Hz, or raw
// interleaved stereo floats at 44100 Hz (".raw", ".f32"). Packets appear as
// the time line advances, so a demo follows real time and a recording or an
// analysis follows the simulation's time.

#include "platform/SoundSource.h"

#include <memory>
#include <string>

class CSoundFileSource final : public ISoundSource {
 public:
  static constexpr int OutputRate = 44100;
  static constexpr uint32_t MaxPacketFrames = 1024;

  // `now` gives seconds; by default the process clock. The file starts
  // playing at Start.
  explicit CSoundFileSource(std::string path, SoundTimeFunction now = nullptr);
  ~CSoundFileSource() override;

  // Opens the file and reads its header without playing it; false (with
  // ErrorText) when it is missing or not a sound file. Start opens it too.
  bool Open();
  // Frames at 44100 Hz that the whole file gives; valid once open.
  int64_t OutputFrames() const;
  // Every frame of the file has been handed out.
  bool AtEnd() const;

  SoundResult Start(SoundMixFormat &format) override;
  void Stop() override;
  SoundResult GetNextPacketSize(uint32_t &frames) override;
  SoundResult GetBuffer(SoundPacket &packet) override;
  SoundResult ReleaseBuffer(uint32_t frames) override;
  std::string ErrorText() const override;

 private:
  struct Impl;
  std::unique_ptr<Impl> m_Impl;
};
