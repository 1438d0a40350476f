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
  FillNotches(capacity);
  return true;
}

double CTriangulator::Turn(int a, int b, int c) const {
  const Point &p = m_Points[a], &q = m_Points[b], &r = m_Points[c];
  return (double(q.x) - p.x) * (double(r.y) - q.y) - (double(q.y) - p.y) * (double(r.x) - q.x);
}

bool CTriangulator::Inside(const Point &p, int a, int b, int c) const {
  const Point &pa = m_Points[a], &pb = m_Points[b], &pc = m_Points[c];
  auto side = [&](const Point &u, const Point &v) {
    return (double(v.x) - u.x) * (double(p.y) - u.y) - (double(v.y) - u.y) * (double(p.x) - u.x);
  };
  const double s1 = side(pa, pb), s2 = side(pb, pc), s3 = side(pc, pa);
  return (s1 >= 0 && s2 >= 0 && s3 >= 0) || (s1 <= 0 && s2 <= 0 && s3 <= 0);
}

// The super triangle is finite: where points lie close to the hull, a
// circle through a hull edge and such a point reaches past the super
// triangle's corners, and the hull triangle goes with them. The boundary
// then has notches (left turns, as it runs with the triangles on its
// right); closing each with a triangle restores the hull.
void CTriangulator::FillNotches(int capacity) {
  const int n = m_Count;
  m_Edges.clear();
  for (int j = 0; j < m_TriangleCount; ++j) {
    const Triangle &t = m_Triangles[j];
    m_Edges.insert(m_Edges.end(), {{t.a, t.b}, {t.b, t.c}, {t.c, t.a}});
  }
  // Boundary edges are those whose reverse no triangle has.
  std::sort(m_Edges.begin(), m_Edges.end(), [](const Edge &x, const Edge &y) {
    return std::min(x.a, x.b) < std::min(y.a, y.b) ||
           (std::min(x.a, x.b) == std::min(y.a, y.b) && std::max(x.a, x.b) < std::max(y.a, y.b));
  });
  m_Next.assign(n, -1);
  m_Prev.assign(n, -1);
  auto same = [](const Edge &x, const Edge &y) { return std::min(x.a, x.b) == std::min(y.a, y.b) && std::max(x.a, x.b) == std::max(y.a, y.b); };
  for (size_t i = 0; i < m_Edges.size();) {
    size_t k = i + 1;
    while (k < m_Edges.size() && same(m_Edges[i], m_Edges[k])) ++k;
    if (k - i == 1) {
      const Edge &e = m_Edges[i];
      // A vertex where the boundary touches itself: left as it is.
      if (m_Next[e.a] >= 0 || m_Prev[e.b] >= 0) return;
      m_Next[e.a] = e.b;
      m_Prev[e.b] = e.a;
    }
    i = k;
  }
  for (bool closed = true; closed;) {
    closed = false;
    for (int b = 0; b < n && m_TriangleCount < capacity; ++b) {
      const int a = m_Prev[b], c = m_Next[b];
      if (a < 0 || c < 0 || a == c || Turn(a, b, c) <= 0) continue;
      bool empty = true;
      for (int i = 0; i < n && empty; ++i)
        if (i != a && i != b && i != c && Inside(m_Points[i], a, b, c)) empty = false;
      if (!empty) continue;
      m_Triangles[m_TriangleCount++] = {a, c, b};
      m_Next[a] = c;
      m_Prev[c] = a;
      m_Next[b] = m_Prev[b] = -1;
      closed = true;
    }
  }
}
