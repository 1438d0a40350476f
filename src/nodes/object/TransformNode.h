#pragma once

#include "nodes/object/ObjectCopies.h"
#include "portdata/PDObject.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortObject;

// Moves up to five objects with one matrix and color.
class CTransformNode : public CNode, public CPDObject {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *) override { return true; }
  void InvalidateDevice(CRender *) override {}
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

 private:
  CPortVector *m_Pos = nullptr, *m_Rot = nullptr, *m_Scale = nullptr;
  CPortColor *m_Color = nullptr;
  CPortObject *m_Objects[5] = {};
  CPortObject *m_Out = nullptr;
  CObjectCopy m_Local;
};
