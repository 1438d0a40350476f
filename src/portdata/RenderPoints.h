#pragma once
// Particles and point clouds: one record per point, drawn as points, lines,
// camera-facing quads, quads in the three axis planes, or (by the owning
// node's draw list) as clones of an object. The node writes the records
// straight into the array:
//
//   m_Points.SetSize(n, PRIM_Texture);
//   CRenderPoints::Sprite *s = m_Points.Sprites();   // fill n records
//
// A change of primitive type needs new device objects: the node sets its
// m_DirtyUnits, and Draw does nothing until the ring matches the type.

#include <cstdint>
#include <vector>

#include "portdata/BatchRender.h"
#include "render/VertexFormat.h"

// Values of the PrimType ports of the nodes that draw points.
enum PointPrimitive {
  PRIM_Point = 0,
  PRIM_Line = 1,
  PRIM_Texture = 2,
  PRIM_AxisTexture = 3,
  PRIM_Object = 4,
};

class CRenderPoints : public CBatchRender {
 public:
  // PRIM_Line: two vertices per record.
  struct Line {
    VertexPC from, to;
  };
  // PRIM_Texture, PRIM_AxisTexture, PRIM_Object.
  struct Sprite {
    float x, y, z;
    uint32_t color;
    float sx, sy, sz;  // half sizes of the quad or scale of the object
  };

  CRenderPoints() { m_RenderBufferQuads = 600; }

  // Room for `count` records of the type's shape, all of them counted.
  void SetSize(int count, int primitiveType);
  // Lowers (or raises, up to the size) how many records are drawn.
  void SetCount(int count);
  int Count() const { return m_Count; }
  int PrimitiveType() const { return m_Type; }
  // The records, typed by the primitive type given to SetSize.
  VertexPC *Points() { return reinterpret_cast<VertexPC *>(m_Words.data()); }
  Line *Lines() { return reinterpret_cast<Line *>(m_Words.data()); }
  Sprite *Sprites() { return reinterpret_cast<Sprite *>(m_Words.data()); }
  const VertexPC *Points() const { return reinterpret_cast<const VertexPC *>(m_Words.data()); }
  const Line *Lines() const { return reinterpret_cast<const Line *>(m_Words.data()); }
  const Sprite *Sprites() const { return reinterpret_cast<const Sprite *>(m_Words.data()); }

  // Makes the ring for the current primitive type; PRIM_Object needs none.
  bool RestoreDevice(CRender *render) override;
  void Draw(CRender *render) override;

  int m_RenderBufferPoints = 1000;

 private:
  static int RecordWords(int primitiveType);
  void DrawVertices(CRender *render, int total);
  void DrawSprites(CRender *render, int total);
  void DrawAxisSprites(CRender *render, int total);
  // Fills the ring a buffer's worth of sprites at a time, `quadsPerSprite`
  // quads each through `write`, and draws each chunk.
  template <typename Write>
  void DrawSpriteQuads(CRender *render, int total, int quadsPerSprite, Write write);

  std::vector<uint32_t> m_Words;  // word-aligned records
  int m_Count = 0;
  int m_Type = PRIM_Point;
  int m_RingType = -1;  // the type the current ring was made for
};
