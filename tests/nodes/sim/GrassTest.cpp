// Grass: straws planted along a mesh's normals, held at their length by the
// constraints whatever drives them, and drawn as blades from tip to root.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "nodes/sim/GrassNode.h"
#include "nodes/sim/SimNodeHarness.h"
#include "portdata/PDMesh.h"
#include "render/RecordRender.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
using Straw = CGrassStraws::Straw;

// Grass on a plane of 8 x 8 vertices, planted by one step.
struct Meadow : SimNode<CGrassNode> {
  explicit Meadow(const Ports &ports) : SimNode("Grass", ports) {
    plane = Feed("Mesh", "Plane", {{"TesselateW", "7"}, {"TesselateH", "7"}});
    Steps(1);
  }
  const Straw &At(int i) { return node->Straws().Straws()[i]; }
  CNode *plane;
};

bool Near(const CVector3 &a, const CVector3 &b, float tol = 1e-5f) { return Length(a - b) <= tol; }
}  // namespace

TEST(Grass, ConstraintsHoldStrawLengthsWhateverDrivesThem) {
  const float nan = std::nanf("");
  // wind goes straight into the port, as a connection could; lo..hi: each
  // segment's length over its rest length, every frame.
  const struct {
    const char *situation; SimNode<CGrassNode>::Ports ports; Vec3f wind; float lo, hi;
  } table[] = {
      {"defaults", {}, {0, 0, 0}, 0.9f, 1.25f},
      {"a steady breeze", {{"WindDir", "3 1 0"}}, {3, 1, 0}, 0.9f, 1.25f},
      {"constraints at full range", {{"Strength", "10"}, {"Strength2", "10"}}, {3, 0, 0}, 0.9f, 1.25f},
      {"wind that is not a number", {}, {nan, 1, nan}, 0.9f, 1.25f},
      // Beyond what one pass of constraints can hold, straws stretch but stay within twice their length.
      {"thin straws, strong wind", {{"Height", "0.05"}, {"HeightVar", "0"}}, {20, 0, 5}, 0.5f, 1.7f},
      {"a gale", {{"LWindDirVar", "10000 10000 10000"}}, {10000, -10000, 10000}, 0, 2},
      {"crushing gravity", {{"Gravity", "0 -10000 0"}}, {0, 0, 0}, 0, 2},
      {"no constraints", {{"Strength", "0"}, {"Strength2", "0"}}, {1, 0, 0}, 0, 2},
  };
  for (const auto &c : table) {
    Meadow m(c.ports);
    ASSERT_EQ(m.node->Straws().Count(), 64) << c.situation;
    static_cast<CPortVector *>(m.node->FindInPort("WindDir"))->m_Value = c.wind;
    float lo = 10, hi = 0;
    for (int frame = 0; frame < 300; ++frame) {
      m.Steps(1);
      for (int i = 0; i < 64; ++i) {
        const Straw &s = m.At(i);
        ASSERT_TRUE(Finite(s.middle) && Finite(s.top)) << c.situation << " frame " << frame;
        for (float l : {Length(s.middle - s.base) / s.h, Length(s.top - s.middle) / s.h})
          lo = std::min(lo, l), hi = std::max(hi, l);
      }
    }
    EXPECT_TRUE(lo >= c.lo - 1e-4f && hi <= c.hi + 1e-4f) << c.situation << ": " << lo << " to " << hi;
  }
}

TEST(Grass, StrawsStandOnTheMeshAndKeepTheirSwingUntilTheMeshChanges) {
  Meadow m({{"Height", "0.2"}, {"HeightVar", "0.3"}});
  const CPDMesh &mesh = *static_cast<CPortMesh *>(m.node->FindInPort("Mesh"))->m_Value;
  ASSERT_EQ(mesh.m_Vertices.m_Num, 64);
  const struct {
    const char *change; bool onPlane; const char *port, *value; bool rebuffered, replanted;
  } table[] = {
      {"more segments", false, "Segments", "6", true, false},
      {"another colour", false, "Color", "1 0 0 1", false, false},
      {"a wider plane", true, "Width", "2", true, true},
  };
  for (const auto &c : table) {
    m.Steps(30);
    m.node->m_DirtyUnits = 0;
    m.Put(c.onPlane ? m.plane : m.node.get(), {{c.port, c.value}});
    m.Steps(1);
    EXPECT_EQ(m.node->m_DirtyUnits, c.rebuffered ? ALL_UNITS : 0) << c.change;
    int standing = 0;
    for (int i = 0; i < 64; ++i) {
      const Straw &s = m.At(i);
      const MeshVertex &v = mesh.m_Vertices[i];
      EXPECT_TRUE(s.h >= 0.2f && s.h <= 0.5f && Near(s.base, v.pos) && Near(s.root, v.pos - v.normal * s.h))
          << c.change;
      // Freshly planted straws stand straight along the normal.
      standing += Near(s.top, v.pos + v.normal * (2 * s.h)) && Near(s.middle, v.pos + v.normal * s.h);
    }
    EXPECT_EQ(standing, c.replanted ? 64 : 0) << c.change;
  }
}

TEST(Grass, BladesRunFromTipToRootInsideTheirBuffers) {
  const struct {
    const char *topWidth; int segments; bool pointed;
  } table[] = {{"0", 3, true}, {"0.5", 2, false}, {"-1", 100, false}};
  for (const auto &c : table) {
    Meadow m({{"TopWidthFactor", c.topWidth}, {"Segments", std::to_string(c.segments).c_str()}});
    m.Steps(10);
    CGrassStraws &straws = m.node->Straws();
    const int per = 2 * c.segments + 4;
    std::vector<VertexPCT> v(per);
    const Straw &s = m.At(5);
    straws.StrawVertices(s, v.data());
    // A pointed tip is one point at the texture's middle; the root pair spans the base.
    const CVector3 wv = s.side * s.w * (c.pointed ? 0 : std::stof(c.topWidth));
    auto at = [&](int i) { return CVector3{v[i].x, v[i].y, v[i].z}; };
    EXPECT_TRUE(Near(at(0), s.top + wv) && Near(at(1), s.top - wv) && v[0].u == (c.pointed ? 0.5f : 0)) << c.topWidth;
    EXPECT_TRUE(Near(at(per - 2), s.base + s.side * s.w) && Near(at(per - 1), s.base - s.side * s.w)) << c.topWidth;
    CRecordRender render;
    ASSERT_TRUE(m.node->RestoreDevice(&render));
    straws.Draw(&render);
    EXPECT_TRUE(render.m_Faults.empty()) << render.m_Faults.front();
    const int batch = straws.StrawsPerBatch();
    EXPECT_EQ(render.Calls("DrawIndexedPrimitive").size(), static_cast<size_t>((64 + batch - 1) / batch)) << c.topWidth;
    m.node->InvalidateDevice(&render);
    EXPECT_EQ(render.LiveCount("vb") + render.LiveCount("ib"), 0);
  }
}
