#pragma once
// Commands from a line channel into the command engine while the program
// runs: one line a frame, answered with the reply document of the frame it
// ran in.

#include <memory>

#include "engine/ScriptEngine.h"
#include "platform/LineChannel.h"

class CHostChannel {
 public:
  explicit CHostChannel(std::unique_ptr<ILineChannel> channel) : m_Channel(std::move(channel)) {}
  // Before the engine's update: queues the next line's commands.
  void BeforeUpdate();
  // After it: answers that line.
  void AfterUpdate();

  static constexpr size_t MaxLine = size_t{1} << 20;

 private:
  std::unique_ptr<ILineChannel> m_Channel;
  CScriptEngineRef m_Commands;
  ILineChannel::Line m_Pending;
  bool m_Waiting = false;
};
