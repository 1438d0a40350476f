// Capture's contract: how packets become frames of 576 pairs, when a poll
// runs and how much it takes, what counts as silence, and what a failing
// source does to the program (a line in the log, silence, a retry).
#include "audio/SoundCapture.h"
#include "core/FakeClock.h"
#include "platform/SoundScriptedSource.h"
#include "SoundTestSupport.h"

#include <gtest/gtest.h>

using namespace SoundTest;

namespace {
class Capture : public testing::Test {
 protected:
  void SetUp() override {
    auto source = std::make_unique<CSoundScriptedSource>();
    m_Source = source.get();
    m_Capture.SetSource(std::move(source));
  }
  // Polls after enough time for the gate to open.
  bool Poll() {
    m_Clock.clock.Advance(0.020);
    return m_Capture.PollCapture();
  }
  std::vector<SoundFrame *> TakeFrames() {
    std::vector<SoundFrame *> frames;
    while (SoundFrame *f = m_Capture.PopFilledFrame()) frames.push_back(f);
    return frames;
  }
  void Release(const std::vector<SoundFrame *> &frames) {
    for (SoundFrame *f : frames) m_Capture.ReleaseFrame(f);
  }
  // Left of pair n is n, right is -n - 1: every sample tells where it came from.
  static float Tag(int n, int c) { return c == 0 ? static_cast<float>(n) : static_cast<float>(-n - 1); }

  CScopedFakeClock m_Clock;
  LogCapture m_Log;
  CSoundCapture m_Capture;
  CSoundScriptedSource *m_Source = nullptr;
};
}  // namespace

TEST_F(Capture, PacketsAreSplitAcrossFramesInOrder) {
  ASSERT_TRUE(m_Capture.StartCapture());
  m_Source->Queue(Samples(100, 2, Tag));
  ASSERT_TRUE(Poll());
  EXPECT_TRUE(TakeFrames().empty()) << "100 pairs do not make a frame";

  // 1000 pairs onto a frame holding 100: that frame fills and 524 are left.
  m_Source->Queue(Samples(1000, 2, Tag, 100));
  ASSERT_TRUE(Poll());
  auto frames = TakeFrames();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0]->count, 576);
  for (int n = 0; n < 576; ++n) {
    ASSERT_EQ(frames[0]->samples[2 * n], Tag(n, 0)) << n;
    ASSERT_EQ(frames[0]->samples[2 * n + 1], Tag(n, 1)) << n;
  }
  Release(frames);

  // 52 more complete the second frame, which starts where the first ended.
  m_Source->Queue(Samples(52, 2, Tag, 1100));
  Poll();
  frames = TakeFrames();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0]->samples[0], Tag(576, 0));
  EXPECT_EQ(frames[0]->samples[2 * 575 + 1], Tag(1151, 1));
  EXPECT_EQ(m_Capture.TotalFrames(), 1152u);
}

TEST_F(Capture, MonoIsDuplicatedAndExtraChannelsAreSkipped) {
  for (int channels : {1, 6}) {
    SCOPED_TRACE(channels);
    m_Source->format.channels = channels;
    m_Source->format.blockAlign = 4 * channels;
    ASSERT_TRUE(m_Capture.StartCapture());
    m_Source->Queue(Samples(576, channels, [](int n, int c) { return static_cast<float>(c * 1000 + n); }));
    Poll();
    auto frames = TakeFrames();
    ASSERT_EQ(frames.size(), 1u);
    for (int n = 0; n < 576; ++n) {
      ASSERT_EQ(frames[0]->samples[2 * n], static_cast<float>(n));
      ASSERT_EQ(frames[0]->samples[2 * n + 1], static_cast<float>(channels == 1 ? n : 1000 + n));
    }
    Release(frames);
  }
}

