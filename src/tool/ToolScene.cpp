#include "tool/ToolScene.h"

#include "app/Folders.h"
#include "core/Log.h"
#include "core/Paths.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/effect/FxNode.h"
#include "scene/Scene.h"

CToolErrors::CToolErrors() {
  SetLogSink(
      [](const char *text, bool isError, void *user) {
        auto *self = static_cast<CToolErrors *>(user);
        if (isError || self->allLines) self->errors.push_back(text);
      },
      this);
}

CToolErrors::~CToolErrors() { SetLogSink(nullptr, nullptr); }

CToolEngine::Setup::Setup() : installation(ThisInstallation()) {
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
  // Offline pictures wait for nothing: a switch shows the new scene at
  // once, so that the same command gives the same frames.
  engine.m_HandOverBudgetMs = 0.0;
}

bool CToolEngine::Load(const std::string &file) {
  // The file plays alone, as in the program's test window, but nothing
  // changes scenes and a file that can't be loaded is the user's to hear of.
  StartRequest request;
  request.settings.timedScenes = false;
  request.settings.playsLayeredLists = true;
  request.settings.statisticsAllowed = false;
  request.file = file;
  request.fallBack = false;
  if (!engine.Start(request)) return false;
  const bool sceneFile = file.find(';') == std::string::npos && file.find(".vmp") == std::string::npos;
  if (sceneFile && engine.m_Scenes.empty()) return LogError("Unable to load scene file \"%s\".", file.c_str());
  return true;
}

CSceneBase *CToolEngine::Active() const { return engine.m_ActiveScene; }

float CToolEngine::ActiveTime() const {
  return engine.m_ActiveScene ? engine.m_ActiveScene->GetTime() : 0.0f;
}

CPort *CToolEngine::FindPort(const std::string &address, std::string &component) const {
  for (CScene *scene : Scenes()) {
    if (CPort *port = scene->FindInPort(address.c_str(), &component)) return port;
    component.clear();
    if (CPort *port = scene->FindOutPort(address.c_str())) return port;
  }
  return nullptr;
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
