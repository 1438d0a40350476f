// Layers: what the foreground pool may not keep, and the play list entries
// the three pools combine into.
#include <algorithm>
#include <memory>
#include <unordered_set>
#include <vector>

#include "core/Log.h"
#include "engine/SceneLayered.h"
#include "engine/Velmor.h"
#include "scene/Node.h"
#include "scene/NodeInfo.h"
#include "scene/Port.h"
#include "scene/Scene.h"

namespace {
// Removes every Clear node that feeds `node` through render ports, in all
// chains. True when `node` itself was a Clear and is gone. A node already
// walked has no Clear upstream any more; skipping it also ends a cycle that a
// broken file might hold.
bool RemoveClear(CScene &scene, CNode *node, std::unordered_set<CNode *> &walked) {
  if (node->m_Info && node->m_Info->m_TypeName == "Clear") return scene.RemoveNode(node->m_Name.c_str());
  if (!walked.insert(node).second) return false;
  for (size_t i = 0; i < node->m_InPorts.size(); ++i) {
    CPort *port = node->m_InPorts[i];
    if (!port->IsConnected() || port->m_Type != PT_Render) continue;
    // A removal disconnects this port: look at the list again from the start.
    if (RemoveClear(scene, port->m_Source->m_Node, walked)) i = static_cast<size_t>(-1);
  }
  return false;
}

// The pool as the loops see it: an empty pool is the one value "no layer".
std::vector<CScene *> Choices(const std::list<std::unique_ptr<CScene>> &pool) {
  std::vector<CScene *> choices;
  for (const auto &scene : pool) choices.push_back(scene.get());
  if (choices.empty()) choices.push_back(nullptr);
  return choices;
}
}  // namespace

void CVelmor::PrepareLayeredScenes() {
  // A foreground paints over the background: a Clear of its own would wipe it.
  for (auto &scene : m_ForegroundScenes)
    if (scene->m_Screen) {
      std::unordered_set<CNode *> walked;
      RemoveClear(*scene, scene->m_Screen, walked);
    }
}

bool CVelmor::AddCombination(CScene *background, CScene *foreground, CScene *postprocessing) {
  const int c1 = background->GetCompatibility(foreground);
  const int c2 = background->GetCompatibility(postprocessing);
  const int c3 = foreground        ? foreground->GetCompatibility(postprocessing)
                 : postprocessing ? postprocessing->GetCompatibility(nullptr)
                                  : 1;
  if (c1 == 0 || c2 == 0 || c3 == 0) return false;
  auto layered = std::make_unique<CSceneLayered>(background, foreground, postprocessing);
  layered->m_RandomProbability = (c1 == 2 || c2 == 2 || c3 == 2) ? 3.0f : 1.0f;
  layered->Init();
  m_Scenes.push_back(std::move(layered));
  return true;
}

void CVelmor::BuildCombinations() {
  std::vector<CScene *> backgrounds;
  for (const auto &background : m_BackgroundScenes) backgrounds.push_back(background.get());
  const std::vector<CScene *> foregrounds = Choices(m_ForegroundScenes);
  const std::vector<CScene *> postprocessings = Choices(m_PostprocessingScenes);
  // The pools multiply: a few hundred entries in each would make millions.
  // Past the limit an even sample keeps the order, background slowest.
  const size_t perBackground = foregrounds.size() * postprocessings.size();
  const size_t total = backgrounds.size() * perBackground;
  const size_t kept = std::min(total, MaxLayerCombinations);
  if (kept < total)
    LogError("The project's pools make %zu layer combinations, more than %zu: an even sample of %zu is kept", total,
             MaxLayerCombinations, kept);
  for (size_t k = 0; k < kept; ++k) {
    const size_t i = static_cast<size_t>(static_cast<double>(k) * static_cast<double>(total) / static_cast<double>(kept));
    AddCombination(backgrounds[i / perBackground], foregrounds[i % perBackground / postprocessings.size()],
                   postprocessings[i % postprocessings.size()]);
  }

  long layered = 0;
  for (const auto &entry : m_Scenes) layered += entry->m_IsLayered ? 1 : 0;
  // All layered entries together weigh as much as the backgrounds would as
  // standalone scenes, however many combinations the pools multiply out to.
  const float share = static_cast<float>(m_BackgroundScenes.size()) / static_cast<float>(layered);
  Log("Layered scene random probability: %f. Total layered left after compatibility pruning: %ld",
      static_cast<double>(share), layered);
  for (auto &entry : m_Scenes)
    if (entry->m_IsLayered) entry->m_RandomProbability *= share;
}
