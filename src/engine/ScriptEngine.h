#pragma once
// The command interface a host drives the engine through: XML requests are
// queued from any thread and run on the main thread at one fixed point of
// the engine's update; replies collect in a document the host fetches.
// One per process, held through counted references.

#include <list>
#include <mutex>
#include <string>

#include "engine/EngineServices.h"
#include "scene/XmlElement.h"

class CVelmor;
class CScriptEngine;

// What a handler says: an error text (empty when none) and success. A
// handler posts its own reply.
struct CommandResult {
  std::string error;
  bool ok = true;
};
inline CommandResult CommandFailed(const char *error) { return {error, false}; }
using CommandHandler = CommandResult (*)(CScriptEngine &engine, XmlElement &request, CVelmor *context);

class CScriptEngine : public ICommandRunner {
 public:
  // Takes a reference, creating the engine on the first call.
  static CScriptEngine &GetInstance();
  // Drops a reference; the last one destroys the engine.
  static void Release();

  void Register(const char *name, CommandHandler handler, CVelmor *context);
  // Drops every command of `context`, so that none outlives its engine.
  void Unregister(CVelmor *context);
  // Queues each child of the document's first element; text that isn't
  // well-formed XML is dropped whole (false).
  bool AddCommands(const std::string &text);
  // One line of a host channel: its document is queued; a line that was
  // too long or isn't well-formed XML is answered with a Request element
  // carrying the Error. A blank line asks for nothing.
  void AddCommandLine(const std::string &line, bool oversized);
  // Runs every queued request, first in first out; main thread only.
  void Run() override;
  void PostReply(const XmlElement &reply);
  // The reply document (root vms) as one line of text; it is emptied.
  // Unfetched replies are kept up to MaxReplies, the oldest dropped first,
  // so that a program with no host doesn't grow without end.
  static constexpr size_t MaxReplies = 4096;
  std::string GetReplies();

 private:
  CScriptEngine() = default;
  ~CScriptEngine() override = default;

  struct Command {
    std::string name;
    CommandHandler handler;
    CVelmor *context;
  };
  std::list<Command> m_Commands;
  std::list<XmlElement> m_Queue;
  XmlElement m_Replies{"vms"};
  bool m_Running = false;
  std::mutex m_RepliesLock;
  std::mutex m_QueueLock;
};

// Holds a command engine reference for an object's lifetime.
class CScriptEngineRef {
 public:
  CScriptEngineRef() : m_Engine(&CScriptEngine::GetInstance()) {}
  ~CScriptEngineRef() { CScriptEngine::Release(); }
  CScriptEngineRef(const CScriptEngineRef &) = delete;
  CScriptEngineRef &operator=(const CScriptEngineRef &) = delete;
  CScriptEngine *operator->() const { return m_Engine; }
  CScriptEngine &operator*() const { return *m_Engine; }

 private:
  CScriptEngine *m_Engine;
};

// Counts displayed frames and posts the rate (<Profiler fps="..."/>) to the
// replies a little more often than once a second.
class CProfiler {
 public:
  void Restart();
  void FrameFinished();

 private:
  int64_t m_LastReport = 0;
  int32_t m_Frames = 0;
};
CProfiler &Profiler();
