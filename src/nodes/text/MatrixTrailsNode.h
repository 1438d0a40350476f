#pragma once
// MatrixTrails: a grid of falling columns of characters that fade behind
// their heads, taken from a font texture that the Effect brings in. The
// whole grid is one batch of quads, rewritten every frame.

#include <vector>

#include "core/Random.h"
#include "portdata/PDObject.h"
#include "portdata/RenderQuads.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortBool;
class CPortColor;
class CPortEffect;
class CPortFloat;
class CPortInt;
class CPortObject;

class CMatrixTrailsNode : public CNode, public CPDObject {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

  int Columns() const { return static_cast<int>(m_Columns.size()); }
  int Rows() const { return m_Rows; }
  const CRenderQuads &Quads() const { return m_Quads; }

 private:
  struct CMatrixColumn {
    struct Cell {
      float alpha = 1;
      int character = 0;
    };
    std::vector<Cell> cells;
    float timer = 0, delay = 0, fade = 0;
    int head = 0;
    float place = 0;  // index / number of columns: the column's local time
  };
  void Rebuild(int columns, int rows);
  void SetUpColumn(CMatrixColumn &column, int index, int count);
  void ReadTimes(CMatrixColumn &column);
  void Step(CMatrixColumn &column, float dt);
  CQuadBatch::Quad *WriteColumn(const CMatrixColumn &column, float x, float y, float cw, float ch,
                                CQuadBatch::Quad *out) const;

  CPortEffect *m_Effect = nullptr;
  CPortObject *m_Object = nullptr;
  CPortFloat *m_CharDelay = nullptr;
  CPortFloat *m_FadeSpeed = nullptr;
  CPortInt *m_NumColumns = nullptr;
  CPortInt *m_NumRows = nullptr;
  CPortColor *m_CharCol = nullptr;
  CPortInt *m_NumChars = nullptr;
  CPortFloat *m_CharWidthTex = nullptr;
  CPortFloat *m_CharHeightTex = nullptr;
  CPortFloat *m_Width = nullptr;
  CPortFloat *m_Height = nullptr;
  CPortBool *m_AdjustForAspect = nullptr;

  std::vector<CMatrixColumn> m_Columns;
  int m_Rows = 0;
  RandomState m_Random;
  CRenderQuads m_Quads;
};
