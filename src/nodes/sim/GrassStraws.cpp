#include "nodes/sim/GrassStraws.h"

#include <algorithm>
#include <cmath>

#include "nodes/object/SimRandom.h"
#include "nodes/sim/DistanceConstraint.h"
#include "portdata/PDMesh.h"
#include "render/DeviceCheck.h"

namespace {
// Beyond this a point is put back on the segment's reach: one constraint
// pass can't hold a straw against a gale, and a straw must never fly off.
constexpr float kMaxStretch = 2.0f;

bool Finite(const CVector3 &v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }

// `b` no further than `reach` from `a`.
void Leash(const CVector3 &a, CVector3 &b, float reachSquared) {
  const CVector3 d = b - a;
  const float l2 = Dot(d, d);
  if (l2 > reachSquared) b = a + d * std::sqrt(reachSquared / l2);
}

CVector3 Bezier(const CVector3 &a, const CVector3 &b, const CVector3 &c, float p) {
  const float q = 1 - p;
  return a * (q * q) + b * (2 * p * q) + c * (p * p);
}
float Bezier(float a, float b, float c, float p) {
  const float q = 1 - p;
  return a * q * q + b * 2 * p * q + c * p * p;
}
}  // namespace

void CGrassStraws::Build(const MeshVertex *vertices, int count, const Growth &g) {
  m_Count = std::clamp(count, 0, MaxStraws);
  if (static_cast<size_t>(m_Count) > m_Straws.size()) m_Straws.resize(m_Count);
  for (int i = 0; i < m_Count; ++i) {
    const CVector3 v = vertices[i].pos, n = vertices[i].normal;
    Straw &s = m_Straws[i];
    s.h = DrawUnsigned() * g.heightVar + g.height;
    s.w = DrawUnsigned() * g.widthVar + g.width;
    const float a = RandomRange(0.0f, 360.0f) * 0.017453292f;
    s.side = {std::cos(a), -std::sin(a), 0};
    s.h2 = s.h * s.h;
    s.h2x4 = 4 * s.h2;
    s.root = v - n * s.h;
    s.base = v;
    s.middle = s.middlePrev = v + n * s.h;
    s.top = s.topPrev = v + n * (2 * s.h);
    s.wind = {};
    const float s1 = DrawSigned(), s2 = DrawSigned();
    s.topPrev = s.topPrev + CVector3{0.02f * s2, 0, 0.02f * s1};
  }
}

void CGrassStraws::Simulate(float dt, const Forces &f) {
  const float t = dt * dt;
  RandomState &random = SharedRandom();
  for (int i = 0; i < m_Count; ++i) {
    Straw &s = m_Straws[i];
    const float sx = RandomSigned(random), sy = RandomSigned(random), sz = RandomSigned(random);
    s.wind = {f.windVar.x * sx, f.windVar.y * sy, f.windVar.z * sz};
    const CVector3 middle = s.middle, top = s.top;
    s.middle = s.middle * 1.99f - s.middlePrev * 0.99f + f.gravity * t;
    s.top = s.top * 1.99f - s.topPrev * 0.99f + (f.wind + s.wind + f.gravity) * t;
    s.middlePrev = middle;
    s.topPrev = top;
  }
}

void CGrassStraws::Constrain(float strength, float strength2) {
  constexpr float reach = kMaxStretch * kMaxStretch;
  for (int i = 0; i < m_Count; ++i) {
    Straw &s = m_Straws[i];
    HoldFrom(s.base, s.middle, s.h2, strength);
    HoldFrom(s.root, s.middle, s.h2x4, strength2);
    HoldBoth(s.middle, s.top, s.h2, strength);
    HoldFrom(s.base, s.top, s.h2x4, strength2);
    Leash(s.base, s.middle, s.h2 * reach);
    Leash(s.middle, s.top, s.h2 * reach);
    if (!Finite(s.middle) || !Finite(s.top)) {
      // Back to standing still, straight up from the root.
      const CVector3 up = s.base - s.root;
      s.middle = s.middlePrev = s.base + up;
      s.top = s.topPrev = s.base + up * 2;
    }
  }
}

