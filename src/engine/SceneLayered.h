#pragma once
// Up to three scenes (background, foreground, postprocessing) that play as
// one entry of the play list. The scenes belong to the engine's pools.

#include "scene/SceneBase.h"

class CScene;
class CPreviousLayerNode;

class CSceneLayered : public CSceneBase {
 public:
  CSceneLayered(CScene *background, CScene *foreground, CScene *postprocessing);

  bool Init() override;
  void Update(float dt) override;
  void FrameFinished() override;
  void ForceUpdate() override;
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;
  void Draw(CRender *render) override;
  // One layer after the other, each with the budget.
  bool PrepareDevice(CRender *render, double budgetMs) override;
  void Activate() override;
  std::string GetFile() const override;
  std::string GetName() const override;
  // The first layer's clock.
  float GetTime() const override;
  void Deactivate() override;

  // Exactly one of background and foreground is the same file as in
  // `active`: moving there changes one layer at a time.
  bool IsNeighbour(const CSceneLayered *active) const;

  // Whether `scene` is one of the three layers (a pool entry going away).
  bool Uses(const CScene *scene) const;
  void Forget(const CScene *scene);

  CScene *m_Background, *m_Foreground, *m_Postprocessing;
  CPreviousLayerNode *m_PreviousLayer = nullptr;

 private:
  template <typename F>
  void EachLayer(F f) const;
};
