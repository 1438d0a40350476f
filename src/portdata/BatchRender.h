#pragma once
// What the batch renderers share: a node writes many small primitives into
// a plain array every frame, and the batch streams the array through a ring
// of dynamic vertex buffers, one chunk per buffer, so that no chunk
// overwrites a buffer the device may still be reading.

#include <cstdint>

#include "portdata/PDObject.h"
#include "render/Render.h"

// Chunks are bounded so that quad indices stay within 16 bits; a larger
// capacity a node asks for is lowered to this when the ring is made.
constexpr int BATCH_MAX_QUADS = 65536 / 4;
constexpr int BATCH_MAX_VERTICES = 65536;

class CBatchRender : public CPDObject {
 public:
  static constexpr int RING_SIZE = 3;

  ~CBatchRender() override = default;

  // Make and free the ring (and index buffer) of the render object's device
  // slot. Restoring twice frees the first set. The owning node calls these
  // from its own RestoreDevice and InvalidateDevice.
  virtual bool RestoreDevice(CRender *render) = 0;
  void InvalidateDevice(CRender *render);

  // How many items the next Draw shows; below 1 shows all.
  void SetDrawCount(int count) { m_DrawCount = count; }

  struct DeviceObjects {
    CVertexBuffer *m_VertexBuffer[RING_SIZE] = {};
    CIndexBuffer *m_IndexBuffer = nullptr;
  };
  DeviceObjects dObjs[MaxRenderUnits];
  // Shared by all slots; kept between frames.
  int m_Ring = 0;
  // Chunk of the batches that draw quads: all but lines.
  int m_RenderBufferQuads = 1000;

 protected:
  // Items the next Draw shows out of `available`.
  int DrawCount(int available) const;
  DeviceObjects &Slot(CRender *render) { return dObjs[render->m_DeviceSlot]; }
  // Makes the slot's ring of 4 * m_RenderBufferQuads VBF_PCT vertices and
  // the quad strip index buffer for `pattern` (see FillQuadIndices).
  bool CreateQuadRing(CRender *render, const int pattern[6]);
  // Fills the slot's index buffer (made by the caller) with the strip that
  // joins `quads` quads of 4 vertices by degenerate triangles: per quad the
  // six offsets of `pattern` added to 4q. The buffer's very last index is
  // held on the last vertex, so that a full chunk never names the vertex
  // past the end.
  static void FillQuadIndices(CIndexBuffer *buffer, int quads, const int pattern[6]);
  // Draws `quads` quads from the current ring buffer, after the caller has
  // filled and unlocked it, and advances the ring.
  void DrawQuadChunk(CRender *render, int quads);
  // Makes the slot's ring of 3 * `triangles` vertices of `format` and an
  // index buffer that names them in order: a plain triangle list.
  bool CreateTriangleRing(CRender *render, int triangles, int format);
  // Draws `triangles` triangles from the current ring buffer, after the
  // caller has filled and unlocked it, and advances the ring.
  void DrawTriangleChunk(CRender *render, int triangles);
  CVertexBuffer *RingBuffer(CRender *render) { return Slot(render).m_VertexBuffer[m_Ring]; }
  void AdvanceRing() { m_Ring = (m_Ring + 1) % RING_SIZE; }
  // True when every buffer of the slot that Draw needs is there.
  bool HasRing(CRender *render, bool indexed);

  int m_DrawCount = 0;
};

// The strip of quads: corners 0 and 1 on one edge, 2 and 3 on the other.
extern const int QUAD_STRIP_PATTERN[6];
