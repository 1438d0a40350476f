// The metaball surface's contract: closed surfaces come out watertight and
// consistently wound, with normals pointing out of the balls.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <map>
#include <vector>

#include "nodes/sim/MetaballField.h"

namespace {
struct Collect : CMetaballField::Sink {
  std::vector<VertexPNTC> vertices;
  std::vector<uint32_t> indices;  // into `vertices`
  VertexPNTC batchV[CMetaballField::MaxVertices];
  uint16_t batchI[CMetaballField::MaxIndices];
  int batches = 0;
  Collect() { m_Vertices = batchV, m_Indices = batchI; }
  void Flush(int nv, int ni, bool) override {
    const auto base = static_cast<uint32_t>(vertices.size());
    vertices.insert(vertices.end(), batchV, batchV + nv);
    for (int i = 0; i < ni; ++i) indices.push_back(base + batchI[i]);
    ++batches;
  }
};

MetaBall Ball(float x, float y, float z) { return {{x, y, z}, {}, {}, 0.0f, 1.0f}; }

float Energy(const std::vector<MetaBall> &balls, const float p[3]) {
  float e = 0;
  for (const MetaBall &b : balls)
    e += b.mass / std::max(std::pow(p[0] - b.pos[0], 2.0f) + std::pow(p[1] - b.pos[1], 2.0f) + std::pow(p[2] - b.pos[2], 2.0f), 1e-4f);
  return e;
}
}  // namespace

TEST(MetaballsTest, SurfacesAreWatertightWithOutwardNormalsAndConsistentWinding) {
  std::vector<MetaBall> wandering;
  for (int i = 0; i < 10; ++i) wandering.push_back(Ball(0.6f * std::sin(i * 2.1f), 0.6f * std::cos(i * 1.3f), 0.5f * std::sin(i * 0.7f + 1)));
  const struct {
    const char *name;
    int grid;
    float level;
    std::vector<MetaBall> balls;
    bool empty;
  } cases[] = {
      {"one ball", 50, 100, {Ball(0.1f, 0.2f, -0.3f)}, false},
      {"two melting balls", 50, 100, {Ball(-0.05f, 0, 0), Ball(0.06f, 0.01f, 0)}, false},
      {"two balls apart", 40, 60, {Ball(-0.5f, 0, 0), Ball(0.5f, 0.1f, 0)}, false},
      {"ten wandering balls", 80, 100, wandering, false},
      {"a ball against the wall", 50, 100, {Ball(-0.96f, 0.96f, -0.96f)}, false},
      {"a ball below every grid point's level", 10, 100, {Ball(0.1f, 0.1f, 0.1f)}, true},
      {"grid of 2", 2, 20, {Ball(0, 0, 0)}, false},
  };
  CMetaballField field;
  for (const auto &c : cases) {
    SCOPED_TRACE(c.name);
    field.SetGrid(c.grid);
    Collect out;
    field.Polygonise(c.balls.data(), static_cast<int>(c.balls.size()), c.level, out);
    ASSERT_EQ(out.indices.size() % 3, 0u);
    EXPECT_EQ(out.indices.empty(), c.empty);
    // Vertices of neighbouring voxels on the same grid edge are bit-identical: weld by position.
    std::map<std::array<float, 3>, int> weld;
    std::vector<int> id;
    for (const VertexPNTC &v : out.vertices) id.push_back(weld.emplace(std::array{v.x, v.y, v.z}, weld.size()).first->second);
    std::map<std::pair<int, int>, int> directed;
    for (size_t t = 0; t < out.indices.size(); t += 3) {
      const VertexPNTC *v[3] = {&out.vertices[out.indices[t]], &out.vertices[out.indices[t + 1]], &out.vertices[out.indices[t + 2]]};
      for (int k = 0; k < 3; ++k) ++directed[{id[out.indices[t + k]], id[out.indices[t + (k + 1) % 3]]}];
      const float ab[3] = {v[1]->x - v[0]->x, v[1]->y - v[0]->y, v[1]->z - v[0]->z};
      const float ac[3] = {v[2]->x - v[0]->x, v[2]->y - v[0]->y, v[2]->z - v[0]->z};
      const float g[3] = {ab[1] * ac[2] - ab[2] * ac[1], ab[2] * ac[0] - ab[0] * ac[2], ab[0] * ac[1] - ab[1] * ac[0]};
      float n[3] = {0, 0, 0};
      for (const VertexPNTC *p : v) n[0] += p->nx, n[1] += p->ny, n[2] += p->nz;
      // Stored triangles wind against the outward normal, every one alike.
      EXPECT_LE(g[0] * n[0] + g[1] * n[1] + g[2] * n[2], 0.0f) << t;
    }
    // Closed and consistently wound: each edge once in each direction.
    for (const auto &[edge, count] : directed) {
      EXPECT_EQ(count, 1) << edge.first << "-" << edge.second;
      EXPECT_TRUE(directed.count({edge.second, edge.first})) << "open edge " << edge.first << "-" << edge.second;
    }
    for (const VertexPNTC &v : out.vertices) {
      const float h = 1e-3f, in[3] = {v.x - h * v.nx, v.y - h * v.ny, v.z - h * v.nz}, outside[3] = {v.x + h * v.nx, v.y + h * v.ny, v.z + h * v.nz};
      EXPECT_GT(Energy(c.balls, in), Energy(c.balls, outside)) << "normal points inward";
      for (float p : {v.x, v.y, v.z}) EXPECT_TRUE(std::fabs(p) < 1.0f);
    }
  }
  field.SetGrid(1 << 30);
  EXPECT_EQ(field.GridSize(), CMetaballField::MaxGrid);
  field.SetGrid(-3);
  EXPECT_EQ(field.GridSize(), 2);
}
