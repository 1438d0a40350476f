#include "platform/MessageQueue.h"

#include "platform/Signals.h"

void CMessageQueue::PostQuit(int exitCode) {
  WindowMessage m;
  m.message = WM_QUIT;
  m.wparam = static_cast<uintptr_t>(exitCode);
  Post(m);
}

bool CMessageQueue::Peek(WindowMessage &out) {
  if (!m_Posted.empty()) {
    out = m_Posted.front();
    m_Posted.pop_front();
    return true;
  }
  if (m_Source && m_Source->PollEvent(out)) return true;
  if (TakeCloseRequest()) {
    out = WindowMessage{m_CloseTarget, WM_CLOSE, 0, 0};
    return true;
  }
  return false;
}

CMessageQueue &MessageQueue() {
  static CMessageQueue queue;
  return queue;
}
