// Projects: choosing what to play at start, reading and writing project and
// scene documents, and the play list operations a host drives.
#include "core/Clock.h"
#include "core/Log.h"
#include "core/Paths.h"
#include "core/Trace.h"
#include "engine/SceneLayered.h"
#include "engine/Velmor.h"
#include "scene/Scene.h"
#include "scene/SceneDocument.h"
#include "scene/SerializeXML.h"

namespace {
bool Contains(const std::string &s, const char *what) { return s.find(what) != std::string::npos; }

// Splits at ";", a run of them counting as one: no token is empty.
std::vector<std::string> SplitLayers(const std::string &list) {
  std::vector<std::string> tokens;
  size_t start = 0;
  while (start <= list.size()) {
    size_t end = list.find(';', start);
    if (end == std::string::npos) end = list.size();
    if (end > start) tokens.push_back(list.substr(start, end - start));
    start = end + 1;
  }
  return tokens;
}

template <typename T>
void RemoveFailed(std::list<std::unique_ptr<T>> &list, const std::function<void(const CScene *)> &onDrop) {
  for (auto it = list.begin(); it != list.end();) {
    auto *scene = dynamic_cast<CScene *>(it->get());
    if (scene && !scene->LoadExternal()) {
      onDrop(scene);
      it = list.erase(it);
    } else {
      ++it;
    }
  }
}
}  // namespace

bool CVelmor::Start(const StartRequest &req) {
  TRACE_SCOPE_LOGGED("CVelmor::Start");
  if (!req.isScreensaver) {
    m_SceneMinRunTime = 10;
    m_SceneMaxRunTime = 30;
  }
  if (!Init()) return false;
  m_Settings = req.settings;
  const std::string defaultName = req.isScreensaver ? "screensaver.vmp" : "music.vmp";
  if (m_Settings.alwaysAdvanceScenes) m_AutoGotoNextScene = true;

  const bool layeredStart = m_Settings.playsLayeredLists && Contains(req.file, ";") &&
                            (m_Settings.recording || !Contains(req.file, ".vmp"));
  if (layeredStart) {
    m_ActiveScene = LoadLayered(req.file);
    m_UpdateCount = 0;
    m_SceneStartTime = GetClock().Milliseconds();
    m_SceneRunTime = 10000.0f;
    return true;
  }

  std::string projectFile = req.file.empty() ? req.projectFile : Expand(req.file);
  std::string path = Expand(projectFile);
  Log("Using the \"%s\" project", path.c_str());
  if (path.empty()) {
    path = Expand("[apppath]projects/" + defaultName);
    Log("Project file is empty. Using \"%s\" instead", path.c_str());
  }
  CSerializeXMLLoad load;
  if (!LoadSceneDocument(path, load)) {
    if (!req.fallBack)
      return Contains(path, ".vmp") ? LogError("Unable to load \"%s\"", path.c_str())
                                    : LogError("Unable to load scene file \"%s\".", path.c_str());
    Log("Unable to load \"%s\" falling back to default project file", path.c_str());
    projectFile = "projects/" + defaultName;
    if (!LoadSceneDocument(projectFile, load)) return LogError("Unable to load \"%s\"", projectFile.c_str());
    path = projectFile;
  }
  if ((m_Settings.recording || !req.file.empty()) && !Contains(path, ".vmp")) m_IsProject = false;
  Serialize(load);
  return true;
}

void CVelmor::Serialize(CSerialize &s) {
  TRACE_SCOPE_LOGGED("CVelmor::Serialize");
  if (s.m_Storing)
    StoreSerialized(s);
  else
    LoadSerialized(s);
}

