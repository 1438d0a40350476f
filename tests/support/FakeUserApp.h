#pragma once
// An application that records what the host asks of it.

#include <numeric>
#include <string>
#include <vector>

#include "app/UserApp3d.h"
#include "platform/MessageQueue.h"

class FakeUserApp : public CUserApp3d {
 public:
  bool Init() override {
    ++inits;
    return initResult;
  }
  void Free() override {}
  void Configure() override { ++configures; }
  bool Render() override {
    ++renders;
    return true;
  }
  bool Update(float dt) override {
    updates.push_back(dt);
    if (closeAfter > 0 && static_cast<int>(updates.size()) == closeAfter)
      MessageQueue().Post(WindowMessage{0, WM_CLOSE, 0, 0});
    return true;
  }
  bool RestoreDeviceObjects() override { return true; }
  bool InvalidateDeviceObjects() override { return true; }
  std::string GetAppName() override { return "Fake"; }
  bool FrameFinished() override {
    ++finished;
    return true;
  }
  void Serialize(CSerialize &) override {}

  std::vector<float> updates;
  int renders = 0, finished = 0, inits = 0, configures = 0;
  bool initResult = true;
  int closeAfter = 0;
  float Sum(size_t from = 0) const { return std::accumulate(updates.begin() + from, updates.end(), 0.0f); }
};
