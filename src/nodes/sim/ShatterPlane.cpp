#include "nodes/sim/ShatterPlane.h"

#include <algorithm>
#include <cmath>

#include "core/Numeric.h"
#include "nodes/object/SimRandom.h"
#include "nodes/sim/DistanceConstraint.h"
#include "render/DeviceCheck.h"

namespace {
// Shared by every Shatter of the process, so that two planes that rebuild
// in turn show one style each.
int g_ShatterStyle = -1;

int NextStyle() {
  if (g_ShatterStyle < 0) g_ShatterStyle = SatInt(2 * DrawUnsigned()) % 2;
  g_ShatterStyle = (g_ShatterStyle + 1) % 2;
  return g_ShatterStyle;
}

float Dist2(const CVector3 &a, const CVector3 &b) { return Dot(a - b, a - b); }
}  // namespace

void CShatterPlane::Rebuild(int numPoints) {
  const int n = std::clamp(numPoints, 1, MaxPoints);
  m_Style = NextStyle();
  const float s1 = DrawSigned(), s2 = DrawSigned();
  DrawSigned();
  const CVector3 impact{1.5f * s1, 1.5f * s2, 0};
  m_Input.assign({{-3, 3}, {3, 3}, {3, -3}, {-3, -3}});
  if (m_Style == 0) {
    for (int i = 4; i < n; ++i) {
      const float x = 3 * DrawSigned();
      m_Input.push_back({x, 3 * DrawSigned()});
    }
  } else {
    // Rings around the hit, denser near it.
    m_Input.push_back({impact.x, impact.y});
    const int m = n / 5;
    for (float r : {0.25f, 0.5f, 1.0f, 2.0f, 4.0f})
      for (int k = 0; k < m; ++k) {
        const float a = 6.2831855f * static_cast<float>(k) / static_cast<float>(m);
        const float jx = 0.4f * r * DrawSigned(), jy = 0.4f * r * DrawSigned();
        const float x = impact.x + r * std::cos(a) + jx, y = impact.y + r * std::sin(a) + jy;
        if (x >= -3 && x <= 3 && y >= -3 && y <= 3) m_Input.push_back({x, y});
      }
  }
  if (!m_Triangulator.Run(m_Input.data(), static_cast<int>(m_Input.size()))) return;

  const CTriangulator &t = m_Triangulator;
  const float spanX = std::max(t.MaxX() - t.MinX(), 1e-6f), spanY = std::max(t.MaxY() - t.MinY(), 1e-6f);
  const int mode = SatInt(5 * DrawUnsigned());
  m_Count = t.TriangleCount();
  if (static_cast<size_t>(m_Count) > m_Shards.size()) m_Shards.resize(m_Count);
  for (int i = 0; i < m_Count; ++i) {
    Shard &s = m_Shards[i];
    const CTriangulator::Triangle &tri = t.Triangles()[i];
    float meanU = 0, meanV = 0;
    for (int k = 0; k < 3; ++k) {
      const CTriangulator::Point &p = t.Points()[k == 0 ? tri.a : k == 1 ? tri.b : tri.c];
      Vertex &v = s.v[k];
      v.home = v.position = v.previous = {p.x, p.y, 0};
      v.u = (p.x - t.MinX()) / spanX;
      v.v = (p.y - t.MinY()) / spanY;
      meanU += v.u / 3;
      meanV += v.v / 3;
    }
    for (int k = 0; k < 3; ++k) s.edge2[k] = Dist2(s.v[k].home, s.v[(k + 1) % 3].home);
    s.normal = {0, 0, 1};
    if (mode <= 1) {
      s.rank = meanV;  // one side first
    } else if (mode <= 3) {
      const float qx = 2 * meanU - 1, qy = 2 * meanV - 1;  // corners first, the middle last
      s.rank = 1 - std::min(1.0f, std::sqrt(qx * qx + qy * qy) / 1.414214f);
    } else {
      s.rank = DrawUnsigned();
    }
  }
  Push(m_Style, impact);
}

