#pragma once

#include <vector>

#include "nodes/object/ObjectCopies.h"
#include "portdata/PDObject.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortBool;
class CPortInt;
class CPortObject;

// A row of copies of an object, each further one moved, turned and scaled
// by its number times the changes.
class CCloneNode : public CNode, public CPDObject {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *) override { return true; }
  void InvalidateDevice(CRender *) override {}
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

  const std::vector<CObjectCopy> &Copies() const { return m_Copies; }

 private:
  CPortInt *m_NumClones = nullptr;
  CPortVector *m_Pos = nullptr, *m_Rot = nullptr, *m_Scale = nullptr;
  CPortVector *m_PosChange = nullptr, *m_RotChange = nullptr, *m_ScaleChange = nullptr;
  CPortColor *m_Color = nullptr;
  CPortBool *m_Center = nullptr;
  CPortObject *m_Object = nullptr;
  CPortObject *m_Out = nullptr;
  std::vector<CObjectCopy> m_Copies;
};
