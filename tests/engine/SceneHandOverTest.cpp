// A scene switch keeps the old picture on screen while the new scene readies
// its device objects a few milliseconds a frame, so that no frame stalls;
// then the new scene shows for good.
#include <gtest/gtest.h>

#include <string>

#include "core/Clock.h"
#include "engine/LayerTestSupport.h"
#include "engine/Velmor.h"
#include "support/RecordTargets.h"

namespace {
// Every reading of the counter is 3 ms after the one before.
class SteppingClock : public IClock {
 public:
  bool HasHighResolution() const override { return true; }
  int64_t Counter() override { return m_Ms += 3; }
  int64_t Frequency() override { return 1000; }
  uint32_t Milliseconds() override { return static_cast<uint32_t>(m_Ms); }
  void Sleep(uint32_t) override {}
  WallTime LocalTime() override { return {}; }
  WallTime UtcTime() override { return {}; }
  int64_t UnixSeconds() override { return 0; }
  int64_t m_Ms = 0;
};

struct ClockSwap {
  explicit ClockSwap(IClock *clock) { SetClock(clock); }
  ~ClockSwap() { SetClock(nullptr); }
};
}  // namespace

TEST(SceneHandOver, TheOldSceneShowsUntilTheNewOneHasItsDeviceObjects) {
  // The new scene has eight nodes to ready; at 3 ms a node a 4 ms budget
  // readies two a frame.
  const struct {
    double budgetMs;
    std::string shown;  // o: the old scene's color, n: the new one's
  } cases[] = {{4.0, "ooonnn"}, {0.0, "nnnnnn"}, {1000.0, "nnnnnn"}};
  for (const auto &c : cases) {
    SCOPED_TRACE(c.budgetMs);
    LayerFiles files;
    LayerSceneSpec next = ClearScene("next", "0 1 0 1");
    for (int i = 2; i <= 7; ++i) next.nodes += "<Node Type=\"Clear\" Name=\"Clear" + std::to_string(i) + "\"/>";
    const std::string project = files.Project({files.Scene(ClearScene("old", "1 0 0 1")), files.Scene(next)}, {});
    CVelmor engine;
    StartRequest request;
    request.file = project;
    ASSERT_TRUE(engine.Start(request));
    engine.m_AutoGotoNextScene = false;
    engine.m_HandOverBudgetMs = c.budgetMs;
    CRecordRender render{64, 64};
    engine.SetRender(&render);
    auto frame = [&] {
      engine.Update(0.033f);
      render.ClearCalls();
      render.m_Callbacks.onRender = [&] { engine.Draw(&render); };
      render.Render3DEnvironment(false);
      engine.FrameFinished();
      std::string seen;
      for (const std::string &call : CallsStartingWith(render, {"Clear "}))
        seen += call.rfind("Clear 1 0 0 1", 0) == 0 ? 'o' : call.rfind("Clear 0 1 0 1", 0) == 0 ? 'n' : '?';
      return seen;
    };
    engine.SelectPreset(0);
    EXPECT_EQ(frame(), "o");

    SteppingClock clock;
    ClockSwap swap(&clock);
    engine.SelectPreset(1);
    std::string shown;
    for (size_t i = 0; i < c.shown.size(); ++i) shown += frame();
    EXPECT_EQ(shown, c.shown);
  }
}
