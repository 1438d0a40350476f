#pragma once
// Where captured sound comes from: the sound server's monitor of the default
// output, a file, or a script under test. A source hands out interleaved
// float packets, one at a time, and never blocks; the framing, silence and
// failure logic above it is the same for all of them.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

// What a source delivers. Samples are always 32-bit floats; `blockAlign` is
// bytes per sample frame (4 per channel).
struct SoundMixFormat {
  int32_t formatTag = 3;  // 3 = IEEE float, 0xFFFE = extensible
  int32_t channels = 2;
  int32_t samplesPerSec = 44100;
  int32_t bitsPerSample = 32;
  int32_t blockAlign = 8;
  int32_t avgBytesPerSec = 44100 * 8;
};

// The operation that failed, so the capture can say which one.
enum class ESoundStep {
  CreateEnumerator,  // reaching the server at all
  DefaultEndpoint,   // finding the default output
  Activate,          // making a client for it
  DevicePeriod,
  MixFormat,
  Initialize,  // opening the recording stream
  GetService,
  Start,
  NextPacketSize,
  GetBuffer,
  ReleaseBuffer,
};

// code 0 is success; otherwise the source's own error number.
struct SoundResult {
  int32_t code = 0;
  ESoundStep step = ESoundStep::CreateEnumerator;
  explicit operator bool() const { return code == 0; }
};

inline SoundResult SoundOk() { return {}; }
inline SoundResult SoundFailed(ESoundStep step, int32_t code) { return {code, step}; }

struct SoundPacket {
  const float *data = nullptr;  // frames * channels floats; ignored when silent
  uint32_t frames = 0;
  bool silent = false;  // the packet stands for frames of silence
};

class ISoundSource {
 public:
  virtual ~ISoundSource() = default;
  // Opens the stream and describes its format. Must not wait for a server:
  // a stream that is still connecting just has no packets yet.
  virtual SoundResult Start(SoundMixFormat &format) = 0;
  virtual void Stop() = 0;
  // Frames in the next packet, 0 if none is ready.
  virtual SoundResult GetNextPacketSize(uint32_t &frames) = 0;
  virtual SoundResult GetBuffer(SoundPacket &packet) = 0;
  virtual SoundResult ReleaseBuffer(uint32_t frames) = 0;
  // A line that explains the last failure in the source's own terms.
  virtual std::string ErrorText() const = 0;
};

// The monitor of the default output of the sound server (PulseAudio, or
// PipeWire through its PulseAudio service).
std::unique_ptr<ISoundSource> CreatePulseSoundSource();

// The sound code's timer in milliseconds: the process clock's (GetClock())
// high resolution counter where it has one, else its millisecond count.
double SoundTimerMilliseconds();

// Seconds on some monotonic time line, for sources that pace themselves.
using SoundTimeFunction = std::function<double()>;
