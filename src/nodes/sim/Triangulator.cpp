#include "nodes/sim/Triangulator.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr float kEpsilon = 1e-05f;
}

bool CTriangulator::InCircle(const Point &p, const Triangle &t, float &xc, float &yc, float &r2, bool &flat) const {
  const Point &p1 = m_Points[t.a], &p2 = m_Points[t.b], &p3 = m_Points[t.c];
  const float dy12 = std::fabs(p1.y - p2.y), dy23 = std::fabs(p2.y - p3.y);
  flat = dy12 < kEpsilon && dy23 < kEpsilon;
  if (flat) return false;
  // The centre is where the perpendicular bisectors of two sides meet.
  const float mx1 = (p1.x + p2.x) * 0.5f, my1 = (p1.y + p2.y) * 0.5f;
  const float mx2 = (p2.x + p3.x) * 0.5f, my2 = (p2.y + p3.y) * 0.5f;
  if (dy12 < kEpsilon) {
    const float m2 = -(p3.x - p2.x) / (p3.y - p2.y);
    xc = mx1;
    yc = m2 * (xc - mx2) + my2;
  } else if (dy23 < kEpsilon) {
    const float m1 = -(p2.x - p1.x) / (p2.y - p1.y);
    xc = mx2;
    yc = m1 * (xc - mx1) + my1;
  } else {
    const float m1 = -(p2.x - p1.x) / (p2.y - p1.y), m2 = -(p3.x - p2.x) / (p3.y - p2.y);
    xc = (m1 * mx1 - m2 * mx2 + my2 - my1) / (m1 - m2);
    // The steeper side's bisector is the better conditioned one.
    yc = dy12 > dy23 ? m1 * (xc - mx1) + my1 : m2 * (xc - mx2) + my2;
  }
  r2 = (p2.x - xc) * (p2.x - xc) + (p2.y - yc) * (p2.y - yc);
  const float d2 = (p.x - xc) * (p.x - xc) + (p.y - yc) * (p.y - yc);
  return d2 - r2 <= kEpsilon;
}

bool CTriangulator::Run(const Point *points, int count) {
  m_Points.assign(points, points + std::max(count, 0));
  std::sort(m_Points.begin(), m_Points.end(), [](const Point &a, const Point &b) {
    return a.x < b.x || (a.x == b.x && a.y < b.y);
  });
  // A point twice would only add triangles of no area.
  m_Points.erase(std::unique(m_Points.begin(), m_Points.end(),
                             [](const Point &a, const Point &b) { return a.x == b.x && a.y == b.y; }),
                 m_Points.end());
  const int n = m_Count = static_cast<int>(m_Points.size());
  m_TriangleCount = 0;
  if (n == 0) return true;
  m_MinX = m_MaxX = m_Points[0].x;
  m_MinY = m_MaxY = m_Points[0].y;
  for (const Point &p : m_Points) {
    m_MinX = std::min(m_MinX, p.x), m_MaxX = std::max(m_MaxX, p.x);
    m_MinY = std::min(m_MinY, p.y), m_MaxY = std::max(m_MaxY, p.y);
  }
  if (n < 3) return true;
  const float dmax = std::max({m_MaxX - m_MinX, m_MaxY - m_MinY, kEpsilon});
  const float mx = (m_MaxX + m_MinX) * 0.5f, my = (m_MaxY + m_MinY) * 0.5f;
  m_Points.push_back({mx - 20 * dmax, my - dmax});
  m_Points.push_back({mx, my + 20 * dmax});
  m_Points.push_back({mx + 20 * dmax, my - dmax});

  const int capacity = 4 * n;
  if (static_cast<int>(m_Triangles.size()) < capacity) {
    m_Triangles.resize(capacity);
    m_Complete.resize(capacity);
  }
  m_Triangles[0] = {n, n + 1, n + 2};
  m_Complete[0] = 0;
  int triangles = 1;
  for (int i = 0; i < n; ++i) {
    const Point &p = m_Points[i];
    m_Edges.clear();
    for (int j = 0; j < triangles; ++j) {
      if (m_Complete[j]) continue;
      float xc = 0, yc = 0, r2 = 0;
      bool flat = false;
      const bool inside = InCircle(p, m_Triangles[j], xc, yc, r2, flat);
      // Points come in order of x: one right of the whole circle means no
      // later point can fall in it.
      if (!flat && xc < p.x && (p.x - xc) * (p.x - xc) > r2) m_Complete[j] = 1;
      if (inside) {
        const Triangle &t = m_Triangles[j];
        m_Edges.insert(m_Edges.end(), {{t.a, t.b}, {t.b, t.c}, {t.c, t.a}});
        m_Triangles[j] = m_Triangles[triangles - 1];
        m_Complete[j] = m_Complete[triangles - 1];
        --triangles;
        --j;
      }
    }
    // An edge between two removed triangles is inside the hole: both go.
    for (size_t a = 0; a < m_Edges.size(); ++a)
      for (size_t b = a + 1; b < m_Edges.size(); ++b)
        if ((m_Edges[a].a == m_Edges[b].b && m_Edges[a].b == m_Edges[b].a) ||
            (m_Edges[a].a == m_Edges[b].a && m_Edges[a].b == m_Edges[b].b)) {
          m_Edges[a] = m_Edges[b] = {-1, -1};
        }
    for (const Edge &e : m_Edges) {
      if (e.a < 0) continue;
      if (triangles >= capacity) return false;
      m_Triangles[triangles] = {e.a, e.b, i};
      m_Complete[triangles] = 0;
      ++triangles;
    }
  }
  // Triangles on the super triangle's corners lie outside the points' hull.
  int kept = 0;
  for (int j = 0; j < triangles; ++j) {
    const Triangle &t = m_Triangles[j];
    if (t.a < n && t.b < n && t.c < n) m_Triangles[kept++] = t;
  }
  m_TriangleCount = kept;
  m_Points.resize(n);
  return true;
}
