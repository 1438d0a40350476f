// The file source plays a file at 44100 Hz on a time line it is given, and
// turns bad files into an error the capture can log.
#include "platform/SoundFileSource.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <cmath>
#include <string>
#include <unistd.h>
#include <vector>

namespace {
constexpr double Pi = 3.14159265358979323846;

class SoundFile : public testing::Test {
 protected:
  // A 16-bit WAV of `frames` frames whose channel c of frame n is f(n, c).
  std::string WriteWav(const std::string &name, int rate, int channels, int frames, double (*f)(int, int, int)) {
    const std::string path = dir / name;
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE *file = sf_open(path.c_str(), SFM_WRITE, &info);
    EXPECT_NE(file, nullptr) << sf_strerror(nullptr);
    std::vector<double> data(static_cast<size_t>(frames) * channels);
    for (int n = 0; n < frames; ++n)
      for (int c = 0; c < channels; ++c) data[static_cast<size_t>(n) * channels + c] = f(n, c, rate);
    sf_writef_double(file, data.data(), frames);
    sf_close(file);
    return path;
  }
  // Reads every packet until the file ends, with the time line far ahead.
  static std::vector<float> Drain(CSoundFileSource &source, double &now, int channels, uint32_t *largest = nullptr) {
    std::vector<float> out;
    now += 1e6;
    for (uint32_t frames = 0; source.GetNextPacketSize(frames) && frames > 0;) {
      SoundPacket p;
      EXPECT_TRUE(source.GetBuffer(p));
      out.insert(out.end(), p.data, p.data + static_cast<size_t>(p.frames) * channels);
      if (largest) *largest = std::max(*largest, p.frames);
      source.ReleaseBuffer(p.frames);
    }
    return out;
  }
  // Files always play as floats at 44100 Hz, in their own channels.
  static void ExpectFormat(const SoundMixFormat &f, int channels) {
    EXPECT_EQ(f.formatTag, 3);
    EXPECT_EQ(f.channels, channels);
    EXPECT_EQ(f.samplesPerSec, 44100);
    EXPECT_EQ(f.blockAlign, 4 * channels);
  }
  static double Tone441(int n, int, int rate) { return 0.5 * std::sin(2 * Pi * 441.0 * n / rate); }

  TempDir dir;
};
}  // namespace

TEST_F(SoundFile, PlaysAtTheTimeLinesPaceAt44100) {
  const std::string path = WriteWav("tone.wav", 44100, 2, 44100, [](int n, int c, int rate) {
    return c == 0 ? Tone441(n, c, rate) : -0.25;
  });
  double now = 5.0;
  CSoundFileSource source(path, [&] { return now; });
  SoundMixFormat format;
  ASSERT_TRUE(source.Start(format));
  ExpectFormat(format, 2);

  uint32_t frames = 99;
  ASSERT_TRUE(source.GetNextPacketSize(frames));
  EXPECT_EQ(frames, 0u) << "nothing is due at the start";
  now += 0.010;
  ASSERT_TRUE(source.GetNextPacketSize(frames));
  EXPECT_NEAR(frames, 441u, 1u);
  SoundPacket p;
  ASSERT_TRUE(source.GetBuffer(p));
  EXPECT_NEAR(p.data[2 * 100], Tone441(100, 0, 44100), 1e-4);
  EXPECT_NEAR(p.data[2 * 100 + 1], -0.25, 1e-4);
  source.ReleaseBuffer(p.frames);
  ASSERT_TRUE(source.GetNextPacketSize(frames));
  EXPECT_EQ(frames, 0u) << "the next packet waits for time to pass";

  uint32_t largest = 0;
  const std::vector<float> rest = Drain(source, now, 2, &largest);
  EXPECT_EQ(rest.size() / 2 + p.frames, 44100u);
  EXPECT_EQ(largest, CSoundFileSource::MaxPacketFrames);
  EXPECT_TRUE(source.AtEnd());

  // Started again, it plays from the beginning.
  ASSERT_TRUE(source.Start(format));
  EXPECT_FALSE(source.AtEnd());
  EXPECT_EQ(Drain(source, now, 2).size(), 2u * 44100u);
}

TEST_F(SoundFile, OtherRatesAreResampledKeepingThePitch) {
  const struct {
    const char *name;
    int rate, channels, frames, outFrames;
  } cases[] = {{"mono22k.wav", 22050, 1, 11025, 22049}, {"stereo96k.wav", 96000, 2, 9600, 4410}};
  for (const auto &c : cases) {
    double now = 0;
    CSoundFileSource source(WriteWav(c.name, c.rate, c.channels, c.frames, Tone441), [&] { return now; });
    SoundMixFormat format;
    ASSERT_TRUE(source.Start(format));
    ExpectFormat(format, c.channels);
    const std::vector<float> out = Drain(source, now, c.channels);
    EXPECT_EQ(out.size() / c.channels, static_cast<size_t>(source.OutputFrames())) << c.name;
    EXPECT_NEAR(out.size() / c.channels, c.outFrames, 1) << c.name;
    double worst = 0;
    for (size_t n = 0; n < out.size(); n += c.channels)
      worst = std::max(worst, std::fabs(out[n] - Tone441(static_cast<int>(n / c.channels), 0, 44100)));
    EXPECT_LT(worst, 0.005) << c.name;
  }
}

TEST_F(SoundFile, RawFloatsAreStereoAt44100) {
  std::vector<float> data;
  for (int n = 0; n < 1000; ++n) data.insert(data.end(), {n / 1000.0f, -n / 1000.0f});
  const std::string path = dir.Write("clip.f32", std::string(reinterpret_cast<const char *>(data.data()), data.size() * sizeof(float)));
  double now = 0;
  CSoundFileSource source(path, [&] { return now; });
  SoundMixFormat format;
  ASSERT_TRUE(source.Start(format));
  ExpectFormat(format, 2);
  EXPECT_EQ(Drain(source, now, 2), data);
}

TEST_F(SoundFile, BadFilesFailWithAReason) {
  SoundMixFormat format;
  CSoundFileSource missing(dir / "none.wav");
  EXPECT_FALSE(missing.Open());
  const SoundResult r = missing.Start(format);
  EXPECT_FALSE(r);
  EXPECT_EQ(r.step, ESoundStep::DefaultEndpoint);
  EXPECT_NE(missing.ErrorText().find("none.wav"), std::string::npos) << missing.ErrorText();

  CSoundFileSource broken(dir.Write("junk.wav", "RIFF this is not a wave file at all"));
  EXPECT_FALSE(broken.Start(format));
  EXPECT_NE(broken.ErrorText().find("junk.wav"), std::string::npos);
  uint32_t frames = 5;
  EXPECT_TRUE(broken.GetNextPacketSize(frames)) << "a source that never started has no packets";
  EXPECT_EQ(frames, 0u);

  // Cut short after its header was written: it plays what there is.
  const std::string cut = WriteWav("cut.wav", 44100, 2, 20000, Tone441);
  ASSERT_EQ(truncate(cut.c_str(), 44 + 4 * 5000), 0);
  double now = 0;
  CSoundFileSource shortened(cut, [&] { return now; });
  ASSERT_TRUE(shortened.Start(format));
  const std::vector<float> out = Drain(shortened, now, 2);
  EXPECT_GT(out.size() / 2, 4000u);
  EXPECT_LE(out.size() / 2, 5000u);
  EXPECT_TRUE(shortened.AtEnd());
}
