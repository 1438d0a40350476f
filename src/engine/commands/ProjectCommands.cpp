// Project and scene commands: load, save, create and pick what plays.
#include <cstdio>
#include <cstdlib>

#include "core/Paths.h"
#include "engine/Velmor.h"
#include "engine/commands/Commands.h"
#include "scene/Node.h"
#include "scene/Scene.h"
#include "scene/SceneDocument.h"
#include "scene/SerializeXML.h"

namespace {
constexpr const char *kNoScene = "A scene with that name doesn't exists";

bool Contains(const std::string &s, const char *what) { return s.find(what) != std::string::npos; }

void ActivateAndRun(CVelmor &v, CSceneBase *scene) {
  v.SetActiveScene(scene);
  if (v.m_ActiveScene) v.m_ActiveScene->ForceUpdate();
  v.Update(0.0f);
}

void SaveTo(CVelmor &v, const std::string &file) {
  CSerializeXMLStore store(file);
  v.Serialize(store);
}

CommandResult ProjectCreate(CScriptEngine &e, XmlElement &, CVelmor *v) {
  v->Free();
  return Answer(e, XmlElement("ProjectCreated"));
}

CommandResult ProjectLoad(CScriptEngine &e, XmlElement &r, CVelmor *v) {
  const std::string file = r.Get("Filename");
  v->SetActiveScene(nullptr);
  CSerializeXMLLoad load;
  if (!LoadSceneDocument(Expand(file), load)) return CommandFailed("Load failed");
  if (Contains(file, ".vms")) v->m_IsProject = false;
  v->Serialize(load);
  // The host addresses every scene of what it loaded by the name it loaded.
  for (auto &entry : v->m_Scenes)
    if (auto *scene = dynamic_cast<CScene *>(entry.get())) scene->m_File = file;
  if (v->m_ActiveScene) v->m_ActiveScene->ForceUpdate();
  v->Update(0.0f);
  return Answer(e, Reply("ProjectLoaded", r, {"Filename"}));
}

CommandResult ProjectSave(CScriptEngine &e, XmlElement &r, CVelmor *v) {
  SaveTo(*v, r.Get("Filename"));
  return Answer(e, Reply("ProjectSaved", r, {"Filename"}));
}

CommandResult SceneCreate(CScriptEngine &e, XmlElement &r, CVelmor *v) {
  v->m_IsProject = false;
  std::string name = r.Get("Name");
  if (!name.empty() && v->FindScene("", name, nullptr)) return CommandFailed("A scene with that name already exists");
  for (long i = 1; name.empty() && i <= 99; ++i) {
    char generated[32];
    snprintf(generated, sizeof(generated), "NewScene%ld", i);
    if (!v->FindScene("", generated, nullptr) || i == 99) name = generated;
  }
  const std::string templateFile = r.Get("Template");
  CScene *scene = nullptr;
  if (templateFile.empty()) {
    scene = new CScene;
    scene->m_Factory = &*v->m_NodeFactory;
    scene->m_SceneType = SCENE_Standalone;
    const char *nodes[][2] = {{"Screen", "Screen1"}, {"Clear", "Clear1"}};
    for (const auto &[type, nodeName] : nodes)
      if (CNode *node = scene->AddNode(type)) node->m_Name = nodeName;
    scene->CreateConnection("Clear1.Render", "Screen1.Render");
  } else {
    scene = v->LoadScene(Expand(templateFile));
    if (!scene) return CommandFailed("Failed to load the template");
    scene->m_File.clear();
    scene->m_Created = scene->m_LastModified = SceneDateNow();
    scene->m_SceneType &= ~0x800u;
    scene->m_Version = 0;
    scene->m_Elapsed = 0.0f;
  }
  scene->m_Name = name;
  v->m_Scenes.emplace_back(scene);
  return Answer(e, XmlElement("SceneCreated").Set("Name", name));
}

CommandResult SceneLoad(CScriptEngine &e, XmlElement &r, CVelmor *v) {
  v->m_IsProject = false;
  const std::string file = r.Get("File");
  if (!Contains(file, ";")) {
    if (!v->AddScene(file)) return CommandFailed("Failed to load the scene");
  } else {
    v->LoadLayered(file);
  }
  if (atoi(r.Get("FreeOld").c_str()) != 0 && v->m_ActiveScene)
    v->RemoveScene(v->m_ActiveScene->GetFile(), v->m_ActiveScene->GetName());
  return Answer(e, Reply("SceneLoaded", r, {"File", "Name"}));
}

CommandResult SceneRemove(CScriptEngine &e, XmlElement &r, CVelmor *v) {
  if (!v->RemoveScene(r.Get("File"), r.Get("Name"))) return CommandFailed("A scene with that name/file doesn't exists");
  XmlElement reply = Reply("SceneRemoved", r, {"File"});
  if (!r.Get("Name").empty()) reply.Set("Name", r.Get("Name"));
  return Answer(e, reply);
}

void MarkForSaving(CVelmor &v, const std::function<bool(const CScene &)> &wanted) {
  for (auto &entry : v.m_Scenes)
    if (auto *scene = dynamic_cast<CScene *>(entry.get())) scene->m_Save = wanted(*scene);
}

CommandResult SceneSave(CScriptEngine &e, XmlElement &r, CVelmor *v) {
  v->m_IsProject = false;
  const std::string file = r.Get("File"), name = r.Get("Name");
  MarkForSaving(*v, [&](const CScene &s) { return (name.empty() || name == s.m_Name) && file == s.m_File; });
  SaveTo(*v, r.Get("DiskFile"));
  MarkForSaving(*v, [](const CScene &) { return true; });
  return Answer(e, Reply("SceneSaved", r, {"File", "Name", "DiskFile"}));
}

CommandResult ScenesSave(CScriptEngine &e, XmlElement &r, CVelmor *v) {
  v->m_IsProject = false;
  SaveTo(*v, r.Get("File"));
  return Answer(e, Reply("ScenesSaved", r, {"File"}));
}

CommandResult SceneActivate(CScriptEngine &e, XmlElement &r, CVelmor *v) {
  CSceneBase *scene = v->FindScene(r.Get("File"), r.Get("Name"), nullptr);
  if (!scene) return CommandFailed(kNoScene);
  ActivateAndRun(*v, scene);
  return Answer(e, Reply("SceneActivated", r, {"File", "Name"}));
}

CommandResult SceneActive(CScriptEngine &e, XmlElement &, CVelmor *v) {
  const CSceneBase *active = v->m_ActiveScene;
  return Answer(e, XmlElement("SceneActivated")
                       .Set("File", active ? active->GetFile() : std::string())
                       .Set("Name", active ? active->GetName() : std::string()));
}

CommandResult ScenesGet(CScriptEngine &e, XmlElement &, CVelmor *v) {
  XmlElement scenes("Scenes");
  for (const auto &s : v->m_Scenes) scenes.Add(XmlElement("Scene").Set("File", s->GetFile()).Set("Name", s->GetName()));
  return Answer(e, scenes);
}

CScene *FindGraph(CVelmor &v, const XmlElement &r) {
  return dynamic_cast<CScene *>(v.FindScene(r.Get("File"), r.Get("Name"), nullptr));
}

CommandResult SceneGet(CScriptEngine &e, XmlElement &r, CVelmor *v) {
  CScene *scene = FindGraph(*v, r);
  if (!scene) return CommandFailed(kNoScene);
  XmlElement scratch = StoreToXmlElement("Scratch", SM_SceneRef, [scene](CSerialize &s) { scene->Serialize(s); });
  if (scratch.children.empty()) return CommandFailed(kNoScene);
  return Answer(e, scratch.children.front());
}

CommandResult SceneUpdate(CScriptEngine &e, XmlElement &r, CVelmor *v) {
  CScene *scene = FindGraph(*v, r);
  if (!scene) return CommandFailed(kNoScene);
  const std::string oldFile = scene->m_File;
  if (r.Has("NewName")) scene->m_Name = r.Get("NewName");
  if (r.Has("Author")) scene->m_Author = r.Get("Author");
  if (r.Has("Desc")) scene->m_Desc = r.Get("Desc");
  if (r.Has("WarmupTime")) scene->m_WarmupTime = static_cast<float>(atof(r.Get("WarmupTime").c_str()));
  if (r.Has("SceneType")) scene->m_SceneType = static_cast<uint32_t>(strtoul(r.Get("SceneType").c_str(), nullptr, 10));
  if (r.Has("NewFile")) scene->m_File = r.Get("NewFile");
  if (scene->m_File != oldFile) {
    scene->m_Version = 0;
    scene->m_Created = scene->m_LastModified = SceneDateNow();
  }
  XmlElement reply = Reply("SceneUpdated", r, {"File", "Name", "NewFile", "NewName", "Author", "Desc"});
  reply.Set("Created", FormatSceneDate(scene->m_Created))
      .Set("LastModified", FormatSceneDate(scene->m_LastModified))
      .Set("Version", std::to_string(scene->m_Version))
      .Set("WarmupTime", r.Get("WarmupTime"))
      .Set("SceneType", r.Get("SceneType"));
  return Answer(e, reply);
}

const CommandEntry kCommands[] = {
    {"ProjectCreate", ProjectCreate}, {"ProjectLoad", ProjectLoad},   {"ProjectSave", ProjectSave},
    {"SceneCreate", SceneCreate},     {"SceneLoad", SceneLoad},       {"SceneRemove", SceneRemove},
    {"SceneSave", SceneSave},         {"ScenesSave", ScenesSave},     {"SceneActivate", SceneActivate},
    {"SceneActive", SceneActive},     {"ScenesGet", ScenesGet},       {"SceneGet", SceneGet},
    {"SceneUpdate", SceneUpdate},
};
}  // namespace

std::span<const CommandEntry> ProjectCommands() { return kCommands; }
