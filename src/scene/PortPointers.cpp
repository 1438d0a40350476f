#include "scene/PortPointers.h"

#include "portdata/PDMesh.h"
#include "portdata/PDTexture.h"
#include "scene/Node.h"

void CPortTexture::SetTexture(CPDTexture *texture) {
  m_Value = texture;
  uint32_t flags = texture ? texture->m_Flags : 0;
  int mode = texture ? texture->m_Mode : 0;
  if (flags != m_Flags || mode != m_Mode) {
    m_Flags = flags;
    m_Mode = mode;
    m_Changed = true;
  }
}


void CPortMesh::Prepare() {
  if (!m_Value) return;
  CNode *producer = m_Source ? m_Source->m_Node : nullptr;
  if (!producer || !producer->IsChanged()) return;
  m_Value->CreateMesh(*m_Value);
  m_Value->m_Dirty = false;
  m_Value->m_DirtyUnits = ALL_UNITS;
  producer->m_DirtyUnits = ALL_UNITS;
}