// The push goes into the previous positions, so it becomes each vertex's
// first velocity.
void CShatterPlane::Push(int style, const CVector3 &impact) {
  if (style == 0) {
    // An explosion behind the plane, strongest near it.
    const float cy = -2 * DrawUnsigned(), cz = -(4 * DrawUnsigned() + 0.1f);
    const CVector3 centre{0, cy, cz};
    const float strength = 0.3f * DrawUnsigned() + 0.2f;
    for (int i = 0; i < m_Count; ++i)
      for (Vertex &v : m_Shards[i].v) {
        const float d2 = Dist2(v.position, centre);
        if (d2 > 100) continue;
        const float f = 1 - std::sqrt(d2) / 10;
        float k = f * f * strength;
        k += k * DrawSigned();
        v.previous = v.previous - Normalize(v.position - centre) * k;
      }
    return;
  }
  // A hit at the impact point, hardest near it, fanned out towards +z.
  const float radius = 3 * DrawUnsigned() + 1.5f;
  const float top = 0.3f * DrawUnsigned() + 0.4f;
  const float low = (0.02f * DrawUnsigned() + 0.01f) * top;
  for (int i = 0; i < m_Count; ++i)
    for (Vertex &v : m_Shards[i].v) {
      const float d = std::sqrt(Dist2(v.position, impact));
      const float f = (1 - std::min(d, radius) / radius) * (top - low) + low;
      const float y = 0.5f * DrawSigned(), x = 0.5f * DrawSigned();
      const float l = std::sqrt(x * x + y * y + 1);
      v.previous = v.previous - CVector3{x / l, y / l, 1 / l} * (f * f);
    }
}

void CShatterPlane::Step(float clock, const CVector3 &gravity, const Timing &tm) {
  const CVector3 g = gravity * 0.0011111113f;
  const float fallEnd = tm.delay + tm.duration;
  for (int i = 0; i < m_Count; ++i) {
    Shard &s = m_Shards[i];
    if (clock > tm.delay && clock < fallEnd) {
      for (Vertex &v : s.v) {
        const CVector3 vel = (v.position - v.previous) * 0.995f + g;
        v.previous = v.position;
        v.position = v.position + vel;
        if (v.position.y >= Floor) continue;
        // The floor takes three quarters of the sliding speed and reverses
        // half of the speed into it.
        const CVector3 in = v.position - v.previous;
        const float correction = Floor - v.position.y;
        v.position.y = Floor;
        if (Dot(in, in) > 1e-05f && correction * correction > 1e-05f) {
          const CVector3 into{0, in.y, 0}, slide{in.x, 0, in.z};
          v.previous = v.position - (slide * 0.25f - into * 0.5f);
        }
      }
    } else if (clock > fallEnd) {
      const float span = s.rank * tm.rebuildVar + tm.rebuild;
      const float q = span > 0 ? std::min((clock - fallEnd) / span, 1.0f) : 1.0f;
      const float e = q * q * (3 - 2 * q);
      for (Vertex &v : s.v) v.position = v.previous + (v.home - v.previous) * e;
    }
    s.normal = Normalize(Cross(s.v[0].position - s.v[2].position, s.v[0].position - s.v[1].position));
    for (int k = 0; k < 3; ++k) HoldBoth(s.v[k].position, s.v[(k + 1) % 3].position, s.edge2[k]);
  }
}

bool CShatterPlane::RestoreDevice(CRender *render) {
  InvalidateDevice(render);
  return CreateTriangleRing(render, TrianglesPerBatch, VBF_PNTC);
}

void CShatterPlane::Draw(CRender *render) {
  if (!HasRing(render, true)) return;
  for (int done = 0; done < m_Count;) {
    const int n = std::min(m_Count - done, TrianglesPerBatch);
    CVertexBuffer *vb = RingBuffer(render);
    auto *out = static_cast<VertexPNTC *>(vb->Lock());
    for (int i = 0; i < n; ++i) {
      const Shard &s = m_Shards[done + i];
      for (const Vertex &v : s.v)
        *out++ = VertexPNTC{v.position.x, v.position.y, v.position.z, s.normal.x, s.normal.y, s.normal.z, v.u, v.v,
                            0xFFFFFFFFu};
    }
    vb->Unlock();
    DrawTriangleChunk(render, n);
    done += n;
  }
}
