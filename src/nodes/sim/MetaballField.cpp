#include "nodes/sim/MetaballField.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr int kCorner[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 0, 1}, {0, 0, 1}, {0, 1, 0}, {1, 1, 0}, {1, 1, 1}, {0, 1, 1}};
constexpr int kEdge[12][2] = {{0, 1}, {1, 2}, {3, 2}, {0, 3}, {4, 5}, {5, 6}, {7, 6}, {4, 7}, {0, 4}, {1, 5}, {3, 7}, {2, 6}};

// The triangle table in the numbering above, and which neighbours the
// surface of each case reaches. The table is derived rather than typed:
// on every face each run of inside corners is cut off by its own segment,
// a rule that sees only the face's four corners, so the two voxels that
// share a face always cut it alike and the surface has no cracks.
struct Tables {
  int8_t triangles[256][16];
  uint8_t neighbours[256];

  Tables() {
    int edgeOf[8][8];
    for (int e = 0; e < 12; ++e) edgeOf[kEdge[e][0]][kEdge[e][1]] = edgeOf[kEdge[e][1]][kEdge[e][0]] = e;
    // Each face's corners in turn around its outward normal.
    int faces[6][4];
    for (int axis = 0, f = 0; axis < 3; ++axis)
      for (int side = 0; side < 2; ++side, ++f) {
        const int u = (axis + 1) % 3, w = (axis + 2) % 3;
        const int cycle[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
        for (int q = 0; q < 4; ++q) {
          const int *uw = cycle[side ? q : 3 - q];
          for (int c = 0; c < 8; ++c)
            if (kCorner[c][axis] == side && kCorner[c][u] == uw[0] && kCorner[c][w] == uw[1]) faces[f][q] = c;
        }
      }
    for (int c = 0; c < 256; ++c) {
      // next[e]: the edge that the segment entering the cube through e leads to.
      int next[12];
      std::fill(next, next + 12, -1);
      for (const int *face : faces)
        for (int q = 0; q < 4; ++q) {
          const int a = face[q], b = face[(q + 1) % 4];
          if ((c >> a & 1) || !(c >> b & 1)) continue;  // an edge into an inside run
          int m = (q + 1) % 4;
          while (c >> face[(m + 1) % 4] & 1) m = (m + 1) % 4;
          next[edgeOf[a][b]] = edgeOf[face[m]][face[(m + 1) % 4]];
        }
      int8_t *out = triangles[c];
      bool used[12] = {};
      for (int start = 0; start < 12; ++start) {
        if (next[start] < 0 || used[start]) continue;
        int loop[12], n = 0;
        for (int e = start; !used[e]; e = next[e]) used[e] = true, loop[n++] = e;
        for (int t = 1; t + 1 < n; ++t) *out++ = loop[0], *out++ = loop[t], *out++ = loop[t + 1];
      }
      std::fill(out, triangles[c] + 16, int8_t{-1});
      const int masks[6] = {0x66, 0x99, 0xF0, 0x0F, 0xCC, 0x33};
      neighbours[c] = 0;
      for (int bit = 0; bit < 6; ++bit)
        if ((c & masks[bit]) != 0 && (c & masks[bit]) != masks[bit]) neighbours[c] |= 1 << bit;
    }
  }
};
const Tables g_Tables;

}  // namespace

void CMetaballField::SetGrid(int n) {
  n = std::clamp(n, 2, MaxGrid);
  if (n == m_N) return;
  m_N = n;
  m_V = 2.0f / static_cast<float>(n);
  const size_t points = static_cast<size_t>(n + 1) * (n + 1) * (n + 1);
  m_Energy.assign(points, 0.0f);
  m_Known.assign(points, 0);
  m_State.assign(points, 0);
  m_Stamp = 0;
  // Room for a surface that wraps the whole grid, so that steady frames never grow it.
  m_Open.reserve(std::max<size_t>(1024, static_cast<size_t>(18) * (n + 1) * (n + 1)));
}

void CMetaballField::NewStamp() {
  if (m_Stamp == 0 || m_Stamp >= 253) {
    std::fill(m_Known.begin(), m_Known.end(), 0);
    std::fill(m_State.begin(), m_State.end(), 0);
    m_Stamp = 1;
  } else {
    m_Stamp += 2;
  }
}

float CMetaballField::Energy(int i, int j, int k) {
  const int index = Index(i, j, k);
  if (m_Known[index] == m_Stamp) return m_Energy[index];
  float e = 0.0f;
  if (i > 0 && j > 0 && k > 0 && i < m_N && j < m_N && k < m_N) {
    const float p[3] = {i * m_V - 1, j * m_V - 1, k * m_V - 1};
    for (int b = 0; b < m_BallCount; ++b) {
      const float *q = m_Balls[b].pos;
      const float dx = p[0] - q[0], dy = p[1] - q[1], dz = p[2] - q[2];
      e += m_Balls[b].mass / std::max(dx * dx + dy * dy + dz * dz, 0.0001f);
    }
  }
  m_Known[index] = m_Stamp;
  return m_Energy[index] = e;
}

