#pragma once
// Straws of grass, one on each vertex of a mesh, moved by Verlet steps and
// held in shape by distance constraints, and drawn as one triangle strip of
// blades per batch through the ring of dynamic buffers.
//
// A straw has two fixed points (root below the ground and base on it) and
// two moving ones (middle and top). Four constraints keep it standing:
// base-middle and middle-top at one segment, root-middle and base-top at
// two segments, so that it bends without folding.

#include <cstdint>
#include <vector>

#include "portdata/BatchRender.h"
#include "render/Matrix.h"
#include "render/VertexFormat.h"

struct MeshVertex;

class CGrassStraws : public CBatchRender {
 public:
  static constexpr int MinSegments = 2, MaxSegments = 100;
  // Indices are 16 bits: one straw per vertex of an addressable mesh.
  static constexpr int MaxStraws = 65536;

  struct Straw {
    CVector3 root, base, middle, middlePrev, top, topPrev, wind, side;
    float w = 0, h = 0, h2 = 0, h2x4 = 0;  // half width, segment, its square, twice its length squared
  };
  struct Growth {
    float height, heightVar, width, widthVar;
  };
  struct Forces {
    CVector3 gravity, wind, windVar;
  };
  struct Look {
    int segments = 3;
    float topWidthFactor = 0;
    uint32_t color = 0xFFFFFFFFu;
  };

  // One straw per vertex, along its normal, with a first swing.
  void Build(const MeshVertex *vertices, int count, const Growth &growth);
  // One Verlet step of `dt` seconds: each straw draws its local wind, and a
  // point keeps 99 percent of its velocity.
  void Simulate(float dt, const Forces &forces);
  // One pass of the four constraints per straw.
  void Constrain(float strength, float strength2);
  void SetLook(const Look &look);

  int Count() const { return m_Count; }
  const Straw *Straws() const { return m_Straws.data(); }
  Straw *Straws() { return m_Straws.data(); }
  int Segments() const { return m_Look.segments; }
  int VerticesPerStraw() const { return 2 * m_Look.segments + 4; }
  int StrawsPerBatch() const;
  // The blade of one straw from the tip down: tip pair, one pair per inner
  // segment along quadratic curves through the middle, root pair.
  void StrawVertices(const Straw &straw, VertexPCT *out) const;

  bool RestoreDevice(CRender *render) override;
  void Draw(CRender *render) override;

 private:
  std::vector<Straw> m_Straws;
  int m_Count = 0;
  Look m_Look;
};
