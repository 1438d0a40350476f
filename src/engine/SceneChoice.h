#pragma once
// The choice of the next scene of the play list, apart from the engine that
// plays it: the same list, request and random state give the same scene.

#include <vector>

#include "core/Random.h"

enum SceneChangeMode {
  CHANGE_Next = 0,
  CHANGE_Previous = 1,
  CHANGE_Random = 2,
  CHANGE_Index = 3,
};

// One entry of the play list as the choice sees it.
struct SceneChoiceEntry {
  float weight = 1.0f;
  bool layered = false;
  // A layered entry that shares exactly one of background and foreground
  // with the active layered scene (and is not that scene).
  bool neighbourOfActive = false;
};

struct SceneChoiceRequest {
  int mode = CHANGE_Next;
  int index = 0;    // CHANGE_Index: the entry asked for, clamped
  int current = 0;  // position of the active entry
  bool activeIsLayered = false;
  // The active scene was too slow: anything may follow, not only a
  // neighbour that keeps one of its layers.
  bool tooSlow = false;
};

struct SceneChoice {
  // The chosen position. A random walk that rounding carries off the end
  // gives the count; the caller plays the last entry then.
  int index = 0;
  float offset = 0.0f;  // the random draw; 0 when nothing was drawn
  // The weight sum of the random pick, or `lastTotal` when nothing was drawn.
  float totalProbability = 0.0f;
};

SceneChoice ChooseScene(const std::vector<SceneChoiceEntry> &scenes, const SceneChoiceRequest &request,
                        RandomState &random, float lastTotal);
