#include "portdata/RenderVolumeLines.h"

#include <algorithm>

namespace {
// Left and right corners first, then the next pair's: the strip visits
// left, next left, right, next right.
const int VOLUME_LINE_PATTERN[6] = {0, 2, 1, 3, 3, 4};

// The pair of vertices across point `p` for direction `d`.
void WritePair(const CRenderVolumeLines::StripPoint &p, const CVector3 &d, float u, VertexPCT *out) {
  const CVector3 half = FastSide(d) * (p.width * 0.5f);
  out[0] = VertexPCT{p.x - half.x, p.y - half.y, p.z - half.z, 0.0f, p.v, p.color};
  out[1] = VertexPCT{p.x + half.x, p.y + half.y, p.z + half.z, u, p.v, p.color};
}

CVector3 Position(const CRenderVolumeLines::StripPoint &p) { return {p.x, p.y, p.z}; }
}  // namespace

CRenderVolumeLines::CRenderVolumeLines() : CQuadBatch(VOLUME_LINE_PATTERN) {}

void CRenderVolumeLines::Clear() {
  m_Used = 0;
  m_Strips.clear();
  m_Count = 0;
}

CRenderVolumeLines::StripPoint *CRenderVolumeLines::AddStrip(int points, float u) {
  points = std::max(points, 0);
  if (m_Points.size() < m_Used + points) m_Points.resize(m_Used + points);
  m_Strips.push_back(Strip{m_Used, points, u});
  StripPoint *out = m_Points.data() + m_Used;
  m_Used += points;
  return out;
}

void CRenderVolumeLines::Finish() {
  int quads = 0;
  for (const Strip &s : m_Strips) quads += std::max(s.count - 1, 0);
  if (static_cast<int>(m_Items.size()) < quads) m_Items.resize(quads);
  Quad *out = m_Items.data();
  for (const Strip &s : m_Strips) {
    if (s.count < 2) continue;
    const StripPoint *p = &m_Points[s.first];
    const int n = s.count;
    // Each inner pair closes the quad before it and opens the next.
    WritePair(p[0], Position(p[1]) - Position(p[0]), s.u, out->v);
    for (int i = 1; i < n - 1; ++i) {
      WritePair(p[i], Position(p[i + 1]) - Position(p[i - 1]), s.u, out->v + 2);
      ++out;
      out->v[0] = out[-1].v[2];
      out->v[1] = out[-1].v[3];
    }
    WritePair(p[n - 1], Position(p[n - 1]) - Position(p[n - 2]), s.u, out->v + 2);
    ++out;
  }
  m_Count = quads;
}
