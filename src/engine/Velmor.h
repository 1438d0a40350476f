#pragma once
// The engine: owns every loaded scene, knows which one plays, decides when
// the next one starts and which it is, and reads and writes projects.

#include <functional>
#include <list>
#include <memory>
#include <string>

#include "engine/EngineInterface.h"
#include "engine/EngineServices.h"
#include "engine/SceneChoice.h"
#include "engine/ScriptEngine.h"
#include "core/RunMode.h"
#include "scene/NodeFactory.h"

class CSceneBase;
class CScene;
class CSceneLayered;
class CTransition;
class CSerialize;
class CSerializeXMLLoad;

class CVelmor : public IVelmorEngine {
 public:
  CVelmor();
  ~CVelmor() override;

  bool Init();
  void Free();
  // Chooses and loads what to play: a layered list, a scene file or a project
  // with its fall-back to the default project.
  bool Start(const StartRequest &request) override;

  bool Update(float dt) override;
  bool Draw(CRender *render) override;
  bool FrameFinished() override;
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;
  std::string ActiveSceneName() const override;
  const CSceneBase *ActiveScene() const override { return m_ActiveScene; }
  void SerializeSettings(CSerialize &serializer, bool isScreensaver) override;
  void SetRender(CRender *render) override { m_Render = render; }

  CSceneBase *ActivateAnotherScene(int mode, int index, bool activate, bool tooSlow);
  void SetActiveScene(CSceneBase *scene);
  CSceneBase *FindScene(const std::string &file, const std::string &name, int *indexOut);

  void Serialize(CSerialize &serializer);
  void LoadExternal();
  CScene *LoadScene(const std::string &path);
  bool AddScene(const std::string &path);
  bool RemoveScene(const std::string &file, const std::string &name);
  CSceneLayered *LoadLayered(const std::string &list);
  // Strips the foreground pool's Clear nodes; running it twice is harmless.
  void PrepareLayeredScenes();
  // Appends a layered entry unless two of its scenes refuse each other.
  // `background` is required; the others may be null.
  bool AddCombination(CScene *background, CScene *foreground, CScene *postprocessing);
  // Every background x foreground x postprocessing combination the pools
  // allow, weighed against the standalone entries; at most
  // MaxLayerCombinations of them, evenly sampled.
  void BuildCombinations();
  static constexpr size_t MaxLayerCombinations = 4096;

  // Host commands: queued from any thread, run in Update; replies as one
  // line of XML, root vms.
  bool AddCommands(const std::string &text) { return m_Script->AddCommands(text); }
  std::string GetReplies() { return m_Script->GetReplies(); }

  void GetPresetName(int index, char *out) override;
  int GetPresetCount() override;
  void SelectPreset(int index) override;
  int GetCurrentPreset() override { return m_SceneIndex; }
  void NextPreset() override;
  void PreviousPreset() override;
  void SetAutoChange(bool enabled, bool changeNow) override;
  void MenuSelected(int id) override;
  void ReactivateScene() override;
  void OpenConfiguration() override;

  std::list<std::unique_ptr<CTransition>> m_Transitions;
  std::list<std::unique_ptr<CSceneBase>> m_Scenes;
  std::list<std::unique_ptr<CScene>> m_BackgroundScenes;
  std::list<std::unique_ptr<CScene>> m_ForegroundScenes;
  std::list<std::unique_ptr<CScene>> m_PostprocessingScenes;
  CSceneBase *m_ActiveScene = nullptr;
  // The scene that stays on screen after a switch while the new active one
  // readies its device objects a few milliseconds a frame; null when none.
  CSceneBase *m_Outgoing = nullptr;
  int m_HandOverFrames = 0;
  // Milliseconds a frame spends readying the new scene; 0 switches at once.
  double m_HandOverBudgetMs = 4.0;
  // However slow the readying, the new scene shows after these many frames.
  static constexpr int MaxHandOverFrames = 30;
  CNodeFactoryRef m_NodeFactory;
  bool m_IsProject = true;
  bool m_AutoGotoNextScene = true;
  bool m_RandomizeScene = true;
  bool m_CaptureSound = true;
  int m_MaxSilenceTime = 10;
  int m_UpdateCount = 0;
  uint32_t m_SceneStartTime = 0;
  float m_SceneRunTime = 0.0f;
  int m_SceneMinRunTime = 10;
  int m_SceneMaxRunTime = 30;
  int m_SceneIndex = 0;
  bool m_NodesRegistered = false;
  float m_TotalProbability = 0.0f;

  // What the host's mode means here (scene timing, who feeds sound), and
  // the renderer that device objects live on.
  RunSettings m_Settings;
  CRender *m_Render = nullptr;
  // Parts reached through hooks: sound analysis, statistics, host commands,
  // effect node registration, and the sound settings.
  std::function<void()> m_UpdateSound;
  std::function<void(bool capture, int maxSilence)> m_ConfigureSound;
  std::function<void(CNodeFactory &)> m_RegisterEffectNodes;
  IStats *m_Stats;
  ICommandRunner *m_Commands;
  // The host's frame cap (0: none) and how to change it, for the
  // configuration commands; unset where there is none.
  std::function<float()> m_GetMaxFps;
  std::function<void(float maxFps)> m_SetMaxFps;

 private:
  void LoadSerialized(CSerialize &s);
  void StoreSerialized(CSerialize &s);
  void AddCompactEntry(std::unique_ptr<CScene> scene);
  void DropLayer(const CScene *scene);
  int StandaloneIndex(int presetIndex) const;
  // Releases the outgoing scene's device objects, except those of layers
  // the active entry plays too.
  void EndHandOver();

  IStats m_NoStats;
  CScriptEngineRef m_Script;
};
