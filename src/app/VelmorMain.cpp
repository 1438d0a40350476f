// velmor: the screensaver and music visualizer.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "app/AppTypeScreensaver.h"
#include "app/Folders.h"
#include "app/HostChannel.h"
#include "app/VelmorApp.h"
#include "audio/SoundAnalyzer.h"
#include "audio/SoundFromFile.h"
#include "core/Log.h"
#include "engine/DemoEngine.h"
#include "nodes/BuiltinNodes.h"
#include "platform/LineChannel.h"
#include "platform/CrashReport.h"
#include "platform/Memory.h"
#include "platform/Signals.h"
#include "renderogl/RenderOGL.h"

namespace {
void Usage(FILE *out) {
  fprintf(out,
          "usage: velmor [switch] [options]\n"
          "switches (with / or -):\n"
          "  /s              full screen on every monitor (the screensaver)\n"
          "  /t [file]       in a window of its own; file: a project, a scene, or bg;fg;post scenes\n"
          "  /f file         full screen playing file\n"
          "  /p ID           preview inside the X window ID\n"
          "  /e              a 1280x1024 window for screenshots\n"
          "  /r movie file   record 30 s of file; the second half becomes movie (lossless AVI, in Screenshots\n"
          "                  when relative) with a still every 3 s; --seconds N records N seconds\n"
          "  /c              configuration (none: settings live in config.xml)\n"
          "desktop saver conventions:\n"
          "  -root           into $XSCREENSAVER_WINDOW, or full screen when it is unset\n"
          "  -window-id ID   into the X window ID (decimal or 0x hex)\n"
          "  -window         in a window of its own\n"
          "options:\n"
          "  --seconds N          stop after N seconds (with /r: record N seconds of scene time)\n"
          "  --pictures DIR       save a PNG of the screen into DIR every second (see --picture-every)\n"
          "  --picture-every S    seconds between pictures\n"
          "  --demo [STEPS]       run the built-in demo graph without a window, printing each step\n"
          "  --audio FILE         hear a sound file (WAV, FLAC, ...) instead of capturing the machine's output\n"
          "  --listen PATH        take XML command documents, one per line, on an owner-only Unix socket at PATH;\n"
          "                       each line is answered with its frame's reply document on one line\n"
          "  --frame-times FILE   write one CSV line per frame: scene time, frame milliseconds, scene file\n"
          "F9 saves a picture into the Screenshots folder of the user's folder.\n");
}

int RunDemo(int steps) {
  SetLogEcho(true);
  CVelmorApp app([steps] { return std::make_unique<CDemoEngine>(stdout, steps); });
  CAppTypeWin host(&app);
  if (!app.Init()) return 1;
  host.RunApp();
  app.Free();
  return 0;
}
}  // namespace

int main(int argc, char **argv) {
  KeepFreedMemoryMapped();
  InstallShutdownSignals();
  InstallCrashHandler();
  std::vector<std::string> args;
  double seconds = 0.0, every = 1.0;
  std::string pictures, audio, listen, frameTimes;
  for (int i = 1; i < argc; ++i) {
    const char *a = argv[i];
    if (!strcmp(a, "--help")) {
      Usage(stdout);
      return 0;
    } else if (!strcmp(a, "--demo")) {
      return RunDemo(i + 1 < argc && atoi(argv[i + 1]) > 0 ? atoi(argv[i + 1]) : 90);
    } else if (!strcmp(a, "--seconds") && i + 1 < argc) {
      seconds = atof(argv[++i]);
    } else if (!strcmp(a, "--pictures") && i + 1 < argc) {
      pictures = argv[++i];
    } else if (!strcmp(a, "--audio") && i + 1 < argc) {
      audio = argv[++i];
    } else if (!strcmp(a, "--listen") && i + 1 < argc) {
      listen = argv[++i];
    } else if (!strcmp(a, "--frame-times") && i + 1 < argc) {
      frameTimes = argv[++i];
    } else if (!strcmp(a, "--picture-every") && i + 1 < argc) {
      every = atof(argv[++i]);
    } else {
      args.push_back(a);
    }
  }
  args = TranslateLinuxSwitches(args, getenv("XSCREENSAVER_WINDOW"));

  // Pictures, sound, socket and frame-time files are where the user pointed, not into the installation we change into.
  for (std::string *path : {&pictures, &audio, &listen, &frameTimes})
    if (!path->empty() && (*path)[0] != '/') {
      char cwd[4096];
      if (getcwd(cwd, sizeof(cwd))) *path = std::string(cwd) + "/" + *path;
    }
  const AppFolders folders = SetUpAppFolders();
  InstallBuiltinNodes();
  if (!audio.empty() && !PlaySoundFile(g_Sound, audio)) fprintf(stderr, "velmor: %s\n", GetFirstError());
  {
    CVelmorApp app(&CVelmorApp::MakeVelmorEngine);
    if (!listen.empty()) {
      auto channel = OpenUnixSocketChannel(listen, CHostChannel::MaxLine);
      if (!channel) {
        fprintf(stderr, "velmor: %s\n", GetFirstError());
        return 1;
      }
      app.m_HostChannel = std::make_unique<CHostChannel>(std::move(channel));
    }
    if (!frameTimes.empty() && !app.m_FrameTimes.Open(frameTimes))
      fprintf(stderr, "velmor: can't write frame times to \"%s\"\n", frameTimes.c_str());
    CAppTypeScreensaver host(&app, [] { return std::make_unique<CRenderOGL>(); });
    host.m_AppPath = folders.appPath;
    host.m_UserPath = folders.userPath;
    host.m_ConfigFile = folders.configFile;
    host.m_RunSeconds = seconds;
    host.m_PictureFolder = pictures;
    host.m_PictureEvery = every > 0.0 ? every : 1.0;
    if (host.Init(JoinArguments(args))) {
      host.Run();
    } else {
      fprintf(stderr, "Failed to init screensaver: %s\n", GetFirstError());
      Log("Failed to init screensaver: %s", GetFirstError());
    }
    app.Free();
  }
  return 0;
}
