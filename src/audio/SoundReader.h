#pragma once
// What scenes and expressions read of the sound analysis. The analyser of
// the process implements it; until one is installed, a reader that hears no
// music answers.

class ISoundReader {
 public:
  virtual ~ISoundReader() = default;
  virtual bool HasMusic() const = 0;
  // The beat level.
  virtual float Level() const = 0;
  // channel -1 (mean of both), 0 left, 1 right; t from 0 to 1.
  virtual float GetWaveform(int channel, float t) const = 0;
  virtual float GetSpectrum(int channel, float t) const = 0;
  // speed 0 instantaneous .. 3 slow, channel 0/1, band 0 low .. 2 high.
  virtual float Band(int speed, int channel, int band) const = 0;
  // Counts analysed frames, so readers can tell new data from old.
  virtual int FrameCounter() const = 0;
};

class CSilentSoundReader final : public ISoundReader {
 public:
  bool HasMusic() const override { return false; }
  float Level() const override { return 0.0f; }
  float GetWaveform(int, float) const override { return 0.0f; }
  float GetSpectrum(int, float) const override { return 0.0f; }
  float Band(int, int, int) const override { return 0.0f; }
  int FrameCounter() const override { return 0; }
};

// The process's sound reader; SetSoundReader(nullptr) restores silence.
const ISoundReader &GetSoundReader();
void SetSoundReader(const ISoundReader *reader);
