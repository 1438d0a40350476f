#include "engine/ScriptEngine.h"

#include <cstdio>

#include "core/Clock.h"
#include "core/Log.h"

namespace {
std::mutex g_InstanceLock;
CScriptEngine *g_Instance = nullptr;
int g_References = 0;
}  // namespace

CScriptEngine &CScriptEngine::GetInstance() {
  std::lock_guard<std::mutex> hold(g_InstanceLock);
  if (!g_Instance) g_Instance = new CScriptEngine;
  ++g_References;
  return *g_Instance;
}

void CScriptEngine::Release() {
  std::lock_guard<std::mutex> hold(g_InstanceLock);
  if (g_References > 0 && --g_References == 0) {
    delete g_Instance;
    g_Instance = nullptr;
  }
}

void CScriptEngine::Register(const char *name, CommandHandler handler, CVelmor *context) {
  m_Commands.push_back({name, handler, context});
}

void CScriptEngine::Unregister(CVelmor *context) {
  m_Commands.remove_if([context](const Command &c) { return c.context == context; });
}

bool CScriptEngine::AddCommands(const std::string &text) {
  XmlElement document;
  if (!ParseXmlElement(text, document)) return LogError("Malformed command document dropped");
  for (XmlElement &request : document.children) {
    std::lock_guard<std::mutex> hold(m_QueueLock);
    m_Queue.push_back(std::move(request));
  }
  return true;
}

void CScriptEngine::AddCommandLine(const std::string &line, bool oversized) {
  const char *error = oversized ? "Line too long" : nullptr;
  if (!error && line.find_first_not_of(" \t") == std::string::npos) return;
  if (!error && !AddCommands(line)) error = "Malformed XML";
  if (error) PostReply(XmlElement("Request").Set("Error", error));
}

void CScriptEngine::Run() {
  // A command that updates the engine comes back here: the queue is
  // already being worked through, in order.
  if (m_Running) return;
  m_Running = true;
  for (;;) {
    std::unique_lock<std::mutex> hold(m_QueueLock, std::try_to_lock);
    // A host thread holding the queue delays the commands by one update.
    if (!hold.owns_lock() || m_Queue.empty()) break;
    XmlElement request = std::move(m_Queue.front());
    m_Queue.pop_front();
    hold.unlock();

    const Command *found = nullptr;
    for (const Command &c : m_Commands)
      if (c.name == request.tag) {
        found = &c;
        break;
      }
    if (!found) {
      request.Set("Error", "Unknown command");
      PostReply(request);
      continue;
    }
    const CommandResult result = found->handler(*this, request, found->context);
    if (!result.error.empty()) {
      request.Set("Error", result.error);
      PostReply(request);
    }
  }
  m_Running = false;
}

void CScriptEngine::PostReply(const XmlElement &reply) {
  std::lock_guard<std::mutex> hold(m_RepliesLock);
  if (m_Replies.children.size() >= MaxReplies) m_Replies.children.erase(m_Replies.children.begin());
  m_Replies.children.push_back(reply);
}

std::string CScriptEngine::GetReplies() {
  std::lock_guard<std::mutex> hold(m_RepliesLock);
  std::string text = PrintXmlElement(m_Replies);
  m_Replies.children.clear();
  return text;
}

CProfiler &Profiler() {
  static CProfiler profiler;
  return profiler;
}

void CProfiler::Restart() {
  m_LastReport = GetClock().Counter();
  m_Frames = 0;
}

void CProfiler::FrameFinished() {
  ++m_Frames;
  IClock &clock = GetClock();
  const int64_t now = clock.Counter();
  const double t = static_cast<double>(now - m_LastReport) / static_cast<double>(clock.Frequency());
  if (t <= 1.0) return;
  char fps[64];
  snprintf(fps, sizeof(fps), "%f", m_Frames / t);
  CScriptEngineRef engine;
  engine->PostReply(XmlElement("Profiler").Set("fps", fps));
  m_LastReport = now;
  m_Frames = 0;
}