void CVelmor::LoadSerialized(CSerialize &s) {
  s.EnterElement("Velmor");
  if (m_IsProject) s.m_Mode = SM_ProjectRef;
  std::string wantedFile, wantedName;
  if (m_IsProject) {
    s.EnterElement("Project");
    wantedFile = s.Serialize("ActiveSceneFile", wantedFile);
    wantedName = s.Serialize("ActiveSceneName", wantedName);
    s.LeaveElement();
    Log("WantedScene: '%s' from '%s'", wantedName.c_str(), wantedFile.c_str());
  }

  s.EnterElement("Transitions");
  for (s.FirstChild(); s.HasChild(); s.NextChild()) {
    m_Transitions.push_back(std::make_unique<CTransition>());
    m_Transitions.back()->m_Factory = &*m_NodeFactory;
    s.EnterElement(s.GetChildName().c_str());
    SerializeDagGraph(*m_Transitions.back(), s);
    s.LeaveElement();
  }
  s.LeaveElement();

  s.EnterElement("Scenes");
  for (s.FirstChild(); s.HasChild(); s.NextChild()) {
    auto scene = std::make_unique<CScene>();
    scene->m_Factory = &*m_NodeFactory;
    scene->Serialize(s);
    if (Contains(scene->m_File, ";"))
      AddCompactEntry(std::move(scene));
    else
      m_Scenes.push_back(std::move(scene));
  }
  s.LeaveElement();

  bool anyPool = false;
  const struct {
    const char *section;
    std::list<std::unique_ptr<CScene>> *pool;
    uint32_t type;
  } pools[] = {{"BackgroundScenes", &m_BackgroundScenes, SCENE_Background},
               {"ForegroundScenes", &m_ForegroundScenes, SCENE_Foreground},
               {"PostprocessingScenes", &m_PostprocessingScenes, SCENE_Postprocessing}};
  for (const auto &p : pools) {
    s.EnterElement(p.section);
    for (s.FirstChild(); s.HasChild(); s.NextChild()) {
      anyPool = true;
      p.pool->push_back(std::make_unique<CScene>());
      p.pool->back()->m_Factory = &*m_NodeFactory;
      p.pool->back()->Serialize(s);
      p.pool->back()->m_SceneType = p.type;
    }
    s.LeaveElement();
  }

  LoadExternal();
  Log("Scene count. Standalone: %ld Background: %ld Foreground: %ld Postprocessing: %ld",
      static_cast<long>(m_Scenes.size()), static_cast<long>(m_BackgroundScenes.size()),
      static_cast<long>(m_ForegroundScenes.size()), static_cast<long>(m_PostprocessingScenes.size()));
  PrepareLayeredScenes();
  if (!anyPool) {
    for (auto &entry : m_Scenes)
      if (entry->m_IsLayered) entry->Init();
  } else if (m_Settings.buildsCombinations) {
    BuildCombinations();
  }

  m_SceneIndex = 0;
  if (m_IsProject) m_ActiveScene = FindScene(wantedFile, wantedName, &m_SceneIndex);
  if (!m_ActiveScene && !m_Scenes.empty())
    m_ActiveScene = ActivateAnotherScene(m_RandomizeScene ? CHANGE_Random : CHANGE_Index, 0, false, false);
  else if (m_IsProject && m_ActiveScene)
    m_ActiveScene = ActivateAnotherScene(CHANGE_Index, m_SceneIndex, false, false);
  s.LeaveElement();
}

void CVelmor::AddCompactEntry(std::unique_ptr<CScene> scene) {
  std::vector<std::string> files = SplitLayers(scene->m_File);
  CScene *layers[3] = {nullptr, nullptr, nullptr};
  const float runTime = scene->m_ShowTimeMax;
  scene->m_File = files.size() > 0 ? files[0] : std::string();
  scene->m_Name.clear();
  scene->m_SceneType = SCENE_Background;
  layers[0] = scene.get();
  m_BackgroundScenes.push_back(std::move(scene));
  std::list<std::unique_ptr<CScene>> *pools[3] = {&m_BackgroundScenes, &m_ForegroundScenes, &m_PostprocessingScenes};
  const uint32_t types[3] = {SCENE_Background, SCENE_Foreground, SCENE_Postprocessing};
  for (size_t i = 1; i < 3 && i < files.size(); ++i) {
    auto layer = std::make_unique<CScene>();
    layer->m_Factory = &*m_NodeFactory;
    layer->m_File = files[i];
    layer->m_SceneType = types[i];
    layers[i] = layer.get();
    pools[i]->push_back(std::move(layer));
  }
  auto layered = std::make_unique<CSceneLayered>(layers[0], layers[1], layers[2]);
  layered->m_ShowTimeMax = runTime;
  m_Scenes.push_back(std::move(layered));
}

void CVelmor::DropLayer(const CScene *scene) {
  // A layered entry must not keep a pool scene that failed to load.
  for (auto &entry : m_Scenes)
    if (auto *layered = dynamic_cast<CSceneLayered *>(entry.get())) layered->Forget(scene);
}

void CVelmor::LoadExternal() {
  auto drop = [this](const CScene *scene) { DropLayer(scene); };
  RemoveFailed(m_Scenes, drop);
  RemoveFailed(m_BackgroundScenes, drop);
  RemoveFailed(m_ForegroundScenes, drop);
  RemoveFailed(m_PostprocessingScenes, drop);
}

