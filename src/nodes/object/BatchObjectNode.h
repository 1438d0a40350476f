#pragma once
// What the object node types that draw through one batch renderer share:
// they are their own Object, their device objects are the batch's, and they
// join the draw list with the effect on one in-port.

#include "portdata/PDObject.h"
#include "scene/Node.h"

class CBatchRender;
class CPortEffect;
class CPortInt;
class CPortObject;
class CRenderPoints;

// The PrimType in-port of the node types that draw points (Point, Line,
// Texture, Axis texture, Object), with its default.
CPortInt *PointPrimTypePort(int def);

class CBatchObjectNode : public CNode, public CPDObject {
 public:
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

 protected:
  explicit CBatchObjectNode(CBatchRender &batch) : m_Batch(batch) {}
  // Looks up the effect in-port and the Object out-port by name.
  void InitBatchPorts(const char *effectPort);
  // How many of the batch's items the next draw shows; below 1 shows all.
  virtual int DrawCount() const { return 0; }
  void PublishObject();
  // Readies `points` for `count` records of the type on `primType` (held to
  // the known types); a new type or more room than `capacity` needs new
  // device objects. Returns the type.
  int SizePoints(CRenderPoints &points, const CPortInt &primType, int count, int &capacity);

  CBatchRender &m_Batch;
  CPortEffect *m_EffectPort = nullptr;
  CPortObject *m_ObjectOut = nullptr;
};
