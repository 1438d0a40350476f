#pragma once
// Turns captured frames into what scenes react to: an aligned oscilloscope
// signal, a spectrum, three bands per channel at four speeds of smoothing,
// the beat level, and whether music is playing at all. `g_Sound` is the one
// analyser of the process; nodes and expressions read it (through
// GetSoundReader() or directly) after the engine's UpdateSound.

#include "audio/SoundAlign.h"
#include "audio/SoundCapture.h"
#include "audio/SoundFFT.h"
#include "audio/SoundReader.h"

#include <cstdint>

class CSoundAnalyzer final : public ISoundReader {
 public:
  static constexpr int Channels = 2;
  static constexpr int WaveformSize = SoundFrame::Pairs;
  static constexpr int WaveformShown = CWaveformAligner::Shown;
  static constexpr int SpectrumSize = CSoundFFT::Bins;
  static constexpr int SpectrumLookup = 256;
  static constexpr int Speeds = 4;  // instantaneous, fast, medium, slow
  static constexpr int BandCount = 3;  // low, middle, high

  CSoundAnalyzer();
  ~CSoundAnalyzer() override;
  CSoundAnalyzer(const CSoundAnalyzer &) = delete;
  CSoundAnalyzer &operator=(const CSoundAnalyzer &) = delete;

  // Once per update step, with the application's frame rate estimate. The
  // first call starts capture (and installs this analyser as the process's
  // sound reader); later ones poll and analyse every frame that is queued.
  void UpdateSound(float fps);
  // Analyses one frame; the smoothing rates follow `fps` but apply once per
  // frame.
  void ProcessFrame(const SoundFrame &frame, float fps);

  CSoundCapture &Capture() { return m_Capture; }
  const CSoundCapture &Capture() const { return m_Capture; }

  // Called after each frame is analysed (velmor-tool prints from it).
  using FrameObserver = void (*)(const CSoundAnalyzer &analyzer, void *user);
  void SetFrameObserver(FrameObserver observer, void *user);

  // ISoundReader
  bool HasMusic() const override { return m_CaptureSound && m_MusicPlaying; }
  float Level() const override { return m_Level; }
  float GetWaveform(int channel, float t) const override;
  float GetSpectrum(int channel, float t) const override;
  float Band(int speed, int channel, int band) const override;
  int FrameCounter() const override { return m_FrameCounter; }

  // Count field of the frame analysed last: 0 for a silent frame.
  int LastCount() const { return m_LastCount; }
  // First bin of each band, and the end of the last: 9, 35, 134, 512.
  static const int *BandLimits();

  // Seconds of silence before music counts as stopped (configuration).
  int32_t m_MaxSilenceTime = 10;
  // Configuration: without it HasMusic is false, though capture still runs.
  bool m_CaptureSound = false;
  // Read by the Waveform node; nothing computes them.
  float m_ChannelAverage[Channels] = {};
  // The beat: the mean of the instantaneous low and middle bands of both
  // channels, not limited.
  float m_Level = 0.0f;
  // [speed][channel][band]; not limited.
  float m_Bands[Speeds][Channels][BandCount];
  // The current samples, aligned; only the first WaveformShown are shown.
  float m_Waveform[Channels][WaveformSize] = {};
  float m_Spectrum[Channels][SpectrumSize] = {};

 private:
  void AnalyzeBands(float fps);
  void UpdateMusicState();

  int32_t m_FrameCounter = 0;
  int32_t m_ChannelCount = 0;
  int32_t m_SpectrumSize = 0;
  int32_t m_LastCount = 0;
  // Smoothing rates for m_RatesFps: fast rise, fast fall, medium, slow.
  float m_RatesFps = 0.0f;
  float m_Rates[Speeds] = {};
  CWaveformAligner m_Aligner;
  CSoundFFT m_FFT;
  CSoundCapture m_Capture;
  bool m_Started = false;
  double m_SilenceStart = 0.0;
  bool m_MusicPlaying = false;
  FrameObserver m_Observer = nullptr;
  void *m_ObserverUser = nullptr;
};

extern CSoundAnalyzer g_Sound;