void CVelmor::StoreSerialized(CSerialize &s) {
  s.EnterElement("Velmor");
  if (m_IsProject) {
    s.m_Mode = SM_ProjectRef;
    s.EnterElement("Project");
    if (m_ActiveScene) {
      s.Serialize("ActiveSceneFile", m_ActiveScene->GetFile());
      s.Serialize("ActiveSceneName", m_ActiveScene->GetName());
    }
    s.LeaveElement();
  }
  s.EnterElement("Transitions");
  for (auto &t : m_Transitions) {
    if (!t->m_Save) continue;
    s.EnterElement("Transition");
    SerializeDagGraph(*t, s);
    s.LeaveElement();
  }
  s.LeaveElement();
  s.EnterElement("Scenes");
  for (auto &entry : m_Scenes)
    if (auto *scene = dynamic_cast<CScene *>(entry.get()); scene && scene->m_Save) scene->Serialize(s);
  s.LeaveElement();
  s.LeaveElement();
}

CScene *CVelmor::LoadScene(const std::string &path) {
  CSerializeXMLLoad load;
  switch (LoadFirstScene(path, load)) {
    case SCENEDOC_Unreadable: LogError("Failed to load '%s'. File missing.", path.c_str()); return nullptr;
    case SCENEDOC_NoScene: LogError("Failed to load '%s'. Scene corrupt/invalid.", path.c_str()); return nullptr;
    case SCENEDOC_Ok: break;
  }
  auto *scene = new CScene;
  scene->m_Factory = &*m_NodeFactory;
  scene->m_File = path;
  scene->Serialize(load);
  return scene;
}

bool CVelmor::AddScene(const std::string &path) {
  CScene *scene = LoadScene(path);
  if (!scene) return false;
  m_Scenes.emplace_back(scene);
  return true;
}

bool CVelmor::RemoveScene(const std::string &file, const std::string &name) {
  CSceneBase *scene = FindScene(file, name, nullptr);
  if (!scene) return LogError("Delete failed. Unable to find '%s' from '%s'", name.c_str(), file.c_str());
  if (scene == m_ActiveScene) SetActiveScene(nullptr);
  if (scene == m_Outgoing) EndHandOver();
  m_Scenes.remove_if([&](const std::unique_ptr<CSceneBase> &s) { return s.get() == scene; });
  return true;
}

CSceneLayered *CVelmor::LoadLayered(const std::string &list) {
  const size_t i1 = list.find(';');
  const size_t i2 = i1 == std::string::npos ? std::string::npos : list.find(';', i1 + 1);
  const std::string background = Expand(list.substr(0, i1));
  const std::string foreground =
      (i1 != std::string::npos && i2 != std::string::npos) ? Expand(list.substr(i1 + 1, i2 - i1 - 1)) : std::string();
  // Without a second ";" the last field is the whole list, as a host that
  // writes one separator only asks for background and postprocessing.
  const std::string postprocessing = Expand(i2 == std::string::npos ? list : list.substr(i2 + 1));

  CScene *layers[3] = {nullptr, nullptr, nullptr};
  std::list<std::unique_ptr<CScene>> *pools[3] = {&m_BackgroundScenes, &m_ForegroundScenes, &m_PostprocessingScenes};
  const uint32_t types[3] = {SCENE_Background, SCENE_Foreground, SCENE_Postprocessing};
  const std::string *files[3] = {&background, &foreground, &postprocessing};
  for (int i = 0; i < 3; ++i) {
    if (i > 0 && files[i]->empty()) continue;
    if (CScene *scene = LoadScene(*files[i])) {
      scene->m_SceneType = types[i];
      layers[i] = scene;
      pools[i]->emplace_back(scene);
    }
  }
  PrepareLayeredScenes();
  auto *layered = new CSceneLayered(layers[0], layers[1], layers[2]);
  layered->Init();
  m_Scenes.emplace_back(layered);
  return layered;
}

void CVelmor::SerializeSettings(CSerialize &s, bool isScreensaver) {
  if (!isScreensaver && !s.m_Storing) {
    m_SceneMinRunTime = 10;
    m_SceneMaxRunTime = 20;
    m_CaptureSound = false;
  }
  m_SceneMinRunTime = s.Serialize("SceneMinRunTime", m_SceneMinRunTime);
  m_SceneMaxRunTime = s.Serialize("SceneMaxRunTime", m_SceneMaxRunTime);
  m_AutoGotoNextScene = s.Serialize("AutoGotoNextScene", m_AutoGotoNextScene);
  m_RandomizeScene = s.Serialize("RandomizeScene", m_RandomizeScene);
  m_CaptureSound = s.Serialize("CaptureSound", m_CaptureSound);
  m_MaxSilenceTime = s.Serialize("MaxSilenceTime", m_MaxSilenceTime);
  Log("Config: %ld %ld %ld %ld %ld %ld", static_cast<long>(m_RandomizeScene), static_cast<long>(m_AutoGotoNextScene),
      static_cast<long>(m_SceneMinRunTime), static_cast<long>(m_SceneMaxRunTime), static_cast<long>(m_CaptureSound),
      static_cast<long>(m_MaxSilenceTime));
}
