#pragma once
// What the engine's play list holds: a scene, or a stack of layers that
// behaves as one scene to the scheduler.

#include <string>

class CRender;

class CSceneBase {
 public:
  virtual ~CSceneBase() = default;
  virtual bool Init() = 0;
  virtual void Update(float dt) = 0;
  virtual void FrameFinished() = 0;
  virtual void ForceUpdate() = 0;
  virtual bool RestoreDevice(CRender *render) = 0;
  virtual void InvalidateDevice(CRender *render) = 0;
  virtual void Draw(CRender *render) = 0;
  // Readies device objects for the next Draw for about `budgetMs`
  // milliseconds; true when nothing is left to ready.
  virtual bool PrepareDevice(CRender *render, double budgetMs) = 0;
  virtual void Activate() = 0;
  virtual std::string GetFile() const = 0;
  virtual std::string GetName() const = 0;
  // Seconds on the scene's own clock.
  virtual float GetTime() const = 0;
  virtual void Deactivate() = 0;
  // 0: must not be combined, 1: no opinion, 2: good together.
  virtual int GetCompatibility(const CSceneBase *) const { return 1; }

  bool m_IsLayered = false;
  float m_RandomProbability = 1.0f;
  float m_ShowTimeMax = 0.0f;  // own run time in seconds; 0 for none
};

enum SceneTypeBits {
  SCENE_Background = 1,
  SCENE_Foreground = 2,
  SCENE_Postprocessing = 4,
  SCENE_Standalone = 0x100,
};
