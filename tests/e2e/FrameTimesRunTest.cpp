// --frame-times: a CSV line per frame, written out by the time the program
// has ended.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>

#include "e2e/VelmorProcess.h"

using namespace std::chrono_literals;

TEST(FrameTimesRun, EveryFrameIsALineOfSceneTimeCostAndFile) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set: the program needs an X server";
  TempDir dir;
  VelmorProcess velmor;
  ASSERT_TRUE(velmor.Start({"/t", "scenes/plasma.vms", "--seconds", "2", "--frame-times", dir / "frames.csv"}));
  ASSERT_TRUE(velmor.WaitForExit(60s)) << Joined(velmor.LogLines());

  std::ifstream csv(dir / "frames.csv");
  std::string line;
  ASSERT_TRUE(std::getline(csv, line)) << velmor.Output();
  EXPECT_EQ(line, "time,ms,scene");
  int frames = 0;
  double lastTime = -1.0;
  std::string firstScene;
  while (std::getline(csv, line)) {
    double time = 0.0, ms = 0.0;
    int scene = 0;
    ASSERT_EQ(sscanf(line.c_str(), "%lf,%lf,%n", &time, &ms, &scene), 2) << line;
    EXPECT_GE(time, lastTime) << line;
    EXPECT_GT(ms, 0.0) << line;
    EXPECT_LT(ms, 2000.0) << line;
    // One scene plays: the same, named, on every line.
    if (firstScene.empty()) firstScene = line.substr(static_cast<size_t>(scene));
    EXPECT_EQ(line.substr(static_cast<size_t>(scene)), firstScene);
    lastTime = time, ++frames;
  }
  // A couple of seconds at the 30 fps cap, slowed down by the sanitizers.
  EXPECT_GE(frames, 10);
  EXPECT_LE(frames, 70);
  EXPECT_GT(lastTime, 0.5);
  EXPECT_NE(firstScene, "");
}
