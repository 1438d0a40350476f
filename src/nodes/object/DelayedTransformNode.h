#pragma once

#include <vector>

#include "nodes/object/ObjectCopies.h"
#include "portdata/PDObject.h"
#include "render/Matrix.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortFloat;
class CPortInt;
class CPortObject;

// A chain of copies of an object in which each copy takes on, after Delay
// seconds, the placement the copy before it had: the first follows the
// Delayed ports, the others trail behind it, turning by quaternion
// interpolation in between.
class CDelayedTransformNode : public CNode, public CPDObject {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *) override { return true; }
  void InvalidateDevice(CRender *) override {}
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

  struct Quat {
    float x = 0, y = 0, z = 0, w = 1;
  };
  // A value as it is now, where it comes from and where it goes.
  template <typename T>
  struct Track {
    T current, from, to;
  };
  struct Record {
    Track<CVector3> pos;
    Track<CVector3> scale;
    Track<Quat> rot;
    Track<Quat> color;  // r, g, b, a as x, y, z, w
    CMatrix matrix;
  };
  const std::vector<Record> &Records() const { return m_Records; }

 private:
  CPortObject *m_Object = nullptr;
  CPortObject *m_Out = nullptr;
  CPortInt *m_NumObjects = nullptr;
  CPortFloat *m_Delay = nullptr;
  CPortVector *m_PosDelta = nullptr, *m_RotDelta = nullptr, *m_ScaleDelta = nullptr;
  CPortVector *m_DelayedPos = nullptr, *m_DelayedRot = nullptr, *m_DelayedScale = nullptr;
  CPortColor *m_Color = nullptr;

  float m_Timer = 0;
  float m_DelayTime = 0;
  std::vector<Record> m_Records;
  std::vector<CObjectCopy> m_CopyScratch;  // kept between frames
};
