// velmor-tool eval: runs a scene to a time and prints port values.

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "core/Random.h"
#include "scene/Port.h"
#include "scene/Scene.h"
#include "tool/ToolCommand.h"
#include "tool/ToolScene.h"
#include "tool/ToolSound.h"

namespace {
int Usage() {
  fprintf(stderr, "usage: velmor-tool eval FILE --time T [--step S] [--seed N] [--audio FILE.wav] --port NODE.PORT...\n");
  return 2;
}

int RunEval(int argc, char **argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  std::string time, step, seed;
  if (!TakeOption(args, "--time", time)) return Usage();
  TakeOption(args, "--step", step);
  TakeOption(args, "--seed", seed);
  std::vector<std::string> ports;
  for (std::string port; TakeOption(args, "--port", port);) ports.push_back(port);
  CToolSound sound;
  if (!sound.TakeOption(args)) return 1;
  if (args.size() != 1 || ports.empty()) return Usage();
  if (!seed.empty()) SeedSharedRandom(static_cast<uint32_t>(strtoul(seed.c_str(), nullptr, 0)));

  CToolErrors log;
  CToolEngine tool;
  CSceneBase *active = tool.Load(args[0]) ? tool.Active() : nullptr;
  if (!active || !log.errors.empty()) {
    for (const std::string &e : log.errors) fprintf(stderr, "%s: %s\n", args[0].c_str(), e.c_str());
    if (log.errors.empty()) fprintf(stderr, "%s: no scene\n", args[0].c_str());
    return 1;
  }
  const float until = static_cast<float>(atof(time.c_str()));
  const float dt = step.empty() ? 0.033333335f : static_cast<float>(atof(step.c_str()));
  if (dt <= 0.0f) return Usage();
  // Warm-up steps count: they advance the scene's time too.
  for (float before = -1.0f; tool.ActiveTime() + 1e-6f < until && tool.ActiveTime() > before;) {
    before = tool.ActiveTime();
    sound.AdvanceTo(before);
    active->Update(std::min(dt, until - before));
  }

  int status = 0;
  for (const std::string &address : ports) {
    std::string component;
    CPort *port = tool.FindPort(address, component);
    if (!port) {
      fprintf(stderr, "%s: no port \"%s\"\n", args[0].c_str(), address.c_str());
      status = 1;
      continue;
    }
    const std::string text = component.empty() ? port->GetText() : port->GetText(component.c_str());
    printf("%s=%s\n", address.c_str(), text.c_str());
  }
  return status;
}
}  // namespace

VELMOR_TOOL_COMMAND(eval, "eval", 3, "FILE --time T [--step S] [--seed N] [--audio FILE.wav] --port NODE.PORT...",
                    "run a scene, layered list or project to time T and print NODE.PORT=VALUE for each port",
                    RunEval);
