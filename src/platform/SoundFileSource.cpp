#include "platform/SoundFileSource.h"

#include "core/Numeric.h"

#include <sndfile.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <vector>

namespace {
constexpr sf_count_t ReadChunkFrames = 4096;

bool EndsWith(const std::string &s, const char *suffix) {
  const size_t n = strlen(suffix);
  if (s.size() < n) return false;
  for (size_t i = 0; i < n; ++i)
    if (tolower(static_cast<unsigned char>(s[s.size() - n + i])) != suffix[i]) return false;
  return true;
}
}  // namespace

struct CSoundFileSource::Impl {
  std::string path;
  SoundTimeFunction now;
  SNDFILE *file = nullptr;
  SF_INFO info{};
  int64_t outFrames = 0;
  std::string error;
  int32_t errorCode = 0;

  bool playing = false;
  double startTime = 0.0;
  int64_t produced = 0;  // output frames handed out and released

  // Input frames [inBase, inBase + loaded) of the file, interleaved.
  std::vector<float> in;
  int64_t inBase = 0;
  bool fileEnded = false;

  std::vector<float> packet;
  uint32_t packetFrames = 0;

  int64_t Loaded() const { return static_cast<int64_t>(in.size()) / info.channels; }

  // Makes input frames up to (not including) `end` available, as far as the
  // file has them.
  void LoadUpTo(int64_t end) {
    while (!fileEnded && inBase + Loaded() < end) {
      const size_t old = in.size();
      in.resize(old + static_cast<size_t>(ReadChunkFrames * info.channels));
      const sf_count_t got = sf_readf_float(file, in.data() + old, ReadChunkFrames);
      in.resize(old + static_cast<size_t>(std::max<sf_count_t>(got, 0) * info.channels));
      if (got < ReadChunkFrames) fileEnded = true;
    }
  }

  // Forgets input frames before `first`; they are never needed again.
  void DropBefore(int64_t first) {
    const int64_t drop = std::min(first - inBase, Loaded());
    if (drop <= 0) return;
    in.erase(in.begin(), in.begin() + static_cast<ptrdiff_t>(drop * info.channels));
    inBase += drop;
  }

  // Output frame n lies at input position n * rate / 44100; between two
  // input frames it is interpolated linearly. Returns frames made.
  uint32_t Fill(int64_t first, uint32_t count) {
    const int64_t rate = info.samplerate;
    const int channels = info.channels;
    DropBefore(first * rate / OutputRate);
    packet.resize(static_cast<size_t>(count) * channels);
    uint32_t made = 0;
    for (; made < count; ++made) {
      const int64_t pos = (first + made) * rate;
      const int64_t index = pos / OutputRate;
      const float frac = static_cast<float>(pos % OutputRate) / static_cast<float>(OutputRate);
      LoadUpTo(index + (frac > 0.0f ? 2 : 1));
      const int64_t avail = inBase + Loaded();
      if (index >= avail || (frac > 0.0f && index + 1 >= avail)) break;
      const float *a = in.data() + (index - inBase) * channels;
      const float *b = frac > 0.0f ? a + channels : a;
      float *out = packet.data() + static_cast<size_t>(made) * channels;
      for (int c = 0; c < channels; ++c) out[c] = a[c] + frac * (b[c] - a[c]);
    }
    // A file shorter than its header said ends here.
    if (made < count) outFrames = first + made;
    return made;
  }
};

CSoundFileSource::CSoundFileSource(std::string path, SoundTimeFunction now) : m_Impl(std::make_unique<Impl>()) {
  m_Impl->path = std::move(path);
  m_Impl->now = now ? std::move(now) : [] { return SoundTimerMilliseconds() / 1000.0; };
}

CSoundFileSource::~CSoundFileSource() {
  if (m_Impl->file) sf_close(m_Impl->file);
}

bool CSoundFileSource::Open() {
  Impl &m = *m_Impl;
  if (m.file) return true;
  m.info = SF_INFO{};
  if (EndsWith(m.path, ".raw") || EndsWith(m.path, ".f32")) {
    m.info.format = SF_FORMAT_RAW | SF_FORMAT_FLOAT | SF_ENDIAN_LITTLE;
    m.info.channels = 2;
    m.info.samplerate = OutputRate;
  }
  m.file = sf_open(m.path.c_str(), SFM_READ, &m.info);
  if (!m.file) {
    m.errorCode = sf_error(nullptr);
    if (m.errorCode == 0) m.errorCode = SF_ERR_UNRECOGNISED_FORMAT;
    m.error = "Sound file \"" + m.path + "\": " + sf_strerror(nullptr);
    return false;
  }
  if (m.info.channels <= 0 || m.info.samplerate <= 0) {
    sf_close(m.file);
    m.file = nullptr;
    m.errorCode = SF_ERR_UNRECOGNISED_FORMAT;
    m.error = "Sound file \"" + m.path + "\": no channels or no sample rate";
    return false;
  }
  const int64_t inFrames = m.info.frames;
  m.outFrames = inFrames > 0 ? (inFrames - 1) * OutputRate / m.info.samplerate + 1 : 0;
  return true;
}

int64_t CSoundFileSource::OutputFrames() const { return m_Impl->file ? m_Impl->outFrames : 0; }

bool CSoundFileSource::AtEnd() const { return m_Impl->file && m_Impl->produced >= m_Impl->outFrames; }

SoundResult CSoundFileSource::Start(SoundMixFormat &format) {
  Impl &m = *m_Impl;
  if (!Open()) return SoundFailed(ESoundStep::DefaultEndpoint, m.errorCode);
  if (sf_seek(m.file, 0, SEEK_SET) < 0) {
    m.errorCode = sf_error(m.file);
    m.error = "Sound file \"" + m.path + "\": " + sf_strerror(m.file);
    return SoundFailed(ESoundStep::Initialize, m.errorCode ? m.errorCode : 1);
  }
  m.in.clear();
  m.inBase = 0;
  m.fileEnded = false;
  m.produced = 0;
  m.packetFrames = 0;
  m.startTime = m.now();
  m.playing = true;

  format = SoundMixFormat{};
  format.channels = m.info.channels;
  format.blockAlign = 4 * m.info.channels;
  format.avgBytesPerSec = OutputRate * format.blockAlign;
  return SoundOk();
}

void CSoundFileSource::Stop() {
  m_Impl->playing = false;
  m_Impl->packetFrames = 0;
}

SoundResult CSoundFileSource::GetNextPacketSize(uint32_t &frames) {
  Impl &m = *m_Impl;
  frames = 0;
  if (!m.playing) return SoundOk();
  if (m.packetFrames == 0) {
    const int64_t due = SatInt<int64_t>((m.now() - m.startTime) * OutputRate);
    const int64_t want = std::min({due - m.produced, static_cast<int64_t>(MaxPacketFrames), m.outFrames - m.produced});
    if (want > 0) m.packetFrames = m.Fill(m.produced, static_cast<uint32_t>(want));
  }
  frames = m.packetFrames;
  return SoundOk();
}

SoundResult CSoundFileSource::GetBuffer(SoundPacket &packet) {
  packet = SoundPacket{};
  packet.data = m_Impl->packet.data();
  packet.frames = m_Impl->packetFrames;
  return SoundOk();
}

SoundResult CSoundFileSource::ReleaseBuffer(uint32_t) {
  m_Impl->produced += m_Impl->packetFrames;
  m_Impl->packetFrames = 0;
  return SoundOk();
}

std::string CSoundFileSource::ErrorText() const { return m_Impl->error; }
