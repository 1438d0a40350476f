// velmor-tool render: draws a scene or project at a given time into PNG files.

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "core/Log.h"
#include "core/Random.h"
#include "renderogl/RenderOGL.h"
#include "scene/Scene.h"
#include "tool/ToolCommand.h"
#include "tool/ToolScene.h"
#include "tool/ToolSound.h"
#include "tool/ToolWindow.h"

namespace {
int Usage() {
  fprintf(stderr,
          "usage: velmor-tool render FILE --time T [--size WxH] [--seed N] [--audio FILE.wav] -o OUT.png\n"
          "       velmor-tool render FILE --time T --frames N --fps F [--size WxH] [--seed N] [--audio FILE.wav] -o NAME_%%04d.png\n");
  return 2;
}

// Advances the engine to `until` in the engine's steps, drawing each step so
// that feedback through render targets evolves as it does on screen.
void RunTo(CToolEngine &tool, CRender &render, float until) {
  constexpr float kStep = 0.033333335f;
  while (tool.Active() && tool.ActiveTime() + 1e-5f < until) {
    const float before = tool.ActiveTime();
    tool.engine.Update(std::min(kStep, until - before));
    render.Render3DEnvironment(false);
    if (tool.ActiveTime() <= before) break;  // a scene whose clock stands still
  }
}

int RunRender(int argc, char **argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  std::string time, size = "640x480", seed, out, frames, fps;
  if (!TakeOption(args, "--time", time) || !TakeOption(args, "-o", out)) return Usage();
  TakeOption(args, "--size", size);
  TakeOption(args, "--seed", seed);
  const bool sequence = TakeOption(args, "--frames", frames);
  if (sequence && !TakeOption(args, "--fps", fps)) return Usage();
  CToolSound sound;
  if (!sound.TakeOption(args)) return 1;
  int width = 0, height = 0;
  if (args.size() != 1 || sscanf(size.c_str(), "%dx%d", &width, &height) != 2 || width < 1 || height < 2)
    return Usage();
  if (!seed.empty()) SeedSharedRandom(static_cast<uint32_t>(strtoul(seed.c_str(), nullptr, 0)));

  CToolErrors log;
  CToolEngine tool;
  if (!tool.Load(args[0]) || !tool.Active()) {
    for (const std::string &e : log.errors) fprintf(stderr, "%s: %s\n", args[0].c_str(), e.c_str());
    return 1;
  }
  // Before each step the sound catches up with the scene's clock.
  tool.engine.m_UpdateSound = [&] { sound.AdvanceTo(tool.ActiveTime()); };

  CToolWindow window(tool.engine);
  if (!window.Open(width, height, "velmor-tool render")) return 1;
  CRenderOGL &render = window.render;

  const float start = static_cast<float>(atof(time.c_str()));
  const int count = sequence ? atoi(frames.c_str()) : 1;
  const float interval = sequence ? 1.0f / static_cast<float>(atof(fps.c_str())) : 0.0f;
  int status = 0;
  for (int i = 0; i < count; ++i) {
    RunTo(tool, render, start + interval * static_cast<float>(i));
    tool.engine.Update(0.0f);
    render.Render3DEnvironment(false);
    char name[4096];
    snprintf(name, sizeof(name), out.c_str(), i);
    if (render.m_Screenshot.SaveAs(name)) {
      printf("%s\n", name);
    } else {
      fprintf(stderr, "velmor-tool: could not write \"%s\"\n", name);
      status = 1;
    }
  }
  for (const std::string &e : log.errors) fprintf(stderr, "%s: %s\n", args[0].c_str(), e.c_str());
  return log.errors.empty() ? status : 1;
}
}  // namespace

VELMOR_TOOL_COMMAND(render, "render", 4,
                    "FILE --time T [--size WxH] [--seed N] [--frames N --fps F] [--audio FILE.wav] -o OUT.png",
                    "run a scene, layered list or project to time T and draw it into a PNG "
                    "(a numbered sequence with --frames)",
                    RunRender);
