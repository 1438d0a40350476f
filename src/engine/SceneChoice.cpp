#include "engine/SceneChoice.h"

namespace {
// RandomRange(0, max), drawn from the caller's state.
float Draw(RandomState &random, float max) { return max * static_cast<float>(NextRandom(random)) * 2.3283064e-10f; }

// The position of the first entry for which `stop` holds (walking from the
// head), or the count.
template <typename Stop>
int Walk(const std::vector<SceneChoiceEntry> &scenes, Stop stop) {
  int i = 0;
  for (const SceneChoiceEntry &s : scenes) {
    if (stop(s)) break;
    ++i;
  }
  return i;
}

void PickRandom(const std::vector<SceneChoiceEntry> &scenes, const SceneChoiceRequest &r, RandomState &random,
                SceneChoice &out) {
  out.totalProbability = 0.0f;
  for (const SceneChoiceEntry &s : scenes) out.totalProbability += s.weight;
  out.offset = Draw(random, out.totalProbability);
  float left = out.offset;
  const SceneChoiceEntry *lastPassed = nullptr;
  out.index = Walk(scenes, [&](const SceneChoiceEntry &s) {
    if (left < s.weight) return true;
    left -= s.weight;
    lastPassed = &s;
    return false;
  });
  // Between layered scenes prefer a neighbour that keeps a layer. The test
  // looks at the entry passed last, not at the one picked.
  if (!lastPassed || !lastPassed->layered || !r.activeIsLayered || r.tooSlow) return;
  float total = 0.0f;
  for (const SceneChoiceEntry &s : scenes)
    if (s.neighbourOfActive) total += s.weight;
  if (total <= 0.0f) return;
  out.totalProbability = total;
  out.offset = Draw(random, total);
  left = out.offset;
  out.index = Walk(scenes, [&](const SceneChoiceEntry &s) {
    if (!s.neighbourOfActive) return false;
    left -= s.weight;
    return left < 0.0f;
  });
}
}  // namespace

SceneChoice ChooseScene(const std::vector<SceneChoiceEntry> &scenes, const SceneChoiceRequest &r, RandomState &random,
                        float lastTotal) {
  SceneChoice out;
  out.totalProbability = lastTotal;
  const int count = static_cast<int>(scenes.size());
  if (count == 0) return out;
  switch (r.mode) {
    case CHANGE_Next: out.index = (r.current + 1) % count; break;
    case CHANGE_Previous: out.index = r.current == 0 ? count - 1 : (r.current - 1) % count; break;
    case CHANGE_Random: PickRandom(scenes, r, random, out); break;
    default: out.index = r.index <= 0 ? 0 : (r.index >= count - 1 ? count - 1 : r.index); break;
  }
  return out;
}
