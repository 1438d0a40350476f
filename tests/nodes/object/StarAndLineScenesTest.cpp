// The star and line scenes keep everything they draw inside the area their
// ports describe, frame after frame.
#include <gtest/gtest.h>

#include <cmath>
#include <algorithm>
#include <memory>
#include <vector>

#include "nodes/BuiltinNodes.h"
#include "nodes/object/GalaxyNode.h"
#include "nodes/object/LineBounceNode.h"
#include "nodes/object/LinesNode.h"
#include "nodes/object/PlanestateNode.h"
#include "nodes/object/StarfieldNode.h"
#include "scene/NodeFactory.h"
#include "scene/Port.h"

namespace {
using Vertices = std::vector<CVector3>;

template <typename V>
void Add(Vertices &out, const V &v) {
  out.push_back({v.x, v.y, v.z});
}
void AddQuads(Vertices &out, const CQuadBatch &quads) {
  for (int i = 0; i < quads.Count(); ++i)
    for (const auto &v : quads.Quads()[i].v) Add(out, v);
}
// Every vertex the node's batch holds now.
Vertices Drawn(CNode *n) {
  Vertices v;
  if (auto *stars = dynamic_cast<CStarfieldNode *>(n))
    for (int i = 0; i < stars->Points().Count(); ++i) Add(v, stars->Points().Lines()[i].from);
  if (auto *galaxy = dynamic_cast<CGalaxyNode *>(n))
    for (int i = 0; i < galaxy->Points().Count(); ++i) Add(v, galaxy->Points().Sprites()[i]);
  if (auto *bounce = dynamic_cast<CLineBounceNode *>(n))
    for (int i = 0; i < bounce->Lines().Count(); ++i) {
      Add(v, bounce->Lines().Lines()[i].from);
      Add(v, bounce->Lines().Lines()[i].to);
    }
  if (auto *lines = dynamic_cast<CLinesNode *>(n)) AddQuads(v, lines->Quads());
  if (auto *planes = dynamic_cast<CPlanestateNode *>(n)) AddQuads(v, planes->Quads());
  return v;
}
}  // namespace

TEST(StarAndLineScenes, DrawOnlyInsideTheirArea) {
  using Ports = std::vector<std::pair<const char *, const char *>>;
  // bound: the largest |x|, |y|, |z| of a vertex.
  const struct { const char *type; Ports ports; CVector3 bound; } cases[] = {
      // Stars wrap before they move: one step of Dir beyond the space at most.
      {"Starfield", {{"NumStars", "3000"}, {"Dir", "0.3 -0.2 1.5"}}, {2.05f, 2.05f, 10.6f}},
      {"Galaxy", {{"NumStars", "2000"}, {"GalaxyRadius", "3"}, {"Speed", "0.1"}}, {3.0001f, 3.0001f, 0}},
      {"Lines", {{"Width", "1.6"}, {"LinesPerSec", "40"}, {"RotationSpeed", "90"}, {"Thickness", "0.02"}},
       {0.81f, 0.51f, 0}},
      {"LineBounce", {{"AdjustForAspect", "false"}, {"Width", "2"}, {"Depth", "0.5"}, {"PointSpeed", "3"}},
       {1.0f * 1.1f, 0.5f * 1.1f, 0.25f * 1.1f}},
      {"Planestate",
       {{"NumObjects", "5"}, {"ObjectYDelta", "0.2"}, {"CenterAxisRot", "0 40 0"}, {"ObjectRot", "30 60 90"}},
       {0.71f + 0.4f, 0.71f + 0.5f, 0.71f + 0.4f}},
  };
  InstallBuiltinNodes();
  CNodeFactoryRef factory;
  factory->Init();
  for (const auto &c : cases) {
    std::unique_ptr<CNode> node(factory->CreateNode(c.type));
    ASSERT_NE(node, nullptr) << c.type;
    for (const auto &[name, value] : c.ports) node->FindInPort(name)->SetText(value);
    FrameInfo frame;
    frame.Aspect = frame.PrevAspect = 4.0f / 3.0f;
    size_t drawn = 0;
    for (int step = 0; step < 90; ++step) {
      frame.DeltaTime = 0.033333335f;
      frame.Time += frame.DeltaTime;
      node->m_Updated = false;
      node->Update(frame.Time, &frame);
      for (CPort *p : node->m_InPorts) p->m_Changed = false;
      const Vertices v = Drawn(node.get());
      drawn = std::max(drawn, v.size());
      for (const CVector3 &p : v)
        ASSERT_TRUE(std::fabs(p.x) <= c.bound.x && std::fabs(p.y) <= c.bound.y && std::fabs(p.z) <= c.bound.z)
            << c.type << " step " << step << ": " << p.x << " " << p.y << " " << p.z;
    }
    EXPECT_GT(drawn, 0u) << c.type;
  }
}
