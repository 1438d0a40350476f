#include "nodes/object/BatchObjectNode.h"

#include "portdata/BatchRender.h"
#include "scene/BatchDrawList.h"
#include "scene/PortPointers.h"

bool CBatchObjectNode::RestoreDevice(CRender *render) { return m_Batch.RestoreDevice(render); }

void CBatchObjectNode::InvalidateDevice(CRender *render) { m_Batch.InvalidateDevice(render); }

void CBatchObjectNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  if (m_EffectPort && m_EffectPort->IsConnected())
    AddBatchToDrawList(list, parents, camera, m_EffectPort->m_Value, m_Batch, DrawCount());
}

void CBatchObjectNode::InitBatchPorts(const char *effectPort) {
  m_EffectPort = InPort<CPortEffect>(effectPort);
  m_ObjectOut = OutPort<CPortObject>("Object");
}

void CBatchObjectNode::PublishObject() {
  if (m_ObjectOut) m_ObjectOut->m_Value = this;
}
