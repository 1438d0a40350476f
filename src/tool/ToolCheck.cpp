// velmor-tool check: loads scenes and projects as the program would and
// reports every problem the log would get.

#include <cstdio>

#include "fx/FxManager.h"
#include "render/RecordRender.h"
#include "scene/Node.h"
#include "scene/Scene.h"
#include "tool/ToolCommand.h"
#include "tool/ToolScene.h"

namespace {
// Loads the file, runs one step (which compiles the expressions) and makes
// each scene's device objects on a renderer that only records, with an
// effect manager that translates without GL: effect files and Shader texts
// are compiled and their errors reported with their lines.
std::vector<std::string> Problems(const std::string &file) {
  CToolErrors log;
  CToolEngine tool;
  if (tool.Load(file)) {
    CFxManager effects;
    effects.Init(nullptr);
    CRecordRender render(320, 240);
    render.m_Recording = false;
    render.m_FxManager = &effects;
    for (CScene *scene : tool.Scenes()) {
      // Running the nodes logs nothing unless an expression fails.
      log.allLines = true;
      scene->Update(1.0f / 30.0f);
      // Nodes the Screen doesn't reach never run in the program, but their
      // expressions are part of the file: compile them too.
      for (CNode *node : scene->m_Nodes)
        if (!node->m_Updated) {
          node->m_Frame = &scene->m_FrameInfo;
          node->Pull(scene->m_FrameInfo.Time);
        }
      log.allLines = false;
      scene->RestoreDevice(&render);
      scene->InvalidateDevice(&render);
    }
    effects.Free();
  }
  return log.errors;
}

int RunCheck(int argc, char **argv) {
  if (argc < 2) {
    fprintf(stderr, "usage: velmor-tool check FILE...\n");
    return 2;
  }
  int status = 0;
  for (int i = 1; i < argc; ++i) {
    const std::vector<std::string> problems = Problems(argv[i]);
    for (const std::string &p : problems) printf("%s: %s\n", argv[i], p.c_str());
    if (problems.empty())
      printf("%s: ok\n", argv[i]);
    else
      status = 1;
  }
  return status;
}
}  // namespace

VELMOR_TOOL_COMMAND(check, "check", 2, "FILE...",
                    "load scenes (.vms), layered lists (a.vms;b.vms;c.vms) and projects (.vmp) with every node type, "
                    "expression, effect and shader; print FILE: problem, or FILE: ok",
                    RunCheck);
