// The sound server source against no server at all: it fails at once, with
// a reason, and never blocks the main thread.
#include "platform/SoundSource.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

TEST(SoundPulseSource, NoServerFailsFastWithoutBlocking) {
  const char *old = getenv("PULSE_SERVER");
  const std::string saved = old ? old : "";
  setenv("PULSE_SERVER", "unix:/nonexistent/velmor/native", 1);
  auto source = CreatePulseSoundSource();
  SoundMixFormat format;
  const auto start = std::chrono::steady_clock::now();
  SoundResult r = source->Start(format);
  // Polled as the capture polls, the failure may come at the first packet.
  for (int i = 0; r && i < 200; ++i) {
    uint32_t size = 0;
    r = source->GetNextPacketSize(size);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_FALSE(r) << "no server, yet it did not fail";
  EXPECT_EQ(r.step, ESoundStep::CreateEnumerator);
  EXPECT_NE(source->ErrorText().find("PulseAudio"), std::string::npos) << source->ErrorText();
  EXPECT_LT(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), 1.0);
  source->Stop();
  source->Stop();  // twice is harmless
  if (old)
    setenv("PULSE_SERVER", saved.c_str(), 1);
  else
    unsetenv("PULSE_SERVER");
}
