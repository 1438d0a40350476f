// The diagram's contract, on random and degenerate site sets, checked by its
// geometry and against Boost.Polygon's exact diagram of the same sites.
#include <gtest/gtest.h>

#include <boost/polygon/voronoi.hpp>
#include <cmath>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "nodes/sim/Voronoi.h"

namespace {
constexpr int kRange = 10000;  // integer sites 0..kRange map onto the box -1..1
constexpr float kTol = 2e-3f;
using Cell = std::pair<int, int>;
using Adjacency = std::set<std::pair<Cell, Cell>>;

struct SiteSet {
  const char *name;
  std::vector<Cell> sites;
};

float ToBox(double v) { return static_cast<float>(v * 2.0 / kRange - 1.0); }
float Dist(float x, float y, const CVoronoi::Point &p) { return std::hypot(x - p.x, y - p.y); }
bool OnBorder(float x, float y) { return std::fabs(std::fabs(x) - 1) < 1e-4f || std::fabs(std::fabs(y) - 1) < 1e-4f; }
std::pair<Cell, Cell> Pair(Cell a, Cell b) { return a < b ? std::make_pair(a, b) : std::make_pair(b, a); }

std::vector<SiteSet> SiteSets() {
  std::mt19937 rng(7);
  std::uniform_int_distribution<int> coord(0, kRange);
  auto random = [&](int n) {
    std::vector<Cell> s;
    for (int i = 0; i < n; ++i) s.emplace_back(coord(rng), coord(rng));
    return s;
  };
  std::vector<SiteSet> sets = {{"random 300", random(300)}, {"random 1500", random(1500)}};
  std::vector<Cell> dup = random(60), diagonal, row, column, grid, border;
  for (int i = 0; i < 60; i += 2) dup.push_back(dup[i]);
  for (int i = 0; i < 40; ++i) {
    diagonal.emplace_back(i * 240 + 100, i * 240 + 100);
    row.emplace_back(i * 250, 5000);
    column.emplace_back(3000, i * 250 + 7);
    border.emplace_back(i % 4 < 2 ? 0 : kRange, coord(rng));
    border.emplace_back(coord(rng), i % 2 ? 0 : kRange);
  }
  for (int i = 0; i < 100; ++i) grid.emplace_back(500 + (i % 10) * 1000, 500 + (i / 10) * 1000);
  sets.push_back({"duplicates", dup});
  sets.push_back({"collinear diagonal", diagonal});
  sets.push_back({"one horizontal line", row});
  sets.push_back({"one vertical line", column});
  sets.push_back({"cocircular grid", grid});
  sets.push_back({"on the box edge", border});
  sets.push_back({"two sites", {{1000, 2000}, {7000, 6500}}});
  return sets;
}

// Vertices inside the box and adjacencies along interior borders of the exact diagram.
void BoostDiagram(const std::vector<Cell> &sites, std::vector<CVoronoi::Point> &vertices, Adjacency &all,
                  Adjacency &interior) {
  std::vector<boost::polygon::point_data<int>> in;
  for (const Cell &c : sites) in.emplace_back(c.first, c.second);
  boost::polygon::voronoi_diagram<double> vd;
  boost::polygon::construct_voronoi(in.begin(), in.end(), &vd);
  for (const auto &v : vd.vertices()) {
    const float x = ToBox(v.x()), y = ToBox(v.y());
    if (std::fabs(x) < 1 - kTol && std::fabs(y) < 1 - kTol) vertices.push_back({x, y});
  }
  for (const auto &e : vd.edges()) {
    if (!e.is_primary()) continue;
    const Cell s1 = sites[e.cell()->source_index()], s2 = sites[e.twin()->cell()->source_index()];
    const auto key = Pair(s1, s2);
    all.insert(key);
    // Sites nearer than the minimum distance share no border by design.
    if (std::hypot(s1.first - s2.first, s1.second - s2.second) * 2.0 / kRange < 0.001) continue;
    const auto *a = e.vertex0(), *b = e.vertex1();
    if (!a || !b) continue;
    const float x1 = ToBox(a->x()), y1 = ToBox(a->y()), x2 = ToBox(b->x()), y2 = ToBox(b->y());
    const bool inside = std::fabs(x1) < 0.99f && std::fabs(y1) < 0.99f && std::fabs(x2) < 0.99f && std::fabs(y2) < 0.99f;
    if (inside && std::hypot(x2 - x1, y2 - y1) > 0.01f) interior.insert(key);
  }
}

bool Near(const std::vector<CVoronoi::Point> &set, float x, float y) {
  for (const auto &p : set)
    if (std::fabs(p.x - x) < kTol && std::fabs(p.y - y) < kTol) return true;
  return false;
}
}  // namespace

