#pragma once
// A scene: a graph with a file, a play time and the scenes it goes well or
// badly with. Reads and writes the Scene element of scene and project files.

#include <string>
#include <vector>

#include "scene/Dag.h"
#include "scene/SceneBase.h"

class CSerialize;

class CScene : public CDag, public CSceneBase {
 public:
  bool Init() override { return true; }
  void Update(float dt) override { CDag::Update(dt); }
  void FrameFinished() override { CDag::FrameFinished(); }
  void ForceUpdate() override { CDag::ForceUpdate(); }
  bool RestoreDevice(CRender *render) override { return CDag::RestoreDevice(render); }
  void InvalidateDevice(CRender *render) override { CDag::InvalidateDevice(render); }
  void Draw(CRender *render) override { CDag::Draw(render); }
  bool PrepareDevice(CRender *render, double budgetMs) override { return CDag::PrepareDevice(render, budgetMs); }
  void Activate() override { CDag::Activate(); }
  void Deactivate() override { CDag::Deactivate(); }
  std::string GetFile() const override { return m_File; }
  std::string GetName() const override { return m_Name; }
  float GetTime() const override { return m_FrameInfo.Time; }
  int GetCompatibility(const CSceneBase *other) const override;

  void Serialize(CSerialize &serializer);
  // The part transitions share: the attributes and the nodes.
  void SerializeGraph(CSerialize &serializer);
  // Reads the first Scene of the file in m_File; true at once when there is none.
  bool LoadExternal();

  std::vector<std::string> m_GoodScenes;
  std::vector<std::string> m_BadScenes;
};

// The graph part of a scene (attributes and nodes), for transitions too.
void SerializeDagGraph(CDag &dag, CSerialize &serializer);
// "YYYYMMDD hh:mm" in UTC, and back; a text under 14 characters is "not set".
std::string FormatSceneDate(const SceneDate &date);
SceneDate ParseSceneDate(const std::string &text);
// The current UTC time as a scene date.
SceneDate SceneDateNow();

// A graph loaded from a project that is kept and written back but never run.
class CTransition : public CDag {};
