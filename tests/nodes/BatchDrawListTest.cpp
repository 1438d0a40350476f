// How batch renderers join the draw list: one item per parent, and points
// that instance the object on a node's Object port.
#include "scene/BatchDrawList.h"

#include <gtest/gtest.h>

#include "portdata/RenderLines.h"
#include "portdata/RenderPoints.h"
#include "scene/DrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "support/TestDrawNodes.h"
#include "support/TestNodes.h"

namespace {
// An object node that notes the parents it is asked to draw under.
class CProbeObject : public CNode, public CPDObject {
 public:
  static CNodeInfo *CreateInfo() {
    auto *info = new CNodeInfo(2, "Probe", [] { return static_cast<CNode *>(new CProbeObject); }, "");
    info->AddOutPort(new CPortObject("Object", ""));
    return info;
  }
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *) override {
    ++m_Calls;
    for (CDrawItem *p = parents.first; p; p = p->next) {
      m_Parents.push_back(*p);
      CDrawItem *item = list.NewItem();
      item->m_Object = this;
      p->children.Append(item);
    }
  }
  int m_Calls = 0;
  std::vector<CDrawItem> m_Parents;
};

int Count(const CDrawItemList &list) {
  int n = 0;
  for (CDrawItem *i = list.first; i; i = i->next) ++n;
  return n;
}
}  // namespace

TEST(BatchDrawList, OneItemPerParentWithTheParentsMatrixAndColor) {
  CDrawList list;
  CDrawItemList parents;
  CDrawItem *a = list.NewItem(), *b = list.NewItem();
  a->matrix = TranslationMatrix(1, 2, 3);
  a->color[0] = 0.25f;
  parents.Append(a);
  parents.Append(b);
  CTestEffect effect("fx", 1);
  CCamera camera;
  CRenderLines lines;

  AddBatchToDrawList(list, parents, &camera, nullptr, lines, 0);
  EXPECT_TRUE(a->children.Empty()) << "no effect, nothing to draw with";

  AddBatchToDrawList(list, parents, &camera, &effect, lines, 7);
  ASSERT_EQ(Count(a->children), 1);
  ASSERT_EQ(Count(b->children), 1);
  const CDrawItem *item = a->children.first;
  EXPECT_TRUE(item->matrix == a->matrix && item->color[0] == 0.25f) << "the parent's place and colour";
  EXPECT_TRUE(item->m_Object == &lines && item->m_Effect == &effect && item->m_Camera == &camera);

  // The count reaches the next Draw.
  CRecordRender render;
  lines.SetSize(20);
  const float white[4] = {1, 1, 1, 1};
  for (int i = 0; i < 20; ++i) lines.AddLine(0, 0, 0, 1, 1, 1, white);
  ASSERT_TRUE(lines.RestoreDevice(&render));
  lines.Draw(&render);
  EXPECT_EQ(render.m_Draws.back().primitives, 7);
  lines.InvalidateDevice(&render);
}

TEST(BatchDrawList, PointsInstanceTheObjectScaledMovedAndTinted) {
  TestGraph g;
  auto *probe = g.Add<CProbeObject>(CProbeObject::CreateInfo(), "Probe1");
  CPortObject objectPort("Object", "");
  objectPort.m_Source = probe->m_OutPorts[0];
  objectPort.m_Value = probe;

  CDrawList list;
  CDrawItemList parents;
  CDrawItem *parent = list.NewItem();
  parent->matrix = TranslationMatrix(0, 0, 10);
  for (float &c : parent->color) c = 0.5f;
  parents.Append(parent);
  CTestEffect effect("fx", 1);

  CRenderPoints points;
  points.SetSize(3, PRIM_Object);
  points.Sprites()[0] = {1, 2, 3, 0xFF0000FFu, 2, 2, 2};
  points.Sprites()[1] = {4, 5, 6, 0x80FF00FFu, 1, 1, 1};
  AddPointsToDrawList(list, parents, nullptr, &effect, points, 2, &objectPort);
  EXPECT_EQ(probe->m_Calls, 1) << "one walk for all points of a parent";
  ASSERT_EQ(probe->m_Parents.size(), 2u);
  const CDrawItem &first = probe->m_Parents[0];
  // Scale by the size, then move to the point, then the parent's matrix.
  EXPECT_EQ(TransformPoint({1, 0, 0}, first.matrix), (CVector3{3, 2, 13}));
  EXPECT_EQ(std::pair(first.color[0], first.color[1]), std::pair(0.5f, 0.0f));
  EXPECT_NEAR(probe->m_Parents[1].color[3], 0.5f * 128 / 255, 1e-6f);
  EXPECT_EQ(Count(parent->children), 2) << "the instances hang under the parent, no batch item";
  for (CDrawItem *i = parent->children.first; i; i = i->next) EXPECT_EQ(i->m_Object, nullptr);

  // Points and lines have no shape to put an object on.
  points.SetSize(3, PRIM_Line);
  CDrawItemList others;
  CDrawItem *other = list.NewItem();
  others.Append(other);
  AddPointsToDrawList(list, others, nullptr, &effect, points, 0, &objectPort);
  EXPECT_TRUE(other->children.Empty());

  // Without an object the batch draws itself.
  objectPort.m_Source = nullptr;
  AddPointsToDrawList(list, others, nullptr, &effect, points, 0, &objectPort);
  ASSERT_EQ(Count(other->children), 1);
  EXPECT_EQ(other->children.first->m_Object, &points);
}
