// The sound server source against no server at all, and against a private
// PulseAudio server with a null output that plays a tone. The second test
// needs the pulseaudio and paplay programs and skips, saying so, without them.
#include "platform/SoundSource.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <sndfile.h>

#include <chrono>
#include <cmath>
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char **environ;

namespace {
using Clock = std::chrono::steady_clock;

class ScopedEnv {
 public:
  ScopedEnv(const char *name, const std::string &value) : m_Name(name) {
    if (const char *old = getenv(name)) m_Old = old, m_Had = true;
    setenv(name, value.c_str(), 1);
  }
  ~ScopedEnv() {
    if (m_Had)
      setenv(m_Name, m_Old.c_str(), 1);
    else
      unsetenv(m_Name);
  }

 private:
  const char *m_Name;
  std::string m_Old;
  bool m_Had = false;
};

// Starts a program found on PATH with its output discarded; -1 if missing.
pid_t Spawn(const std::vector<std::string> &args) {
  std::vector<char *> argv;
  for (const std::string &a : args) argv.push_back(const_cast<char *>(a.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  pid_t pid = -1;
  if (posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0) pid = -1;
  posix_spawn_file_actions_destroy(&actions);
  return pid;
}

// A started program, ended (by its id) when the test leaves.
struct Child {
  pid_t pid = -1;
  explicit Child(const std::vector<std::string> &args) : pid(Spawn(args)) {}
  ~Child() { End(); }
  void End() {
    if (pid <= 0) return;
    kill(pid, SIGTERM);
    int status = 0;
    waitpid(pid, &status, 0);
    pid = -1;
  }
};

// Polls the source like the capture does, for up to `seconds`, and returns
// the first failure, or success when `enough` frames arrived.
SoundResult PollFor(ISoundSource &source, double seconds, uint32_t enough, uint32_t &frames, float &peak) {
  const auto until = Clock::now() + std::chrono::duration<double>(seconds);
  while (Clock::now() < until) {
    for (int packets = 0; packets < 5; ++packets) {
      uint32_t size = 0;
      if (SoundResult r = source.GetNextPacketSize(size); !r) return r;
      if (size == 0) break;
      SoundPacket p;
      if (SoundResult r = source.GetBuffer(p); !r) return r;
      if (!p.silent)
        for (uint32_t i = 0; i < 2 * p.frames; ++i) peak = std::max(peak, std::fabs(p.data[i]));
      frames += p.frames;
      if (SoundResult r = source.ReleaseBuffer(p.frames); !r) return r;
    }
    if (frames >= enough) return SoundOk();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return SoundOk();
}
}  // namespace

TEST(SoundPulseSource, NoServerFailsFastWithoutBlocking) {
  ScopedEnv server("PULSE_SERVER", "unix:/nonexistent/velmor/native");
  auto source = CreatePulseSoundSource();
  SoundMixFormat format;
  const auto start = Clock::now();
  SoundResult r = source->Start(format);
  uint32_t frames = 0;
  float peak = 0;
  if (r) r = PollFor(*source, 2.0, 1, frames, peak);
  EXPECT_FALSE(r) << "no server, yet it did not fail";
  EXPECT_EQ(r.step, ESoundStep::CreateEnumerator);
  EXPECT_NE(source->ErrorText().find("PulseAudio"), std::string::npos) << source->ErrorText();
  EXPECT_LT(std::chrono::duration<double>(Clock::now() - start).count(), 1.0);
  source->Stop();
  source->Stop();  // twice is harmless
}

TEST(SoundPulseSource, RecordsWhatTheDefaultOutputPlays) {
  TempDir dir;
  const std::string socket = dir / "native", tone = dir / "tone.wav";
  ScopedEnv runtime("XDG_RUNTIME_DIR", dir.Path());
  ScopedEnv home("HOME", dir.Path());
  ScopedEnv server("PULSE_SERVER", "unix:" + socket);

  // Two seconds of a 441 Hz tone at half scale.
  SF_INFO info{};
  info.samplerate = 44100;
  info.channels = 2;
  info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
  SNDFILE *file = sf_open(tone.c_str(), SFM_WRITE, &info);
  ASSERT_NE(file, nullptr);
  std::vector<float> samples(2 * 88200);
  for (size_t n = 0; n < samples.size(); ++n) samples[n] = 0.5f * static_cast<float>(std::sin(2 * M_PI * 441.0 * (n / 2) / 44100.0));
  sf_writef_float(file, samples.data(), 88200);
  sf_close(file);

  Child daemon({"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "-L",
                "module-native-protocol-unix socket=" + socket + " auth-anonymous=1", "-L",
                "module-null-sink sink_name=velmor_test"});
  if (daemon.pid <= 0) GTEST_SKIP() << "pulseaudio (package pulseaudio) is not installed";
  struct stat st;
  for (int i = 0; i < 100 && stat(socket.c_str(), &st) != 0; ++i) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  if (stat(socket.c_str(), &st) != 0) GTEST_SKIP() << "the private pulseaudio server did not start";

  auto source = CreatePulseSoundSource();
  SoundMixFormat format;
  ASSERT_TRUE(source->Start(format));
  EXPECT_EQ(format.channels, 2);
  EXPECT_EQ(format.blockAlign, 8);
  EXPECT_EQ(format.samplesPerSec, 44100);

  // Connected and recording the null output's monitor: zeros flow.
  uint32_t frames = 0;
  float peak = 0;
  EXPECT_TRUE(PollFor(*source, 5.0, 4410, frames, peak));
  EXPECT_GE(frames, 4410u);

  Child player({"paplay", tone});
  if (player.pid <= 0) GTEST_SKIP() << "paplay (package pulseaudio-utils) is not installed";
  frames = 0;
  peak = 0;
  for (int i = 0; i < 30 && peak < 0.4f; ++i) ASSERT_TRUE(PollFor(*source, 0.1, ~0u, frames, peak));
  EXPECT_NEAR(peak, 0.5f, 0.05f) << "the tone is heard";

  // The server goes away: the next polls fail instead of hanging.
  daemon.End();
  SoundResult r = PollFor(*source, 3.0, ~0u, frames, peak);
  EXPECT_FALSE(r);
  EXPECT_EQ(r.step, ESoundStep::NextPacketSize);
  source->Stop();
}