void CGrassStraws::SetLook(const Look &look) {
  m_Look = look;
  m_Look.segments = std::clamp(look.segments, MinSegments, MaxSegments);
}

int CGrassStraws::StrawsPerBatch() const {
  const int s = m_Look.segments;
  return std::min(5500 / (2 * s + 6), 5000 / (2 * s + 4));
}

void CGrassStraws::StrawVertices(const Straw &straw, VertexPCT *out) const {
  const int s = m_Look.segments;
  const uint32_t c = m_Look.color;
  const float f = m_Look.topWidthFactor;
  const CVector3 wv = straw.side * straw.w;
  // A factor this small gives a pointed straw: one tip point, the texture's middle.
  const bool pointed = !(std::fabs(f) > 1e-05f);
  const CVector3 tipL = pointed ? straw.top : straw.top + wv * f, tipR = pointed ? straw.top : straw.top - wv * f;
  const float uL = pointed ? 0.5f : 0.0f, uR = pointed ? 0.5f : 1.0f;
  auto put = [&](const CVector3 &p, float u, float v) { *out++ = VertexPCT{p.x, p.y, p.z, u, v, c}; };
  put(tipL, uL, 0);
  put(tipR, uR, 0);
  const CVector3 midL = straw.middle + wv, midR = straw.middle - wv, rootL = straw.base + wv, rootR = straw.base - wv;
  for (int j = 1; j <= s; ++j) {
    const float p = static_cast<float>(j) / static_cast<float>(s + 1);
    put(Bezier(tipL, midL, rootL, p), Bezier(uL, 0, 0, p), p);
    put(Bezier(tipR, midR, rootR, p), Bezier(uR, 1, 1, p), p);
  }
  put(rootL, 0, 1);
  put(rootR, 1, 1);
}

bool CGrassStraws::RestoreDevice(CRender *render) {
  InvalidateDevice(render);
  if (m_Count == 0) return true;
  const int per = VerticesPerStraw(), batch = StrawsPerBatch();
  const int triVBufSize = batch * per, triIndexSize = batch * (per + 2);
  DeviceObjects *const dObjs = &Slot(render);
  for (int i = 0; i < RING_SIZE; ++i)
    if (DEVICE_FAILED(!(dObjs->m_VertexBuffer[i] = render->CreateVertexBuffer(triVBufSize, VBF_DYNAMIC, VBF_PCT))))
      return false;
  if (DEVICE_FAILED(!(dObjs->m_IndexBuffer = render->CreateIndexBuffer(triIndexSize, 0)))) return false;
  // One strip: straws joined by doubling the first index of each straw
  // after the first and the last of each; one closing index on the last vertex.
  uint16_t *out = dObjs->m_IndexBuffer->Lock();
  for (int k = 0; k < batch; ++k) {
    const int first = k * per;
    if (k > 0) *out++ = static_cast<uint16_t>(first);
    for (int i = 0; i < per; ++i) *out++ = static_cast<uint16_t>(first + i);
    *out++ = static_cast<uint16_t>(first + per - 1);
  }
  *out = static_cast<uint16_t>(triVBufSize - 1);
  dObjs->m_IndexBuffer->Unlock();
  return true;
}

void CGrassStraws::Draw(CRender *render) {
  if (!HasRing(render, true)) return;
  const int per = VerticesPerStraw();
  const int batch = std::min(StrawsPerBatch(), RingBuffer(render)->m_Size / per);
  for (int done = 0; done < m_Count && batch > 0;) {
    const int n = std::min(m_Count - done, batch);
    CVertexBuffer *vb = RingBuffer(render);
    auto *out = static_cast<VertexPCT *>(vb->Lock());
    for (int i = 0; i < n; ++i, out += per) StrawVertices(m_Straws[done + i], out);
    vb->Unlock();
    render->SetIndexBuffer(Slot(render).m_IndexBuffer);
    render->SetVertexBuffer(vb);
    // The strip's last triangle would join the next straw, which this batch
    // may not hold; it is degenerate, so it is left out.
    render->DrawIndexedPrimitive(PT_TriangleStrip, n * per, n * (per + 2) - 3);
    AdvanceRing();
    done += n;
  }
}
