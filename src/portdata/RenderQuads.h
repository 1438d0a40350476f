#pragma once
// Many textured quads a node rebuilds every frame (lines with width,
// ribbons), drawn as one triangle strip per chunk of m_RenderBufferQuads:
// the quads are joined by degenerate triangles through a static index
// buffer.
//
//   m_Quads.SetSize(maxQuads);                  // in Update
//   auto *q = m_Quads.Quads();
//   q = m_Quads.AddLine(from, to, width, 1, 1, 1, 1, color, q);
//   m_Quads.SetCount(static_cast<int>(q - m_Quads.Quads()));

#include <vector>

#include "portdata/BatchRender.h"
#include "render/Matrix.h"
#include "render/VertexFormat.h"

// The quad storage and drawing that CRenderQuads and CRenderVolumeLines
// share; they differ in how a quad's corners are ordered.
class CQuadBatch : public CBatchRender {
 public:
  struct Quad {
    VertexPCT v[4];
  };

  // Room for `count` quads, all of them counted.
  void SetSize(int count);
  // Lowers (or raises, up to the size) how many quads are drawn.
  void SetCount(int count);
  int Count() const { return m_Count; }
  Quad *Quads() { return m_Items.data(); }
  Quad *End() { return m_Items.data() + m_Items.size(); }
  const Quad *Quads() const { return m_Items.data(); }

  bool RestoreDevice(CRender *render) override;
  void Draw(CRender *render) override;

 protected:
  explicit CQuadBatch(const int pattern[6]) : m_Pattern(pattern) {}

  std::vector<Quad> m_Items;
  int m_Count = 0;

 private:
  const int *m_Pattern;
};

class CRenderQuads : public CQuadBatch {
 public:
  CRenderQuads() : CQuadBatch(QUAD_STRIP_PATTERN) {}

  // A band of `width` from `from` to `to`, facing +z, as a grid of
  // subdivisionsY rows of subdivisionsX cells (at least one of each); the
  // texture repeats repeatU times across and repeatV times along. Writes
  // the quads at `out` and returns the end; quads that don't fit before
  // End() are dropped.
  Quad *AddLine(const CVector3 &from, const CVector3 &to, float width, int subdivisionsX, int subdivisionsY,
                float repeatU, float repeatV, uint32_t color, Quad *out);
};

// normalize((0, 0, 1) x d), with the fast inverse square root: the side of a
// line in the xy plane.
CVector3 FastSide(const CVector3 &d);
