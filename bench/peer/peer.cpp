// The peer of bench/scenes.sh: Debian's libprojectM drawing a fixed list of
// its presets into an X window with its packaged configuration, through its
// public API only. Prints one line per preset: "MS_PER_FRAME SWITCH_MS NAME",
// where the frame cost leaves out the preset switch and the frames after it
// (SWITCH_MS: the frame that loads the preset). Each preset is timed ROUNDS
// times, one round after the other, and keeps its best round (the least
// disturbed on a shared machine).
//
// usage: peer WIDTH HEIGHT FRAMES ROUNDS PRESETS.txt
#include <GL/glx.h>
#include <X11/Xlib.h>
#include <libprojectM/projectM.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {
const char *kPresetRoot = "/usr/share/projectM/presets/";
const char *kConfig = "/usr/share/projectM/config.inp";
constexpr int kSettleFrames = 5;

using Clock = std::chrono::steady_clock;
double Ms(Clock::time_point a, Clock::time_point b) { return std::chrono::duration<double, std::milli>(b - a).count(); }

struct Window3 {
  Display *display = nullptr;
  ::Window window = 0;
  GLXContext context = nullptr;
};

// A window with an OpenGL 3.3 core context, which the library's shaders need.
bool OpenWindow(int width, int height, Window3 &w) {
  w.display = XOpenDisplay(nullptr);
  if (!w.display) return false;
  const int fbAttribs[] = {GLX_X_RENDERABLE, True, GLX_DRAWABLE_TYPE, GLX_WINDOW_BIT, GLX_RENDER_TYPE, GLX_RGBA_BIT,
                           GLX_RED_SIZE, 8, GLX_GREEN_SIZE, 8, GLX_BLUE_SIZE, 8, GLX_DEPTH_SIZE, 24,
                           GLX_DOUBLEBUFFER, True, None};
  int count = 0;
  GLXFBConfig *configs = glXChooseFBConfig(w.display, DefaultScreen(w.display), fbAttribs, &count);
  if (!configs || count == 0) return false;
  GLXFBConfig config = configs[0];
  XFree(configs);
  XVisualInfo *visual = glXGetVisualFromFBConfig(w.display, config);
  XSetWindowAttributes swa{};
  swa.colormap = XCreateColormap(w.display, RootWindow(w.display, visual->screen), visual->visual, AllocNone);
  w.window = XCreateWindow(w.display, RootWindow(w.display, visual->screen), 0, 0, width, height, 0, visual->depth,
                           InputOutput, visual->visual, CWColormap, &swa);
  XFree(visual);
  XMapWindow(w.display, w.window);
  using CreateContext = GLXContext (*)(Display *, GLXFBConfig, GLXContext, Bool, const int *);
  auto create = reinterpret_cast<CreateContext>(glXGetProcAddressARB(
      reinterpret_cast<const GLubyte *>("glXCreateContextAttribsARB")));
  const int ctxAttribs[] = {GLX_CONTEXT_MAJOR_VERSION_ARB, 3, GLX_CONTEXT_MINOR_VERSION_ARB, 3,
                            GLX_CONTEXT_PROFILE_MASK_ARB, GLX_CONTEXT_CORE_PROFILE_BIT_ARB, None};
  w.context = create ? create(w.display, config, nullptr, True, ctxAttribs) : nullptr;
  return w.context && glXMakeCurrent(w.display, w.window, w.context);
}

// A beat of low notes over a steady chord, so that presets that follow the
// music move as they would to a song.
void FeedSound(projectM &pm, int frame) {
  static float samples[2 * 735];
  for (int i = 0; i < 735; ++i) {
    const double t = (frame * 735 + i) / 44100.0;
    const double beat = std::exp(-8.0 * std::fmod(t, 0.5));
    const float v = static_cast<float>(0.5 * beat * std::sin(2 * M_PI * 60 * t) + 0.2 * std::sin(2 * M_PI * 440 * t) +
                                       0.1 * std::sin(2 * M_PI * 1760 * t));
    samples[2 * i] = samples[2 * i + 1] = v;
  }
  pm.pcm()->addPCMfloat_2ch(samples, 2 * 735);
}
}  // namespace

int main(int argc, char **argv) {
  if (argc != 6) {
    fprintf(stderr, "usage: peer WIDTH HEIGHT FRAMES ROUNDS PRESETS.txt\n");
    return 2;
  }
  const int width = atoi(argv[1]), height = atoi(argv[2]), frames = atoi(argv[3]), rounds = atoi(argv[4]);
  std::vector<std::string> names;
  std::ifstream list(argv[5]);
  for (std::string line; std::getline(list, line);)
    if (!line.empty()) names.push_back(line);
  if (width < 16 || height < 16 || frames < 1 || rounds < 1 || names.empty()) {
    fprintf(stderr, "peer: bad arguments or empty preset list\n");
    return 2;
  }
  Window3 w;
  if (!OpenWindow(width, height, w)) {
    fprintf(stderr, "peer: no OpenGL 3.3 core context on this display\n");
    return 1;
  }
  auto owned = std::make_unique<projectM>(kConfig, projectM::FLAG_DISABLE_PLAYLIST_LOAD);
  projectM &pm = *owned;
  pm.projectM_resetGL(width, height);
  pm.setPresetLock(true);  // each preset plays until it is changed here
  for (const std::string &name : names) pm.addPresetURL(kPresetRoot + name, name, RatingList{1, 1});

  int frame = 0;
  auto draw = [&] {
    FeedSound(pm, frame++);
    pm.renderFrame();
    glXSwapBuffers(w.display, w.window);
  };
  std::vector<double> frameMs(names.size(), 1e30), switchMs(names.size(), 1e30);
  for (int round = 0; round < rounds; ++round)
    for (unsigned i = 0; i < names.size(); ++i) {
      auto t0 = Clock::now();
      pm.selectPreset(i, true);
      draw();
      glFinish();
      switchMs[i] = std::min(switchMs[i], Ms(t0, Clock::now()));
      for (int k = 0; k < kSettleFrames; ++k) draw();
      glFinish();
      t0 = Clock::now();
      for (int k = 0; k < frames; ++k) draw();
      glFinish();
      frameMs[i] = std::min(frameMs[i], Ms(t0, Clock::now()) / frames);
    }
  for (unsigned i = 0; i < names.size(); ++i) printf("%.3f %.1f %s\n", frameMs[i], switchMs[i], names[i].c_str());
  owned.reset();  // its GL objects go while the context is current
  glXMakeCurrent(w.display, None, nullptr);
  glXDestroyContext(w.display, w.context);
  XDestroyWindow(w.display, w.window);
  XCloseDisplay(w.display);
  return 0;
}
