// The command engine as hosts on other threads use it, and the profiler's
// reports in its replies.
#include "engine/ScriptEngine.h"

#include <gtest/gtest.h>

#include <thread>

#include "core/FakeClock.h"

namespace {
// Replies of unknown commands carry the request, so they show the order.
std::string Sent(char thread, int i) { return "<" + std::string(1, thread) + " I=\"" + std::to_string(i) + "\"/>"; }
}  // namespace

TEST(ScriptEngine, RequestsFromManyThreadsRunInTheOrderEachThreadSentThem) {
  CScriptEngineRef engine;
  auto send = [&](char thread) {
    for (int i = 0; i < 200; ++i) engine->AddCommands("<c>" + Sent(thread, i) + "</c>");
  };
  std::thread a(send, 'A'), b(send, 'B');
  // The main thread runs what has come so far while the hosts keep sending.
  for (int i = 0; i < 50; ++i) engine->Run();
  a.join();
  b.join();
  engine->Run();
  const std::string replies = engine->GetReplies();
  for (char thread : {'A', 'B'}) {
    size_t at = 0;
    for (int i = 0; i < 200; ++i) {
      const std::string reply = "<" + std::string(1, thread) + " I=\"" + std::to_string(i) + "\" Error=\"Unknown command\" />";
      at = replies.find(reply, at);
      ASSERT_NE(at, std::string::npos) << reply;
    }
  }
  EXPECT_EQ(engine->GetReplies(), "<vms />");
}

TEST(ScriptEngine, ProfilerReportsTheFrameRateOnceMoreThanASecondHasPassed) {
  CScopedFakeClock fake;
  CScriptEngineRef engine;
  engine->GetReplies();
  Profiler().Restart();
  for (int frame = 0; frame < 40; ++frame) {
    fake.clock.Advance(0.03);
    Profiler().FrameFinished();
  }
  // 34 frames take 1.02 s: one report; the six since are not yet one.
  EXPECT_EQ(engine->GetReplies(), "<vms><Profiler fps=\"33.333333\" /></vms>");
}
