#pragma once
// A built-in graph for running the frame loop without a project: a Sin node
// feeding a node that prints what it receives, step by step.

#include <cstdio>
#include <memory>
#include <vector>

#include "engine/EngineInterface.h"
#include "scene/FrameInfo.h"

class CNode;
class CNodeInfo;

class CDemoEngine : public IVelmorEngine {
 public:
  // Prints to `out`; after `maxSteps` update steps (0: never) asks the host
  // to close through the message queue, as a window close would.
  CDemoEngine(FILE *out, int maxSteps);
  ~CDemoEngine() override;

  bool Start(const StartRequest &) override { return true; }
  bool Update(float dt) override;
  bool Draw(CRender *) override { return true; }
  bool FrameFinished() override { return true; }
  bool RestoreDevice(CRender *) override { return true; }
  void InvalidateDevice(CRender *) override {}
  std::string ActiveSceneName() const override { return "Demo"; }

  int Steps() const { return m_Steps; }

 private:
  std::vector<std::unique_ptr<CNodeInfo>> m_Infos;
  std::vector<CNode *> m_Nodes;
  CNode *m_Root = nullptr;
  FrameInfo m_Frame;
  int m_Steps = 0;
  int m_MaxSteps;
  bool m_CloseSent = false;
};