TEST_F(Capture, PollIsGatedAndTakesAtMostFivePackets) {
  ASSERT_TRUE(m_Capture.StartCapture());
  for (int i = 0; i < 7; ++i) m_Source->Queue(Samples(100, 2, [](int, int) { return 0.5f; }));
  ASSERT_TRUE(Poll());
  EXPECT_EQ(m_Source->released.size(), 5u);
  EXPECT_EQ(m_Source->Pending(), 2u);
  EXPECT_FALSE(m_Capture.IsSilent());

  // 5 ms later nothing happens: packets wait and silent keeps its value,
  // though the queue now holds only zeros.
  m_Source->Queue(Samples(100, 2, [](int, int) { return 0.0f; }));
  m_Clock.clock.Advance(0.005);
  EXPECT_TRUE(m_Capture.PollCapture());
  EXPECT_EQ(m_Source->Pending(), 3u);
  EXPECT_FALSE(m_Capture.IsSilent());
  m_Clock.clock.Advance(0.0115);  // 16.5 ms after the poll: still gated
  m_Capture.PollCapture();
  EXPECT_EQ(m_Source->Pending(), 3u);

  m_Clock.clock.Advance(0.0005);  // 17 ms
  m_Capture.PollCapture();
  EXPECT_EQ(m_Source->Pending(), 0u);
  EXPECT_TRUE(m_Capture.IsSilent()) << "the last packet was all zeros";
}

TEST_F(Capture, SilenceIsATestOnTheSignedSumOfAPacket) {
  ASSERT_TRUE(m_Capture.StartCapture());
  // Nothing to read: a zero frame is queued and a half filled one dropped.
  m_Source->Queue(Samples(100, 2, Tag));
  Poll();
  EXPECT_FALSE(m_Capture.IsSilent());
  Poll();
  EXPECT_TRUE(m_Capture.IsSilent());
  auto frames = TakeFrames();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0]->count, 0);
  for (float s : frames[0]->samples) ASSERT_EQ(s, 0.0f);
  Release(frames);
  m_Source->Queue(Samples(576, 2, Tag, 7));
  Poll();
  frames = TakeFrames();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0]->samples[0], Tag(7, 0)) << "new data starts a new frame";
  Release(frames);

  // Loud but balanced left against right: silent all the same.
  m_Source->Queue(Samples(200, 2, [](int, int c) { return c == 0 ? 0.8f : -0.8f; }));
  Poll();
  EXPECT_TRUE(m_Capture.IsSilent());
  // A small offset over a long packet adds up to sound.
  m_Source->Queue(Samples(200, 2, [](int, int) { return 0.00001f; }));
  Poll();
  EXPECT_FALSE(m_Capture.IsSilent());

  // Packets flagged as silence: with frames they are zeros (here completing
  // the 400 pairs of the two packets above); without, they push a zero frame.
  m_Source->QueueSilent(576);
  Poll();
  EXPECT_TRUE(m_Capture.IsSilent());
  frames = TakeFrames();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0]->count, 576);
  for (int i = 2 * 400; i < 1152; ++i) ASSERT_EQ(frames[0]->samples[i], 0.0f);
  Release(frames);
  m_Source->Queue(Samples(10, 2, Tag));
  Poll();
  m_Source->QueueSilent(0);
  EXPECT_FALSE(Poll());
  EXPECT_TRUE(m_Capture.IsSilent());
  frames = TakeFrames();
  ASSERT_EQ(frames.size(), 1u);
  EXPECT_EQ(frames[0]->count, 0);
}

TEST_F(Capture, FramesCirculateWithoutGrowingThePool) {
  ASSERT_TRUE(m_Capture.StartCapture());
  for (int i = 0; i < 200; ++i) {
    m_Source->Queue(Samples(735, 2, Tag, i * 735));
    Poll();
    Release(TakeFrames());
  }
  EXPECT_EQ(m_Capture.PoolSize(), static_cast<size_t>(CSoundCapture::FramesPerBlock));

  // A reader that falls behind makes the pool grow instead of losing data.
  for (int i = 0; i < 30; ++i) {
    m_Source->Queue(Samples(576, 2, Tag));
    Poll();
  }
  EXPECT_EQ(TakeFrames().size(), 30u);
  EXPECT_GT(m_Capture.PoolSize(), 30u);
}

