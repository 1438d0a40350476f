// velmor: runs the built-in demo graph through the frame loop.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "app/AppTypeWin.h"
#include "app/VelmorApp.h"
#include "core/Log.h"
#include "engine/DemoEngine.h"
#include "platform/Signals.h"

namespace {
void Usage() {
  fprintf(stderr,
          "usage: velmor [--frames N] [--max-fps F]\n"
          "Runs the built-in demo graph through the frame loop and prints each update step.\n"
          "--frames N    stop after N update steps (default 90; 0 runs until SIGINT/SIGTERM)\n"
          "--max-fps F   frame cap (default 30; 0 runs frames back to back)\n");
}
}  // namespace

int main(int argc, char **argv) {
  int frames = 90;
  float maxFps = 30.0f;
  for (int i = 1; i < argc; ++i) {
    if (!strcmp(argv[i], "--frames") && i + 1 < argc) {
      frames = atoi(argv[++i]);
    } else if (!strcmp(argv[i], "--max-fps") && i + 1 < argc) {
      maxFps = static_cast<float>(atof(argv[++i]));
    } else {
      Usage();
      return strcmp(argv[i], "--help") ? 2 : 0;
    }
  }
  SetLogEcho(true);
  InstallShutdownSignals();

  CVelmorApp app([frames] { return std::make_unique<CDemoEngine>(stdout, frames); });
  CAppTypeWin host(&app);
  host.m_MaxFps = maxFps;
  if (!app.Init()) return 1;
  host.RunApp();
  app.Free();
  return 0;
}
