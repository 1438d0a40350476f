#pragma once
// What the engine reports to and runs on behalf of other parts: usage
// statistics (nothing until that part is installed) and queued host
// commands (the command engine; tests may put their own runner in).

#include <string>

class IStats {
 public:
  virtual ~IStats() = default;
  virtual void Init() {}
  virtual void Exit() {}
  virtual void SceneBegin(const std::string & /*name*/, const std::string & /*file*/) {}
  virtual void SceneEnd() {}
  virtual void FrameFinished() {}
};

class ICommandRunner {
 public:
  virtual ~ICommandRunner() = default;
  // Runs the commands queued since the last update.
  virtual void Run() {}
};
