#include "nodes/object/BatchObjectNode.h"

#include <algorithm>

#include "portdata/BatchRender.h"
#include "portdata/RenderPoints.h"
#include "scene/BatchDrawList.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CPortInt *PointPrimTypePort(int def) {
  auto *port = new CPortInt("PrimType", "Type of primitive", def, 0, 4);
  port->AddValue(0, "Point")->AddValue(1, "Line")->AddValue(2, "Texture")->AddValue(3, "Axis texture");
  port->AddValue(4, "Object");
  return port;
}

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

int CBatchObjectNode::SizePoints(CRenderPoints &points, const CPortInt &primType, int count, int &capacity) {
  const int type = std::clamp(primType.m_Value, static_cast<int>(PRIM_Point), static_cast<int>(PRIM_Object));
  if (primType.m_Changed || type != points.PrimitiveType() || count > capacity) {
    capacity = std::max(count, capacity);
    points.SetSize(capacity, type);
    m_DirtyUnits = ALL_UNITS;
  }
  return type;
}
