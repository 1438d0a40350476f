#include "portdata/RenderQuads.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

void CQuadBatch::SetSize(int count) {
  m_Items.resize(std::max(count, 0));
  m_Count = static_cast<int>(m_Items.size());
}

void CQuadBatch::SetCount(int count) { m_Count = std::clamp(count, 0, static_cast<int>(m_Items.size())); }

bool CQuadBatch::RestoreDevice(CRender *render) {
  InvalidateDevice(render);
  return CreateQuadRing(render, m_Pattern);
}

void CQuadBatch::Draw(CRender *render) {
  if (!HasRing(render, true)) return;
  const int total = DrawCount(m_Count);
  const int chunk = RingBuffer(render)->m_Size / 4;
  for (int done = 0; done < total;) {
    const int n = std::min(total - done, chunk);
    CVertexBuffer *vb = RingBuffer(render);
    std::memcpy(vb->Lock(), &m_Items[done], n * sizeof(Quad));
    vb->Unlock();
    DrawQuadChunk(render, n);
    done += n;
  }
}

CVector3 FastSide(const CVector3 &d) {
  const CVector3 side = Cross({0.0f, 0.0f, 1.0f}, d);
  const float len2 = Dot(side, side);
  float y = std::bit_cast<float>(0x5f3759df - (std::bit_cast<int32_t>(len2) >> 1));
  y = y * (1.5f - y * y * len2 * 0.5f);
  return side * y;
}

CRenderQuads::Quad *CRenderQuads::AddLine(const CVector3 &from, const CVector3 &to, float width, int subdivisionsX,
                                          int subdivisionsY, float repeatU, float repeatV, uint32_t color, Quad *out) {
  const int nx = std::max(subdivisionsX, 1), ny = std::max(subdivisionsY, 1);
  const CVector3 off = FastSide(to - from) * (width * 0.5f);
  const CVector3 along = to - from, base = from - off, across = off * 2.0f;
  auto point = [&](float b, float a) {
    const CVector3 p = base + across * b + along * a;
    return VertexPCT{p.x, p.y, p.z, b * repeatU, a * repeatV, color};
  };
  Quad *end = End();
  for (int j = 0; j < ny; ++j) {
    const float a = static_cast<float>(j) / ny, a1 = a + 1.0f / ny;
    for (int i = 0; i < nx; ++i) {
      if (out >= end) return out;
      const float b = static_cast<float>(i) / nx, b1 = b + 1.0f / nx;
      *out++ = Quad{{point(b, a), point(b, a1), point(b1, a), point(b1, a1)}};
    }
  }
  return out;
}
