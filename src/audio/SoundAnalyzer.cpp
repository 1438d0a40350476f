#include "audio/SoundAnalyzer.h"

#include "audio/SoundVector.h"
#include "core/Numeric.h"
#include "core/Trace.h"

#include <algorithm>
#include <cmath>

CSoundAnalyzer g_Sound;

using namespace SoundVector;

namespace {
// Divisors that bring each band of typical music to about 1.
constexpr float BandNorm[CSoundAnalyzer::BandCount] = {0.32678157f, 0.38087377f, 0.19988893f};
// Per-second decay bases of the smoothing speeds, raised to the 14th power.
constexpr double FastRise = 0.2, FastFall = 0.5, Medium = 0.91, Slow = 0.96;

// Bands are a third of the log-frequency range each, from bin 9 up.
struct BandTable {
  int limits[CSoundAnalyzer::BandCount + 1];
  BandTable() {
    const double factor = std::pow(2.0, std::log(55.125) / std::log(2.0) / 3.0);
    for (int i = 0; i <= CSoundAnalyzer::BandCount; ++i)
      limits[i] = std::clamp(SatInt(std::pow(factor, i) * 102400.0 / 11025.0), 0, CSoundAnalyzer::SpectrumSize);
  }
};

const BandTable &Bands() {
  static const BandTable table;
  return table;
}

float Rate(double base, float fps) { return static_cast<float>(std::pow(std::pow(base, 14.0), 1.0 / fps)); }

// Position t (0..1, limited) on `last` + 1 samples: index, next index and
// fraction between them.
struct Lookup {
  int i, j;
  float f;
  Lookup(float t, int last) {
    const float clamped = t >= 0.0f ? std::min(t, 1.0f) : 0.0f;  // NaN reads the first
    const float p = clamped * static_cast<float>(last);
    i = std::clamp(SatInt(std::floor(p)), 0, last);
    j = std::min(i + 1, last);
    f = p - static_cast<float>(i);
  }
  float Between(float a, float b) const { return a + f * (b - a); }
};
}  // namespace

CSoundAnalyzer::CSoundAnalyzer() {
  for (int s = 0; s < Speeds; ++s)
    for (int c = 0; c < Channels; ++c)
      for (int b = 0; b < BandCount; ++b) m_Bands[s][c][b] = s == 0 ? 0.0f : 1.0f;
}

CSoundAnalyzer::~CSoundAnalyzer() {
  if (&GetSoundReader() == this) SetSoundReader(nullptr);
}

const int *CSoundAnalyzer::BandLimits() { return Bands().limits; }

void CSoundAnalyzer::SetFrameObserver(FrameObserver observer, void *user) {
  m_Observer = observer;
  m_ObserverUser = user;
}

void CSoundAnalyzer::UpdateSound(float fps) {
  TRACE_SCOPE("CSoundAnalyzer::UpdateSound");
  if (!m_Started) {
    m_Started = true;
    SetSoundReader(this);
    m_Capture.StartCapture();
    return;
  }
  m_Capture.PollCapture();
  while (SoundFrame *frame = m_Capture.PopFilledFrame()) {
    ProcessFrame(*frame, fps);
    m_Capture.ReleaseFrame(frame);
  }
  UpdateMusicState();
}

// Short gaps and quiet passages keep the music on; the first poll with sound
// brings it back at once.
void CSoundAnalyzer::UpdateMusicState() {
  if (!m_Capture.IsSilent()) {
    m_SilenceStart = 0.0;
    m_MusicPlaying = true;
    return;
  }
  const double now = SoundTimerMilliseconds();
  if (m_SilenceStart == 0.0)
    m_SilenceStart = now;
  else if (now - m_SilenceStart > m_MaxSilenceTime * 1000.0)
    m_MusicPlaying = false;
}

void CSoundAnalyzer::ProcessFrame(const SoundFrame &frame, float fps) {
  ++m_FrameCounter;
  m_LastCount = frame.count;
  m_ChannelCount = Channels;
  m_SpectrumSize = SpectrumLookup;
  static_assert(WaveformSize % 4 == 0);
  for (int i = 0; i < WaveformSize; i += 4) {
    const V4 a = Load<V4>(frame.samples + 2 * i), b = Load<V4>(frame.samples + 2 * i + 4);
    Store(m_Waveform[0] + i, Evens(a, b));
    Store(m_Waveform[1] + i, Odds(a, b));
  }
  AnalyzeBands(fps);
  m_Aligner.Align(m_Waveform);
  if (m_Observer) m_Observer(*this, m_ObserverUser);
}

void CSoundAnalyzer::AnalyzeBands(float fps) {
  // The transform low-passes against aliasing on its way in.
  m_FFT.TransformPair(m_Waveform[0], m_Waveform[1], m_Spectrum[0], m_Spectrum[1]);

  const int *limits = BandLimits();
  for (int c = 0; c < Channels; ++c) {
    for (int b = 0; b < BandCount; ++b) {
      const int n = limits[b + 1] - limits[b];
      m_Bands[0][c][b] = SumOf(m_Spectrum[c] + limits[b], n) / static_cast<float>(n) / BandNorm[b];
    }
  }

  if (!(fps > 0.0f)) fps = 30.0f;
  if (fps != m_RatesFps) {
    m_RatesFps = fps;
    m_Rates[0] = Rate(FastRise, fps);
    m_Rates[1] = Rate(FastFall, fps);
    m_Rates[2] = Rate(Medium, fps);
    m_Rates[3] = Rate(Slow, fps);
  }
  for (int c = 0; c < Channels; ++c) {
    for (int b = 0; b < BandCount; ++b) {
      const float v = m_Bands[0][c][b];
      for (int s = 1; s < Speeds; ++s) {
        float &old = m_Bands[s][c][b];
        const float r = s == 1 ? m_Rates[v > old ? 0 : 1] : m_Rates[s];
        old = old * r + v * (1.0f - r);
      }
    }
  }
  m_Level = (m_Bands[0][0][0] + m_Bands[0][0][1] + m_Bands[0][1][0] + m_Bands[0][1][1]) * 0.25f;
}

float CSoundAnalyzer::GetWaveform(int channel, float t) const {
  if (m_SpectrumSize == 0 || channel < -1 || channel > 1) return 0.0f;
  if (m_ChannelCount == 1) channel = 0;
  const Lookup at(t, WaveformShown - 1);
  if (channel >= 0) return at.Between(m_Waveform[channel][at.i], m_Waveform[channel][at.j]);
  return at.Between((m_Waveform[0][at.i] + m_Waveform[1][at.i]) * 0.5f,
                    (m_Waveform[0][at.j] + m_Waveform[1][at.j]) * 0.5f);
}

float CSoundAnalyzer::GetSpectrum(int channel, float t) const {
  if (m_SpectrumSize == 0 || channel < -1 || channel > 1) return 0.0f;
  // The mean channel uses the left one's bins.
  if (m_ChannelCount == 1 || channel < 0) channel = 0;
  const Lookup at(t, m_SpectrumSize - 1);
  return std::min(at.Between(m_Spectrum[channel][at.i], m_Spectrum[channel][at.j]), 1.0f);
}

float CSoundAnalyzer::Band(int speed, int channel, int band) const {
  if (speed < 0 || speed >= Speeds || channel < 0 || channel >= Channels || band < 0 || band >= BandCount) return 0.0f;
  return m_Bands[speed][channel][band];
}