TEST(VoronoiTest, DiagramOfRandomAndDegenerateSitesIsTheExactDiagramClippedToTheBox) {
  CVoronoi voronoi;
  for (const SiteSet &set : SiteSets()) {
    SCOPED_TRACE(set.name);
    std::vector<CVoronoi::Point> points;
    for (const Cell &c : set.sites) points.push_back({ToBox(c.first), ToBox(c.second)});
    voronoi.GenerateVoronoi(points.data(), static_cast<int>(points.size()), 1, -1, 1, -1);
    const auto &edges = voronoi.Edges();
    ASSERT_EQ(edges.size() % 2, 0u);

    std::set<Cell> cells;
    Adjacency mine, mineInterior;
    std::vector<CVoronoi::Point> myVertices;
    for (size_t r = 0; r < edges.size(); ++r) {
      const CVoronoi::Edge &e = edges[r], &twin = edges[r ^ 1];
      const CVoronoi::Point &s = points[e.site];
      cells.insert(set.sites[e.site]);
      ASSERT_TRUE(e.x1 == twin.x2 && e.y1 == twin.y2 && e.x2 == twin.x1 && e.y2 == twin.y1) << r;
      // Inside the box, and the site on the left: every cell is an intersection of half-planes.
      for (float c : {e.x1, e.y1, e.x2, e.y2}) ASSERT_LE(std::fabs(c), 1.0f) << r;
      const float len = std::hypot(e.x2 - e.x1, e.y2 - e.y1);
      EXPECT_GE((s.y - e.y1) * (e.x2 - e.x1) - (s.x - e.x1) * (e.y2 - e.y1), -kTol * len) << r;
      // Each end is equidistant from both sites of the border, and no site is nearer.
      for (const auto &[x, y] : {std::pair{e.x1, e.y1}, std::pair{e.x2, e.y2}}) {
        const float own = Dist(x, y, s);
        EXPECT_NEAR(own, Dist(x, y, points[twin.site]), kTol) << r;
        int equidistant = 0;
        for (const auto &p : points) {
          EXPECT_GE(Dist(x, y, p), own - kTol) << r;
          equidistant += std::fabs(Dist(x, y, p) - own) < kTol;
        }
        if (!OnBorder(x, y)) {
          EXPECT_GE(equidistant, 3) << "a vertex closes three cells, " << r;
          myVertices.push_back({x, y});
        }
      }
      const auto key = Pair(set.sites[e.site], set.sites[twin.site]);
      mine.insert(key);
      if (!OnBorder(e.x1, e.y1) && !OnBorder(e.x2, e.y2) && len > 0.02f) mineInterior.insert(key);
    }
    EXPECT_EQ(cells.size(), std::set<Cell>(set.sites.begin(), set.sites.end()).size());

    std::vector<CVoronoi::Point> exactVertices;
    Adjacency exactAll, exactInterior;
    BoostDiagram(set.sites, exactVertices, exactAll, exactInterior);
    for (const auto &v : exactVertices) EXPECT_TRUE(Near(myVertices, v.x, v.y)) << v.x << "," << v.y;
    for (const auto &v : myVertices) {
      if (std::fabs(v.x) < 1 - 2 * kTol && std::fabs(v.y) < 1 - 2 * kTol) {
        EXPECT_TRUE(Near(exactVertices, v.x, v.y)) << v.x << "," << v.y;
      }
    }
    for (const auto &pair : exactInterior) EXPECT_TRUE(mine.count(pair)) << "missing border";
    for (const auto &pair : mineInterior) EXPECT_TRUE(exactAll.count(pair)) << "border the exact diagram lacks";
  }
}

TEST(VoronoiTest, SitesThatAreNotFiniteOrTooFewGiveNoBordersAndBreakNothing) {
  CVoronoi voronoi;
  const float nan = std::nanf(""), inf = INFINITY;
  const std::vector<CVoronoi::Point> cases[] = {
      {}, {{0.5f, 0.5f}}, {{0.2f, 0.2f}, {0.2f, 0.2f}}, {{nan, 0}, {inf, 1}, {0, -inf}}};
  for (const auto &points : cases) {
    voronoi.GenerateVoronoi(points.data(), static_cast<int>(points.size()), -1, 1, -1, 1);
    EXPECT_TRUE(voronoi.Edges().empty());
  }
  const std::vector<CVoronoi::Point> mixed = {{nan, 0}, {-0.5f, 0}, {1e30f, 0}, {0.5f, 0}};
  voronoi.GenerateVoronoi(mixed.data(), 4, -1, 1, -1, 1);
  for (const auto &e : voronoi.Edges())
    for (float c : {e.x1, e.y1, e.x2, e.y2}) EXPECT_TRUE(std::isfinite(c) && std::fabs(c) <= 1.0f);
  EXPECT_FALSE(voronoi.Edges().empty());
}
