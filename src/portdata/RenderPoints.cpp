#include "portdata/RenderPoints.h"

#include <algorithm>
#include <cstring>

#include "render/DeviceCheck.h"
#include "render/Matrix.h"

int CRenderPoints::RecordWords(int primitiveType) {
  switch (primitiveType) {
    case PRIM_Point: return sizeof(VertexPC) / 4;
    case PRIM_Line: return sizeof(Line) / 4;
    default: return sizeof(Sprite) / 4;
  }
}

void CRenderPoints::SetSize(int count, int primitiveType) {
  m_Type = std::clamp(primitiveType, static_cast<int>(PRIM_Point), static_cast<int>(PRIM_Object));
  m_Count = std::max(count, 0);
  m_Words.resize(static_cast<size_t>(m_Count) * RecordWords(m_Type));
}

void CRenderPoints::SetCount(int count) {
  m_Count = std::clamp(count, 0, static_cast<int>(m_Words.size() / RecordWords(m_Type)));
}

bool CRenderPoints::RestoreDevice(CRender *render) {
  InvalidateDevice(render);
  m_RingType = m_Type;
  if (m_Type == PRIM_Point || m_Type == PRIM_Line) {
    // A line needs two vertices of a chunk.
    m_RenderBufferPoints = std::clamp(m_RenderBufferPoints, 2, BATCH_MAX_VERTICES);
    DeviceObjects *const dObjs = &Slot(render);
    for (int i = 0; i < RING_SIZE; ++i)
      if (DEVICE_FAILED(!(dObjs->m_VertexBuffer[i] = render->CreateVertexBuffer(m_RenderBufferPoints, VBF_DYNAMIC, VBF_PC))))
        return false;
    return true;
  }
  if (m_Type == PRIM_AxisTexture) m_RenderBufferQuads = std::max(m_RenderBufferQuads, 3);  // one point is 3 quads
  if (m_Type == PRIM_Texture || m_Type == PRIM_AxisTexture) return CreateQuadRing(render, QUAD_STRIP_PATTERN);
  return true;
}

void CRenderPoints::Draw(CRender *render) {
  if (m_Count == 0 || m_Type != m_RingType) return;
  const int total = DrawCount(m_Count);
  switch (m_Type) {
    case PRIM_Point:
    case PRIM_Line:
      if (HasRing(render, false)) DrawVertices(render, total);
      break;
    case PRIM_Texture:
      if (HasRing(render, true)) DrawSprites(render, total);
      break;
    case PRIM_AxisTexture:
      if (HasRing(render, true)) DrawAxisSprites(render, total);
      break;
    default:
      break;
  }
}

void CRenderPoints::DrawVertices(CRender *render, int total) {
  const bool lines = m_Type == PRIM_Line;
  const int perItem = lines ? 2 : 1;
  const int chunk = RingBuffer(render)->m_Size / perItem;
  const size_t bytes = RecordWords(m_Type) * 4;
  render->SetIndexBuffer(nullptr);
  for (int done = 0; done < total;) {
    const int n = std::min(total - done, chunk);
    CVertexBuffer *vb = RingBuffer(render);
    std::memcpy(vb->Lock(), reinterpret_cast<const uint8_t *>(m_Words.data()) + done * bytes, n * bytes);
    vb->Unlock();
    render->SetVertexBuffer(vb);
    render->DrawPrimitive(lines ? PT_LineList : PT_PointList, 0, n);
    AdvanceRing();
    done += n;
  }
}

template <typename Write>
void CRenderPoints::DrawSpriteQuads(CRender *render, int total, int quadsPerSprite, Write write) {
  const int chunk = RingBuffer(render)->m_Size / (4 * quadsPerSprite);
  const Sprite *sprites = Sprites();
  for (int done = 0; done < total;) {
    const int n = std::min(total - done, chunk);
    auto *out = static_cast<VertexPCT *>(RingBuffer(render)->Lock());
    for (int i = 0; i < n; ++i) out = write(sprites[done + i], out);
    RingBuffer(render)->Unlock();
    DrawQuadChunk(render, quadsPerSprite * n);
    done += n;
  }
}

void CRenderPoints::DrawSprites(CRender *render, int total) {
  // Camera-facing: the view's right and up axes in the object's space.
  const CMatrix wv = *render->GetTransform(TS_World) * *render->GetTransform(TS_View);
  const CVector3 r{wv(0, 0), wv(1, 0), wv(2, 0)}, up{wv(0, 1), wv(1, 1), wv(2, 1)};
  const CVector3 sum = up + r, diff = r - up;
  DrawSpriteQuads(render, total, 1, [&](const Sprite &s, VertexPCT *out) {
    auto corner = [&](const CVector3 &d, float sign, float u, float v) {
      return VertexPCT{s.x + sign * s.sx * d.x, s.y + sign * s.sy * d.y, s.z + sign * s.sz * d.z, u, v, s.color};
    };
    *out++ = corner(sum, -1.0f, 0.0f, 0.0f);
    *out++ = corner(diff, 1.0f, 1.0f, 0.0f);
    *out++ = corner(diff, -1.0f, 0.0f, 1.0f);
    *out++ = corner(sum, 1.0f, 1.0f, 1.0f);
    return out;
  });
}

void CRenderPoints::DrawAxisSprites(CRender *render, int total) {
  // Three quads through the centre, one across each pair of axes.
  DrawSpriteQuads(render, total, 3, [](const Sprite &s, VertexPCT *out) {
    auto put = [&](float x, float y, float z, float u, float v) { *out++ = VertexPCT{x, y, z, u, v, s.color}; };
    put(s.x - s.sx, s.y + s.sy, s.z, 0, 0);
    put(s.x - s.sx, s.y - s.sy, s.z, 1, 0);
    put(s.x + s.sx, s.y + s.sy, s.z, 0, 1);
    put(s.x + s.sx, s.y - s.sy, s.z, 1, 1);
    put(s.x - s.sx, s.y, s.z + s.sz, 0, 0);
    put(s.x - s.sx, s.y, s.z - s.sz, 1, 0);
    put(s.x + s.sx, s.y, s.z + s.sz, 0, 1);
    put(s.x + s.sx, s.y, s.z - s.sz, 1, 1);
    put(s.x, s.y - s.sy, s.z + s.sz, 0, 0);
    put(s.x, s.y - s.sy, s.z - s.sz, 1, 0);
    put(s.x, s.y + s.sy, s.z + s.sz, 0, 1);
    put(s.x, s.y + s.sy, s.z - s.sz, 1, 1);
    return out;
  });
}