TEST_F(Capture, FailureIsLoggedOnceThenRetriedQuietly) {
  m_Source->failure = SoundFailed(ESoundStep::CreateEnumerator, 6);
  m_Source->errorText = "PulseAudio: Connection refused";
  EXPECT_FALSE(m_Capture.StartCapture());
  EXPECT_FALSE(m_Capture.IsRunning());
  EXPECT_EQ(m_Log.errors, (std::vector<std::string>{"CoCreateInstance(IMMDeviceEnumerator) failed: hr = 0x00000006",
                                                    "Unable to capture audio from default device",
                                                    "PulseAudio: Connection refused"}));
  EXPECT_TRUE(m_Capture.IsSilent());

  // Polls never block or throw; the next attempt comes a few seconds later
  // and fails without a word.
  for (int i = 0; i < 100; ++i) EXPECT_FALSE(Poll());  // 2 s
  EXPECT_EQ(m_Source->starts, 1);
  m_Clock.clock.Advance(1.0);
  Poll();
  EXPECT_EQ(m_Source->starts, 2);
  EXPECT_EQ(m_Log.errors.size(), 3u);

  // The server appears: capture picks it up and says so when sound flows.
  m_Source->failure = SoundOk();
  m_Clock.clock.Advance(3.0);
  Poll();
  EXPECT_EQ(m_Source->starts, 3);
  EXPECT_TRUE(m_Capture.IsRunning());
  m_Source->Queue(Samples(100, 2, Tag));
  EXPECT_TRUE(Poll());
  EXPECT_EQ(CountLines(m_Log, "Sound capture resumed"), 1);

  // It goes away while running: logged (it is news), stopped, silent.
  const int stops = m_Source->stops;
  m_Source->failure = SoundFailed(ESoundStep::GetBuffer, 7);
  m_Source->Queue(Samples(100, 2, Tag));
  EXPECT_FALSE(Poll());
  EXPECT_FALSE(m_Capture.IsRunning());
  EXPECT_TRUE(m_Capture.IsSilent());
  EXPECT_EQ(m_Source->stops, stops + 1);
  EXPECT_EQ(m_Log.errors[3], "IAudioCaptureClient::GetBuffer failed on after 100 frames: hr = 0x00000007");

  // An explicit stop ends the retries.
  m_Capture.StopCapture();
  m_Clock.clock.Advance(10.0);
  Poll();
  EXPECT_EQ(m_Source->starts, 3);
}

TEST_F(Capture, EveryFailingStepHasItsMessage) {
  const struct {
    ESoundStep step;
    const char *message;
  } cases[] = {
      {ESoundStep::DefaultEndpoint, "IMMDeviceEnumerator::GetDefaultAudioEndpoint failed: hr = 0x00000005"},
      {ESoundStep::Initialize, "IAudioClient::Initialize failed: hr = 0x00000005"},
      {ESoundStep::NextPacketSize, "IAudioCaptureClient::GetNextPacketSize failed after 0 frames: hr = 0x00000005"},
      {ESoundStep::ReleaseBuffer, "IAudioCaptureClient::ReleaseBuffer failed on after 10 frames: hr = 0x00000005"},
  };
  for (const auto &c : cases) {
    CSoundCapture capture;
    auto source = std::make_unique<CSoundScriptedSource>();
    source->failure = SoundFailed(c.step, 5);
    source->Queue(Samples(10, 2, Tag));
    capture.SetSource(std::move(source));
    m_Log.errors.clear();
    capture.StartCapture();
    m_Clock.clock.Advance(0.02);
    capture.PollCapture();
    ASSERT_FALSE(m_Log.errors.empty());
    EXPECT_EQ(m_Log.errors[0], c.message);
    EXPECT_FALSE(capture.IsRunning());
  }

  m_Source->format.formatTag = 1;
  m_Log.errors.clear();
  EXPECT_FALSE(m_Capture.StartCapture());
  EXPECT_EQ(m_Log.errors, std::vector<std::string>{"Don't know how to coerce WAVEFORMATEX with wFormatTag = 0x00000001 to int-16"});
  m_Source->format.formatTag = 0xFFFE;
  m_Clock.clock.Advance(5.0);
  Poll();
  EXPECT_TRUE(m_Capture.IsRunning()) << "the extensible tag is taken as float";
  EXPECT_EQ(CountLines(m_Log, "Mixer format. Bytepersec:352800 Block:8 Channels:2 SamplesPerSec:44100 BitsPerSample:32 Format:fffe"), 0)
      << "retries stay quiet";
}
