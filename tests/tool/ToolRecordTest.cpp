// velmor-tool record: the movie read back as a player would, its pictures
// on the movie's own clock and its sound the track.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "platform/MovieWriter.h"
#include "tool/ToolRun.h"
#include "tool/ToolWav.h"

namespace {
std::vector<MovieStream> Record(const TempDir &dir, const std::string &args, const std::string &out) {
  const Result r = Tool(Assets(), "record scenes/musicbars.vms --audio " + dir / "track.wav" +
                                      " --size 64x48 --fps 10 " + args + " -o " + dir / out);
  std::vector<MovieStream> streams;
  EXPECT_EQ(r.status, 0) << args;
  EXPECT_TRUE(ReadMovie(dir / out, streams)) << out;
  return streams;
}
}  // namespace

TEST(ToolRecord, MoviesHoldEveryFrameAndTheTrack) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set";
  TempDir dir;
  // 1.05 s of beats: the length is the track's, the last frame partly filled.
  WriteWav(dir, "track.wav", 1.05, [](double t) { return std::fmod(t, 0.25) < 0.1 ? std::sin(3770 * t) : 0.0; });
  struct Case {
    const char *args, *out, *video, *audio;
    int frames;
    long samples, slack;  // AAC pads the start and the end of its sound
    bool allKey;
  } cases[] = {
      {"", "a.avi", "ffv1", "pcm_s16le", 11, 46305, 0, true},
      {"--seconds 0.5", "b.mkv", "h264", "aac", 5, 22050, 2048, false},
  };
  for (const Case &c : cases) {
    const std::vector<MovieStream> streams = Record(dir, c.args, c.out);
    ASSERT_EQ(streams.size(), 2u) << c.out;
    const MovieStream &video = streams[0], &audio = streams[1];
    EXPECT_EQ(video.kind, 'v');
    EXPECT_EQ(video.codec, c.video);
    EXPECT_EQ(video.frames, c.frames) << c.out;
    EXPECT_DOUBLE_EQ(video.rate, 10.0) << c.out;
    EXPECT_EQ(video.width, 64);
    EXPECT_EQ(video.height, 48);
    EXPECT_TRUE(video.allKeyFrames || !c.allKey);
    EXPECT_EQ(audio.kind, 'a');
    EXPECT_EQ(audio.codec, c.audio);
    EXPECT_EQ(audio.channels, 1);
    EXPECT_NEAR(audio.frames, c.samples, c.slack) << c.out;
    ASSERT_FALSE(video.frameHashes.empty());
    EXPECT_NE(video.frameHashes.front(), video.frameHashes.back()) << c.out << ": the pictures don't move";
  }
  // The same command again gives the same pictures.
  EXPECT_EQ(Record(dir, "", "again.avi")[0].frameHashes, Record(dir, "", "a.avi")[0].frameHashes);
  // A track or a movie file that can't be had ends the command with a message.
  EXPECT_NE(Tool(Assets(), "record scenes/musicbars.vms --audio " + dir / "none.wav" + " -o " + dir / "c.avi").status, 0);
  const std::string movie = dir / "no/such/folder.avi";
  EXPECT_EQ(Tool(Assets(), "record scenes/musicbars.vms --audio " + dir / "track.wav" + " -o " + movie, dir / "err").status, 1);
  std::ifstream err(dir / "err");
  const std::string text((std::istreambuf_iterator<char>(err)), std::istreambuf_iterator<char>());
  EXPECT_NE(text.find("Failed to create movie file \"" + movie + "\""), std::string::npos) << text;
}
