#include "app/HostChannel.h"

void CHostChannel::BeforeUpdate() {
  m_Waiting = m_Channel && m_Channel->Poll(m_Pending);
  if (m_Waiting) m_Commands->AddCommandLine(m_Pending.text, m_Pending.oversized);
}

void CHostChannel::AfterUpdate() {
  if (!m_Waiting) return;
  m_Channel->Answer(m_Pending.client, m_Commands->GetReplies());
  m_Waiting = false;
}
