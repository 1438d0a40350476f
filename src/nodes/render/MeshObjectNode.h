#pragma once

#include "portdata/PDObject.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortEffect;
class CPortMesh;
class CPortObject;

// A mesh drawn with an effect: the draw list takes both from its item.
class CMeshObjectNode : public CNode, public CPDObject {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

 private:
  CPortEffect *m_Effect = nullptr;
  CPortMesh *m_Mesh = nullptr;
  CPortObject *m_Object = nullptr;
};
