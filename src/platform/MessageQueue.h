#pragma once
// Stands for the window message pump: messages posted by the program come
// first, then events from the window system, then a close request from a
// signal. Peeking never blocks.

#include <deque>

#include "platform/WindowMessage.h"

// Where window-system events come from (X11 in the real program).
class IEventSource {
 public:
  virtual ~IEventSource() = default;
  // Takes one pending event, translated; false when none is pending.
  virtual bool PollEvent(WindowMessage &out) = 0;
};

class CMessageQueue {
 public:
  void Post(const WindowMessage &message) { m_Posted.push_back(message); }
  void PostQuit(int exitCode);
  // Takes the next pending message; false when nothing is pending.
  bool Peek(WindowMessage &out);
  void SetEventSource(IEventSource *source) { m_Source = source; }
  // The window a close request from a signal is addressed to.
  void SetCloseTarget(WindowHandle window) { m_CloseTarget = window; }
  void Clear() { m_Posted.clear(); }

 private:
  std::deque<WindowMessage> m_Posted;
  IEventSource *m_Source = nullptr;
  WindowHandle m_CloseTarget = 0;
};

// The process's queue.
CMessageQueue &MessageQueue();
