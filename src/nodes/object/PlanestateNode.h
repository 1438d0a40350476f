#pragma once

#include <vector>

#include "portdata/PDObject.h"
#include "render/Matrix.h"
#include "portdata/RenderLines.h"
#include "portdata/RenderPoints.h"
#include "portdata/RenderQuads.h"
#include "scene/Node.h"
#include "scene/PortValues.h"

class CNodeInfo;
class CPortEffect;
class CPortObject;

// A row of planes that is a delay line of the ports: the first plane shows
// them as they stand, each next one as they stood one update earlier.
class CPlanestateNode : public CNode, public CPDObject {
 public:
  static constexpr int MaxObjects = 10000;

  struct PlaneState {
    Vec3f rotation{0, 0, 0}, scale{1, 1, 1}, distance{0, 0, 0}, pivot{0, 0, 0};
    Color4f objectColor{1, 1, 1, 1}, outlineColor{0, 0, 0, 0}, pointColor{0, 0, 0, 0};
    Vec3f pointSize{1, 1, 1};
    CMatrix matrix;
  };

  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

  const std::vector<PlaneState> &Planes() const { return m_Planes; }
  const CRenderQuads &Quads() const { return m_Quads; }

 private:
  PlaneState Snapshot() const;
  void PlaceRecords(int count);
  void WriteBatches(int count);

  CPortEffect *m_PointEffect = nullptr, *m_OutlineEffect = nullptr, *m_Effect = nullptr;
  CPortObject *m_PointObject = nullptr, *m_ObjectIn = nullptr, *m_ObjectOut = nullptr;
  CPortInt *m_NumObjects = nullptr, *m_PrimType = nullptr;
  CPortFloat *m_YDelta = nullptr;
  CPortVector *m_CenterAxisRot = nullptr, *m_ObjectCAxisRot = nullptr, *m_ObjectRot = nullptr;
  CPortVector *m_ObjectScale = nullptr, *m_CenterAxisDist = nullptr, *m_PointSize = nullptr, *m_Pivot = nullptr;
  CPortColor *m_ObjectCol = nullptr, *m_PointCol = nullptr, *m_OutlineCol = nullptr;

  std::vector<PlaneState> m_Planes;  // newest first
  bool m_FirstRun = true, m_HasOutline = false, m_HasPoints = false;
  CRenderQuads m_Quads;
  CRenderLines m_Lines;
  CRenderPoints m_Points;
};
