#pragma once
// Scene and project files for the layer tests, in a temporary application
// folder that "[apppath]" points at.

#include <string>
#include <vector>

#include "core/Paths.h"
#include "nodes/BuiltinNodes.h"
#include "support/TempDir.h"

struct LayerSceneSpec {
  std::string name;
  std::vector<std::string> good, bad;
  std::string nodes, connections;
};

inline std::string LayerSceneText(const LayerSceneSpec &s) {
  auto list = [](const std::vector<std::string> &names) {
    std::string text;
    for (const auto &n : names) text += "<Scene Name=\"" + n + "\"/>";
    return text;
  };
  return "<Velmor><Transitions/><Scenes><Scene Name=\"" + s.name + "\"><Nodes>" + s.nodes + "</Nodes><Connections>" +
         s.connections + "</Connections><SceneCompatibility><GoodScenes>" + list(s.good) + "</GoodScenes><BadScenes>" +
         list(s.bad) + "</BadScenes></SceneCompatibility></Scene></Scenes></Velmor>";
}

// A chain Screen <- Clear of one color.
inline LayerSceneSpec ClearScene(const std::string &name, const std::string &color) {
  return {name, {}, {}, "<Node Type=\"Screen\" Name=\"Screen1\"/><Node Type=\"Clear\" Name=\"Clear1\" Color=\"" + color + "\"/>",
          "<Connection Out=\"Clear1.Render\" In=\"Screen1.Render\"/>"};
}

class LayerFiles {
 public:
  // Constructed before the engine, so that its factory knows the built-in types.
  LayerFiles() {
    InstallBuiltinNodes();
    SetAppPaths(dir / "app", dir / "user");
  }
  ~LayerFiles() { SetAppPaths(".", "."); }

  // Writes scenes/<name>.vms and returns its "[apppath]" form.
  std::string Scene(const LayerSceneSpec &sceneDesc) const {
    dir.Write("app/scenes/" + sceneDesc.name + ".vms", LayerSceneText(sceneDesc));
    return "[apppath]scenes/" + sceneDesc.name + ".vms";
  }
  // A project with the standalone scenes and the three pools, by file.
  std::string Project(const std::vector<std::string> &scenes, const std::vector<std::string> &backgrounds,
                      const std::vector<std::string> &foregrounds = {},
                      const std::vector<std::string> &postprocessing = {}) const {
    auto entries = [](const char *section, const std::vector<std::string> &files) {
      std::string text = std::string("<") + section + ">";
      for (const auto &f : files) text += "<Scene File=\"" + f + "\"/>";
      return text + "</" + section + ">";
    };
    return dir.Write("app/projects/layers.vmp",
                     "<Velmor><Project ActiveSceneFile=\"\" ActiveSceneName=\"\"/><Transitions/>" +
                         entries("Scenes", scenes) + entries("BackgroundScenes", backgrounds) +
                         entries("ForegroundScenes", foregrounds) + entries("PostprocessingScenes", postprocessing) +
                         "</Velmor>");
  }

  TempDir dir;
};
