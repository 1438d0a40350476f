// Record mode: a fixed clock, the second half of the run written as a
// lossless movie at 25 frames a second into the user's Screenshots, with a
// still beside it every 3 seconds.

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "e2e/VelmorProcess.h"
#include "platform/MovieWriter.h"

using namespace std::chrono_literals;

TEST(RecordRun, TwoSecondsGiveOneSecondOfKeyFramesAndAStill) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set: the program needs an X server";
  VelmorProcess velmor;
  ASSERT_TRUE(velmor.Start({"/r", "clip.avi", "scenes/plasma.vms", "--seconds", "2"}));
  ASSERT_TRUE(velmor.WaitForExit(120s)) << Joined(velmor.LogLines());
  EXPECT_TRUE(velmor.ExitedCleanly()) << velmor.Output();
  EXPECT_TRUE(InOrder(velmor.LogLines(), kShutdownLines)) << Joined(velmor.LogLines());

  const std::string folder = velmor.UserFolder() + "/Screenshots";
  std::vector<MovieStream> streams;
  ASSERT_TRUE(ReadMovie(folder + "/clip.avi", streams)) << Joined(velmor.LogLines());
  ASSERT_EQ(streams.size(), 1u);
  const MovieStream &video = streams[0];
  EXPECT_EQ(video.kind, 'v');
  EXPECT_EQ(video.codec, "ffv1");
  EXPECT_DOUBLE_EQ(video.rate, 25.0);
  // Scene time 1 to just past 2 in steps of 0.04; float sums move the ends.
  EXPECT_GE(video.frames, 25);
  EXPECT_LE(video.frames, 27);
  EXPECT_TRUE(video.allKeyFrames);
  EXPECT_GT(video.width, 100);

  int stills = 0;
  for (const auto &entry : std::filesystem::directory_iterator(folder))
    stills += entry.path().extension() == ".png" && entry.path().filename().string().find("clip") != std::string::npos;
  EXPECT_EQ(stills, 1);
}
