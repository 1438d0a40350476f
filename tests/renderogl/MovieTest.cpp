// The movie half of CScreenshot: what reaches the movie file, and how a
// failure ends the movie while the run goes on.
#include <gtest/gtest.h>

#include "GLTestSupport.h"
#include "renderogl/Screenshot.h"
#include "support/LogCapture.h"

namespace {
struct FakeMovie : IMovieWriter {
  bool createOk = true;
  int failFrame = 0;  // the frame (from 1) whose AddFrame fails; 0: none
  std::vector<MoviePicture> frames;
  int *finished = nullptr;
  bool Create(const std::string &) override { return createOk; }
  void SetSound(int, int) override {}
  bool AddFrame(const MoviePicture &p) override {
    frames.push_back(p);
    return static_cast<int>(frames.size()) != failFrame;
  }
  bool AddSound(const float *, int) override { return true; }
  bool Finish() override { return ++*finished, true; }
  std::string ErrorText() const override { return "fake"; }
};
}  // namespace

TEST(Movie, FramesReachTheFileUntilAFailureEndsTheMovie) {
  VELMOR_REQUIRE_DISPLAY();
  GLWindow gl(24, 12);
  ASSERT_TRUE(gl.Ok()) << GetFirstError();
  struct Case { bool createOk; int failFrame, frames; const char *error; } cases[] = {
      {true, 0, 4, ""},
      {false, 0, 0, "Failed to create movie file \"m.avi\""},
      {true, 2, 2, "Movie frame failed: fake"},
  };
  for (const Case &c : cases) {
    LogCapture log;
    FakeMovie *movie = nullptr;
    int finished = 0;
    CScreenshot &shot = gl.render.m_Screenshot;
    shot.m_MakeMovieWriter = [&] {
      auto m = std::make_unique<FakeMovie>();
      m->createOk = c.createOk, m->failFrame = c.failFrame, m->finished = &finished, movie = m.get();
      return m;
    };
    EXPECT_EQ(shot.BeginMovie("m.avi"), c.createOk);
    for (int i = 0; i < 4; ++i) shot.AddMovieFrame(25);
    ASSERT_NE(movie, nullptr);
    EXPECT_EQ(static_cast<int>(movie->frames.size()), c.frames) << c.error;
    for (const MoviePicture &p : movie->frames) EXPECT_TRUE(p.width == 24 && p.height == 12 && p.framesPerSecond == 25);
    EXPECT_EQ(log.LastError(), c.error);
    // Ending completes a movie that has frames, a failed one included.
    shot.EndMovie();
    EXPECT_EQ(finished, c.frames > 0 ? 1 : 0) << c.error;
  }
  gl.render.m_Screenshot.m_MakeMovieWriter = &MakeMovieWriter;
}
