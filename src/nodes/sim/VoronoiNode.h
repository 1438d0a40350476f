#pragma once

#include <memory>
#include <vector>

#include "nodes/sim/Voronoi.h"
#include "portdata/BatchRender.h"
#include "portdata/RenderLines.h"
#include "portdata/RenderPoints.h"
#include "portdata/RenderQuads.h"
#include "scene/Node.h"

class CExprEvaluator;
class CNodeInfo;
class CPortColor;
class CPortEffect;
class CPortFloat;
class CPortInt;
class CPortObject;
class CPortString;

// The cells of a diagram as fans of triangles from each site over its
// borders, a batch of triangle lists through the ring.
class CVoronoiCells : public CBatchRender {
 public:
  static constexpr int kBatchTriangles = 1000;
  struct Site {
    float x, y;
    uint32_t color;
  };
  bool RestoreDevice(CRender *render) override;
  void Draw(CRender *render) override;

  const std::vector<CVoronoi::Edge> *m_Edges = nullptr;
  std::vector<Site> m_Sites;
};

// A 2d Voronoi diagram of points that a text moves, rebuilt every update
// and shown as cells, borders (lines or quads) and site sprites. The colour
// ports are evaluated once per point, with the point's share of the count.
class CVoronoiNode : public CNode, public CPDObject {
 public:
  static constexpr int MaxPoints = 10000;
  struct Point {
    float x, y, vx, vy;
    float cellColor[4], lineColor[4], pointColor[4];
  };

  static CNodeInfo *CreateInfo();
  CVoronoiNode();
  ~CVoronoiNode() override;
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

  int PointCount() const { return m_Count; }
  const std::vector<Point> &Points() const { return m_Points; }
  const CVoronoi &Diagram() const { return m_Voronoi; }
  const CRenderLines &Lines() const { return m_Lines; }
  const CRenderQuads &Quads() const { return m_Quads; }
  const CRenderPoints &Sprites() const { return m_Sprites; }

 private:
  // False when the text fails on a point.
  bool EvaluatePoints(float time, float dt);
  void BuildBorders();

  CPortInt *m_NumPoints = nullptr, *m_RandomSeed = nullptr;
  CPortFloat *m_LineWidth = nullptr, *m_PointSize = nullptr;
  CPortColor *m_LineColor = nullptr, *m_PointColor = nullptr, *m_CellColor = nullptr;
  CPortString *m_Expression = nullptr;
  CPortEffect *m_PointEffect = nullptr, *m_LineEffect = nullptr, *m_CellEffect = nullptr;
  CPortObject *m_Out = nullptr;

  std::unique_ptr<CExprEvaluator> m_Evaluator;
  // Bound to the text's variables.
  double m_PointNr = 0, m_NumPointsVar = 0, m_Time = 0, m_Pos[2] = {}, m_Vel[2] = {}, m_Col[4] = {};

  std::vector<Point> m_Points;
  std::vector<CVoronoi::Point> m_Sites;
  int m_Count = 0;
  CVoronoi m_Voronoi;
  CVoronoiCells m_Cells;
  CRenderPoints m_Sprites;
  CRenderLines m_Lines;
  CRenderQuads m_Quads;
};