int CMetaballField::ComputeVoxel(int i, int j, int k) {
  ++m_Visited;
  float e[8];
  int c = 0;
  for (int n = 0; n < 8; ++n) {
    e[n] = Energy(i + kCorner[n][0], j + kCorner[n][1], k + kCorner[n][2]);
    if (e[n] > m_Level) c |= 1 << n;
  }
  m_State[Index(i, j, k)] = m_Stamp + 1;
  const int8_t *row = g_Tables.triangles[c];
  if (row[0] < 0) return c;

  int vertexOfEdge[12];
  std::fill(vertexOfEdge, vertexOfEdge + 12, -1);
  const int base[3] = {i, j, k};
  for (int t = 0; row[t] >= 0; t += 3) {
    for (int s : {0, 2, 1}) {  // a, b, c stored as a, c, b
      const int edge = row[t + s];
      if (vertexOfEdge[edge] < 0) {
        const int c0 = kEdge[edge][0], c1 = kEdge[edge][1];
        const float f = (m_Level - e[c0]) / (e[c1] - e[c0]);
        // Grid coordinates first, so that voxels sharing an edge put its vertex on the same bits.
        float p[3];
        for (int a = 0; a < 3; ++a)
          p[a] = (static_cast<float>(base[a] + kCorner[c0][a]) + f * static_cast<float>(kCorner[c1][a] - kCorner[c0][a])) *
                     m_V - 1.0f;
        float n[3] = {0, 0, 0};
        for (int b = 0; b < m_BallCount; ++b) {
          const float d[3] = {p[0] - m_Balls[b].pos[0], p[1] - m_Balls[b].pos[1], p[2] - m_Balls[b].pos[2]};
          const float r2 = std::max(d[0] * d[0] + d[1] * d[1] + d[2] * d[2], 0.0001f);
          const float w = 2.0f * m_Balls[b].mass / (r2 * r2);
          for (int a = 0; a < 3; ++a) n[a] += d[a] * w;
        }
        const float len2 = n[0] * n[0] + n[1] * n[1] + n[2] * n[2];
        const float inv = len2 > 0.0f && std::isfinite(len2) ? FastInvSqrt(len2) : 0.0f;
        for (float &x : n) x *= inv;
        m_Sink->m_Vertices[m_VertexCount] = {p[0], p[1], p[2], n[0], n[1], n[2], n[0] * 0.5f + 0.5f, 0.5f - n[1] * 0.5f,
                                             0xFFFFFFFFu};
        vertexOfEdge[edge] = m_VertexCount++;
      }
      m_Sink->m_Indices[m_IndexCount++] = static_cast<uint16_t>(vertexOfEdge[edge]);
    }
  }
  if (m_IndexCount >= FlushIndices) {
    m_Sink->Flush(m_VertexCount, m_IndexCount, false);
    m_VertexCount = m_IndexCount = 0;
  }
  return c;
}

void CMetaballField::AddNeighbours(int i, int j, int k, int c) {
  static constexpr int kStep[6][3] = {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}, {0, 0, 1}, {0, 0, -1}};
  const uint8_t bits = g_Tables.neighbours[c];
  for (int b = 0; b < 6; ++b) {
    if (!(bits >> b & 1)) continue;
    const int x = i + kStep[b][0], y = j + kStep[b][1], z = k + kStep[b][2];
    if (x < 0 || y < 0 || z < 0 || x >= m_N || y >= m_N || z >= m_N) continue;
    uint8_t &state = m_State[Index(x, y, z)];
    if (state == m_Stamp || state == m_Stamp + 1) continue;
    state = m_Stamp;
    m_Open.insert(m_Open.end(), {x, y, z});
  }
}

void CMetaballField::Polygonise(const MetaBall *balls, int count, float level, Sink &sink) {
  m_Balls = balls;
  m_BallCount = count;
  m_Level = level;
  m_Sink = &sink;
  m_VertexCount = m_IndexCount = m_Visited = 0;
  if (m_N < 2) SetGrid(2);
  NewStamp();
  for (int b = 0; b < count; ++b) {
    int v[3];
    for (int a = 0; a < 3; ++a) {
      const float cell = (balls[b].pos[a] + 1.0f) / m_V + 0.5f;
      v[a] = cell > 0.0f ? std::min(static_cast<int>(std::min(cell, 1e6f)), m_N - 1) : 0;
    }
    int c = 0;
    for (;;) {
      if (Computed(Index(v[0], v[1], v[2]))) break;
      c = ComputeVoxel(v[0], v[1], v[2]);
      if (c < 255 || v[2] == 0) break;
      --v[2];  // wholly inside: walk down to the surface
    }
    if (c == 0 || c == 255) continue;
    AddNeighbours(v[0], v[1], v[2], c);
    while (!m_Open.empty()) {
      const int z = m_Open.back(), y = m_Open[m_Open.size() - 2], x = m_Open[m_Open.size() - 3];
      m_Open.resize(m_Open.size() - 3);
      AddNeighbours(x, y, z, ComputeVoxel(x, y, z));
    }
  }
  sink.Flush(m_VertexCount, m_IndexCount, true);
}
