#pragma once
// A two-dimensional Voronoi diagram by Fortune's plane sweep, in single
// precision, clipped to a box. The output is one record per cell border and
// side: every border appears twice, once for each of its two sites, and each
// site sees its own borders turning the same way, so a fan from the site
// covers its cell. Storage comes from pools that a run resets, so a diagram
// rebuilt every frame allocates only while it grows.

#include <cstdint>
#include <memory>
#include <vector>

class CVoronoi {
 public:
  struct Point {
    float x, y;
  };
  struct Edge {
    float x1, y1, x2, y2;
    int32_t site;  // index of the point whose cell this border closes
  };

  CVoronoi();
  ~CVoronoi();
  CVoronoi(const CVoronoi &) = delete;
  CVoronoi &operator=(const CVoronoi &) = delete;

  // Builds the diagram of the first n points; bounds are put in order.
  // Points that aren't finite take no part. Borders between sites nearer
  // than `minSiteDistance` are dropped, and so are exact duplicates.
  void GenerateVoronoi(const Point *points, int n, float minX, float maxX, float minY, float maxY,
                       float minSiteDistance = 0.001f);

  const std::vector<Edge> &Edges() const { return m_Edges; }

 private:
  struct Sweep;
  std::unique_ptr<Sweep> m_Sweep;
  std::vector<Edge> m_Edges;
};
