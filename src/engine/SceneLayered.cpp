#include "engine/SceneLayered.h"

#include "nodes/texture/PreviousLayerNode.h"
#include "render/Render.h"
#include "scene/Node.h"
#include "scene/NodeInfo.h"
#include "scene/Scene.h"

CSceneLayered::CSceneLayered(CScene *background, CScene *foreground, CScene *postprocessing)
    : m_Background(background), m_Foreground(foreground), m_Postprocessing(postprocessing) {
  m_IsLayered = true;
  m_RandomProbability = 0.25f;
}

template <typename F>
void CSceneLayered::EachLayer(F f) const {
  for (CScene *s : {m_Background, m_Foreground, m_Postprocessing})
    if (s) f(*s);
}

bool CSceneLayered::Init() {
  m_PreviousLayer = nullptr;
  if (m_Postprocessing)
    for (CNode *n : m_Postprocessing->m_Nodes)
      if (n->m_Info && n->m_Info->m_TypeName == "PreviousLayer")
        if (auto *layer = dynamic_cast<CPreviousLayerNode *>(n)) m_PreviousLayer = layer;
  return true;
}

void CSceneLayered::Update(float dt) {
  EachLayer([&](CScene &s) { s.Update(dt); });
}
void CSceneLayered::FrameFinished() {
  EachLayer([](CScene &s) { s.FrameFinished(); });
}
void CSceneLayered::ForceUpdate() {
  EachLayer([](CScene &s) { s.ForceUpdate(); });
}
bool CSceneLayered::RestoreDevice(CRender *render) {
  EachLayer([&](CScene &s) { s.RestoreDevice(render); });
  return true;
}
void CSceneLayered::InvalidateDevice(CRender *render) {
  EachLayer([&](CScene &s) { s.InvalidateDevice(render); });
}
bool CSceneLayered::PrepareDevice(CRender *render, double budgetMs) {
  for (CScene *s : {m_Background, m_Foreground, m_Postprocessing})
    if (s && !s->PrepareDevice(render, budgetMs)) return false;
  return true;
}
void CSceneLayered::Activate() {
  EachLayer([](CScene &s) { s.Activate(); });
}
void CSceneLayered::Deactivate() {
  EachLayer([](CScene &s) { s.Deactivate(); });
}

void CSceneLayered::Draw(CRender *render) {
  // The postprocessing scene sees the layers below only through its
  // PreviousLayer node's target; without that node it is not drawn. When no
  // target can be had the layers go to the screen as they are.
  const bool postprocess = m_Postprocessing && m_PreviousLayer && m_PreviousLayer->BeginLayer(render);
  if (m_Background) m_Background->Draw(render);
  if (m_Foreground) {
    // Depth only: the foreground paints over the background's colors but
    // must not be cut by its depth.
    const float black[4] = {0, 0, 0, 1};
    render->Clear(black, 1.0f, CLEAR_Depth);
    m_Foreground->Draw(render);
  }
  if (!postprocess) return;
  m_PreviousLayer->EndLayer(render);
  m_Postprocessing->Draw(render);
  m_PreviousLayer->FreeLayer(render);
}

std::string CSceneLayered::GetFile() const {
  auto file = [](const CScene *s) { return s ? s->GetFile() : std::string(); };
  return file(m_Background) + ";" + file(m_Foreground) + ";" + file(m_Postprocessing);
}

float CSceneLayered::GetTime() const {
  for (const CScene *layer : {m_Background, m_Foreground, m_Postprocessing})
    if (layer) return layer->GetTime();
  return 0.0f;
}

std::string CSceneLayered::GetName() const {
  auto name = [](const CScene *s) { return s ? s->GetName() : std::string(); };
  return name(m_Background) + "-" + name(m_Foreground) + "-" + name(m_Postprocessing);
}

bool CSceneLayered::Uses(const CScene *scene) const {
  return scene && (scene == m_Background || scene == m_Foreground || scene == m_Postprocessing);
}

void CSceneLayered::Forget(const CScene *scene) {
  if (scene == m_Background) m_Background = nullptr;
  if (scene == m_Foreground) m_Foreground = nullptr;
  if (scene == m_Postprocessing) m_Postprocessing = nullptr;
}

bool CSceneLayered::IsNeighbour(const CSceneLayered *active) const {
  if (!active) return false;
  auto same = [](const CScene *a, const CScene *b) { return a && b && a->GetFile() == b->GetFile(); };
  return same(m_Background, active->m_Background) != same(m_Foreground, active->m_Foreground);
}
