// velmor-tool host: drives the engine with command documents on stdin, one
// per line, and answers each with that frame's reply document on one line.

#include <cstdio>
#include <cstring>
#include <memory>
#include <unistd.h>

#include "app/Folders.h"
#include "core/LineBuffer.h"
#include "core/Log.h"
#include "core/Paths.h"
#include "engine/ScriptEngine.h"
#include "tool/ToolCommand.h"
#include "tool/ToolScene.h"
#include "tool/ToolWindow.h"

namespace {
constexpr size_t kMaxLine = size_t{1} << 20;
constexpr float kFrame = 0.033333335f;

int Usage() {
  fprintf(stderr, "usage: velmor-tool host [FILE] [--gl]\n");
  return 2;
}

int RunHost(int argc, char **argv) {
  std::string file;
  bool gl = false;
  for (int i = 1; i < argc; ++i) {
    if (!strcmp(argv[i], "--gl"))
      gl = true;
    else if (file.empty() && argv[i][0] != '-')
      file = argv[i];
    else
      return Usage();
  }
  CToolEngine tool;
  CVelmor &engine = tool.engine;
  // Captures go where the program puts them: the user's folder.
  const AppFolders folders = ThisAppFolders();
  SetAppPaths(folders.appPath, folders.userPath);
  if (file.empty() ? !engine.Init() : !tool.Load(file)) {
    fprintf(stderr, "velmor-tool host: %s\n", GetFirstError());
    return 1;
  }
  // The tool runs a frame per line; the cap is only remembered for the host.
  float maxFps = 0.0f;
  engine.m_GetMaxFps = [&maxFps] { return maxFps; };
  engine.m_SetMaxFps = [&maxFps](float fps) { maxFps = fps; };
  std::unique_ptr<CToolWindow> window;
  if (gl) {
    window = std::make_unique<CToolWindow>(engine);
    if (!window->Open(640, 480, "velmor-tool host")) return 1;
  }

  CScriptEngineRef commands;
  CLineBuffer lines(kMaxLine);
  auto frame = [&](const std::string &line, bool oversized) {
    commands->AddCommandLine(line, oversized);
    engine.Update(kFrame);
    if (window)
      window->render.Render3DEnvironment(false);
    else
      engine.FrameFinished();
    const std::string replies = commands->GetReplies();
    printf("%s\n", replies.c_str());
    fflush(stdout);
  };
  char buffer[65536];
  std::string line;
  bool oversized = false;
  for (ssize_t n; (n = read(0, buffer, sizeof(buffer))) > 0;) {
    lines.Append(buffer, static_cast<size_t>(n));
    while (lines.Next(line, oversized)) frame(line, oversized);
  }
  if (lines.Finish(line, oversized)) frame(line, oversized);
  return 0;
}
}  // namespace

VELMOR_TOOL_COMMAND(host, "host", 8, "[FILE] [--gl]",
                    "run FILE (project or scene; none: an empty project) and execute one XML command document per "
                    "stdin line, each on its own frame, printing that frame's reply document (root vms) as one line; "
                    "--gl draws into an OpenGL window of the current display",
                    RunHost);
