// The frame cost of scenes, in process: each scene is loaded and drawn into
// a window of the given size as velmor-tool render draws it, a few frames
// are drawn first (loading, effect compiling and the driver's shader
// compiles are left out), then FRAMES frames are timed. Every scene is
// timed ROUNDS times, one round after the other, and keeps its best round:
// on a shared machine, the round least disturbed by others. One line per
// scene: "MS_PER_FRAME FILE" ("failed FILE" when it can't be loaded or
// drawn). bench/scenes.sh runs it for every scene of the bundled projects.
//   bench_scenes WIDTHxHEIGHT FRAMES ROUNDS SCENE.vms...   (in the installation folder, under X)
#include <GL/gl.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "tool/ToolScene.h"
#include "tool/ToolWindow.h"

namespace {
constexpr int kSettleFrames = 5;
constexpr float kStep = 0.033333335f;

// Milliseconds per frame of `frames` frames after the settling ones; < 0
// when the scene can't be drawn.
double FrameMs(const char *file, int width, int height, int frames) {
  CToolEngine tool;
  if (!tool.Load(file) || !tool.Active()) return -1.0;
  CToolWindow window(tool.engine);
  if (!window.Open(width, height, "bench_scenes")) return -1.0;
  auto frame = [&] {
    tool.engine.Update(kStep);
    window.render.Render3DEnvironment(false);
  };
  for (int i = 0; i < kSettleFrames; ++i) frame();
  glFinish();
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < frames; ++i) frame();
  glFinish();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count() / frames;
}
}  // namespace

int main(int argc, char **argv) {
  int width = 0, height = 0;
  const int frames = argc > 2 ? atoi(argv[2]) : 0, rounds = argc > 3 ? atoi(argv[3]) : 0;
  if (argc < 5 || sscanf(argv[1], "%dx%d", &width, &height) != 2 || width < 16 || height < 16 || frames < 1 ||
      rounds < 1) {
    fprintf(stderr, "usage: bench_scenes WIDTHxHEIGHT FRAMES ROUNDS SCENE.vms...\n");
    return 2;
  }
  std::vector<double> best(static_cast<size_t>(argc - 4), -1.0);
  for (int round = 0; round < rounds; ++round)
    for (int i = 4; i < argc; ++i) {
      const double ms = FrameMs(argv[i], width, height, frames);
      double &b = best[static_cast<size_t>(i - 4)];
      if (ms >= 0 && (b < 0 || ms < b)) b = ms;
    }
  for (int i = 4; i < argc; ++i) {
    const double ms = best[static_cast<size_t>(i - 4)];
    if (ms < 0)
      printf("failed %s\n", argv[i]);
    else
      printf("%.2f %s\n", ms, argv[i]);
  }
  return 0;
}
