#pragma once
// The square plane from -3 to 3 that Shatter breaks: Delaunay triangles of
// scattered points become shards that are pushed away, fall to a floor at
// y = -3, slide, and return home in an order the rebuild draws. Drawn as
// triangle lists through the ring of dynamic buffers.

#include <vector>

#include "nodes/sim/Triangulator.h"
#include "portdata/BatchRender.h"
#include "render/Matrix.h"

class CShatterPlane : public CBatchRender {
 public:
  static constexpr int MaxPoints = 10000;
  static constexpr int TrianglesPerBatch = 1000;
  static constexpr float Floor = -3.0f;

  struct Vertex {
    CVector3 home, position, previous;
    float u = 0, v = 0;
  };
  struct Shard {
    Vertex v[3];
    float edge2[3] = {};  // squared lengths of edges 0-1, 1-2, 2-0
    CVector3 normal;
    float rank = 0;  // 0 returns first, 1 last
  };
  struct Timing {
    float delay, duration, rebuild, rebuildVar;  // ShatterDelay, ShatterTime, RebuildTime, RebuildTimeVar
  };

  // A new plane of `numPoints` points in the next style of the process,
  // each shard pushed on its way.
  void Rebuild(int numPoints);
  // One step of 1/30 s at phase clock `clock`.
  void Step(float clock, const CVector3 &gravity, const Timing &timing);

  int Count() const { return m_Count; }
  const Shard *Shards() const { return m_Shards.data(); }
  const CTriangulator &Triangulator() const { return m_Triangulator; }
  // The style the last rebuild used: 0 blown from behind, 1 hit at a point.
  int Style() const { return m_Style; }

  bool RestoreDevice(CRender *render) override;
  void Draw(CRender *render) override;

 private:
  void Push(int style, const CVector3 &impact);

  CTriangulator m_Triangulator;
  std::vector<CTriangulator::Point> m_Input;
  std::vector<Shard> m_Shards;
  int m_Count = 0, m_Style = 0;
};
