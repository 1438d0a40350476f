#include "tool/ToolScene.h"

#include <filesystem>
#include <unistd.h>

#include "app/Folders.h"
#include "core/Log.h"
#include "core/Paths.h"
#include "engine/SceneLayered.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/effect/FxNode.h"
#include "scene/Scene.h"

namespace fs = std::filesystem;

CToolErrors::CToolErrors() {
  SetLogSink(
      [](const char *text, bool isError, void *user) {
        auto *self = static_cast<CToolErrors *>(user);
        if (isError || self->allLines) self->errors.push_back(text);
      },
      this);
}

CToolErrors::~CToolErrors() { SetLogSink(nullptr, nullptr); }

namespace {
// The installation the tool belongs to, found as the program finds its own,
// without creating a user folder.
std::string Installation() {
  std::error_code ec;
  const std::string exe = fs::read_symlink("/proc/self/exe", ec).string();
  const std::string cwd = fs::current_path(ec).string();
  // A built tool is not installed: the current folder is the installation.
  return FindAppFolders(exe, cwd, nullptr, nullptr).appPath;
}
}  // namespace

CToolEngine::Setup::Setup() : installation(Installation()) {
  SetAppPaths(installation, installation);
  InstallBuiltinNodes();
}

CToolEngine::CToolEngine() {
  const std::string app = m_Setup.installation;
  engine.m_RegisterEffectNodes = [app](CNodeFactory &f) {
    CNEFx::AddNodesToFactory(f, JoinPath(app, "nodes/effect").c_str());
  };
  engine.m_AutoGotoNextScene = false;
  engine.m_RandomizeScene = false;
}

bool CToolEngine::Load(const std::string &file) {
  std::error_code ec;
  StartRequest request;
  request.mode = 3;  // a window of its own: the file alone is played
  request.file = fs::absolute(file, ec).string();
  if (!fs::exists(request.file, ec)) return LogError("Unable to load \"%s\"", file.c_str());
  return engine.Start(request);
}

std::vector<CScene *> CToolEngine::Scenes() const {
  std::vector<CScene *> out;
  for (const auto &entry : engine.m_Scenes)
    if (auto *scene = dynamic_cast<CScene *>(entry.get())) out.push_back(scene);
  for (const auto *pool : {&engine.m_BackgroundScenes, &engine.m_ForegroundScenes, &engine.m_PostprocessingScenes})
    for (const auto &scene : *pool) out.push_back(scene.get());
  return out;
}

bool TakeOption(std::vector<std::string> &args, const char *name, std::string &value) {
  for (size_t i = 0; i + 1 < args.size(); ++i)
    if (args[i] == name) {
      value = args[i + 1];
      args.erase(args.begin() + static_cast<long>(i), args.begin() + static_cast<long>(i) + 2);
      return true;
    }
  return false;
}
