#pragma once
// Incremental Delaunay triangulation (Bowyer and Watson) of points in the
// plane, sweeping them in order of x so that triangles left behind by the
// sweep are no longer tested. Storage grows by need and is kept between
// runs.

#include <vector>

class CTriangulator {
 public:
  struct Point {
    float x, y;
  };
  struct Triangle {
    int a, b, c;  // into Points(), all turning the same way
  };

  // Triangulates `points`: sorted by x, exact duplicates dropped. False when
  // the run needed more than 4 triangles per point (then no triangles).
  bool Run(const Point *points, int count);

  const std::vector<Point> &Points() const { return m_Points; }
  int PointCount() const { return m_Count; }
  const Triangle *Triangles() const { return m_Triangles.data(); }
  int TriangleCount() const { return m_TriangleCount; }
  float MinX() const { return m_MinX; }
  float MaxX() const { return m_MaxX; }
  float MinY() const { return m_MinY; }
  float MaxY() const { return m_MaxY; }

 private:
  struct Edge {
    int a, b;
  };
  // Whether `p` lies in the circumcircle of `t`; the circle's centre and
  // squared radius come back in xc, yc and r2 (none for a flat triangle).
  bool InCircle(const Point &p, const Triangle &t, float &xc, float &yc, float &r2, bool &flat) const;
  void FillNotches(int capacity);
  // Positive where a -> b -> c turns left.
  double Turn(int a, int b, int c) const;
  // Whether `p` lies in the triangle or on its edges.
  bool Inside(const Point &p, int a, int b, int c) const;

  std::vector<Point> m_Points;  // the points, then the super triangle's three
  std::vector<Triangle> m_Triangles;
  std::vector<char> m_Complete;
  std::vector<Edge> m_Edges;
  std::vector<int> m_Next, m_Prev;  // the boundary after the run, both ways
  int m_Count = 0, m_TriangleCount = 0;
  float m_MinX = 0, m_MaxX = 0, m_MinY = 0, m_MaxY = 0;
};
