#include "nodes/object/CloneExpressionNode.h"

#include <algorithm>

#include "core/Numeric.h"
#include "nodes/ExpressionPorts.h"
#include "render/Color.h"
#include "scene/BatchDrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"

namespace {
// Copies a frame may hold: counts of 10000 on three axes would ask for 10^12.
constexpr int kMaxCopies = 100000;
}  // namespace

CNodeInfo *CCloneExpressionNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "CloneExpression", [] { return static_cast<CNode *>(new CCloneExpressionNode); },
                             "Clones object using an expression");
  info->AddInPort(new CPortInt("NumObjectsX", "Number of objects to create in X", 3, 1, 10000));
  info->AddInPort(new CPortInt("NumObjectsY", "Number of objects to create in Y", 3, 1, 10000));
  info->AddInPort(new CPortInt("NumObjectsZ", "Number of objects to create in Z", 3, 1, 10000));
  info->AddInPort(
      new CPortBool("AdjustForAspect", "Adjust the number of clones in X by the screen aspect", true));
  info->AddInPort(new CPortBool("Center", "Center the objects", true));
  AddExpressionInputPorts(*info, false);
  info->AddInPort(new CPortString(
      "Expression",
      "Expression to be evaluated for each cloned object. x/y/z contains the index of the current object. "
      "time=runtime in seconds. aspect=window aspect. numobjectsx/y/z is the number of objects in each axis. Output "
      "values are pos.x, pos.y, pos.z, rot.x, rot.y, scale.x, scale.y, scale.z, rot.z, col.r, col.g, col.b, col.a. "
      "Please see the website for detailed description of this port.",
      "pos.x = x;\r\npos.y = y+cos(time+y)/4;\r\npos.z = z+sin(time)/2;\r\n"));
  info->AddInPort(new CPortEffect("Effect", "The effect to place on the square if no object is connected"));
  info->AddInPort(
      new CPortObject("Object", "Object to clone. If nothing is connected a square in the x/y plane will be used"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

CCloneExpressionNode::CCloneExpressionNode() : m_Evaluator(std::make_unique<CExprEvaluator>()) {
  m_Squares.m_RenderBufferQuads = 600;
}
CCloneExpressionNode::~CCloneExpressionNode() = default;

bool CCloneExpressionNode::Init() {
  const char *counts[] = {"NumObjectsX", "NumObjectsY", "NumObjectsZ"};
  for (int i = 0; i < 3; ++i) m_NumObjects[i] = InPort<CPortInt>(counts[i]);
  m_AdjustForAspect = InPort<CPortBool>("AdjustForAspect");
  m_Center = InPort<CPortBool>("Center");
  const char *ins[] = {"In1", "In2", "In3", "In4", "In5"};
  for (int i = 0; i < 5; ++i) m_In[i] = InPort<CPortFloat>(ins[i]);
  m_RandomSeed = InPort<CPortInt>("RandomSeed");
  m_Expression = InPort<CPortString>("Expression");
  m_Effect = InPort<CPortEffect>("Effect");
  m_Object = InPort<CPortObject>("Object");
  m_Out = OutPort<CPortObject>("Object");
  m_Grid.Register(*m_Evaluator, true);
  m_Evaluator->Attach();
  return true;
}

void CCloneExpressionNode::Update(float time, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  if (m_Expression->m_Changed) m_Evaluator->Compile(m_Expression->m_Value);
  if (!m_Evaluator->m_Compiled) return;
  m_Grid.SetInputs(m_In);
  m_Grid.m_Vars[CCloneGrid::Time] = time;

  int n[3];
  for (int i = 0; i < 3; ++i) n[i] = std::clamp(m_NumObjects[i]->m_Value, 1, 10000);
  const float a = frame->Aspect > 0 ? frame->Aspect : 1.0f;
  if (m_AdjustForAspect->m_Value) {
    if (a > 1)
      n[0] = std::clamp(SatInt(n[0] * a), 1, 10000);
    else
      n[1] = std::clamp(SatInt((1 / a) * n[1]), 1, 10000);
  }
  m_Grid.SetCounts(n[0], n[1], n[2]);
  m_Grid.m_Vars[CCloneGrid::Aspect] = a;
  const int count = std::min(m_Grid.Cells(), kMaxCopies);
  m_Copies.resize(count);
  m_Evaluator->SeedRandom(static_cast<uint32_t>(m_RandomSeed->m_Value));

  CVector3 lo{100000, 100000, 100000}, hi{-100000, -100000, -100000};
  m_Grid.Run(*m_Evaluator, count, true, [&](int c, const CClonePlacement &p) {
    m_Copies[c].matrix = PlacementMatrix(p.pos, p.rot, p.scale);
    std::copy_n(p.color, 4, m_Copies[c].color);
    lo = {std::min(lo.x, p.pos.x), std::min(lo.y, p.pos.y), std::min(lo.z, p.pos.z)};
    hi = {std::max(hi.x, p.pos.x), std::max(hi.y, p.pos.y), std::max(hi.z, p.pos.z)};
  });
  if (m_Center->m_Value) {
    const CVector3 mid = lo + (hi - lo) * 0.5f;
    for (CObjectCopy &copy : m_Copies) {
      copy.matrix(3, 0) -= mid.x;
      copy.matrix(3, 1) -= mid.y;
      copy.matrix(3, 2) -= mid.z;
    }
  }
  if (!m_Object->IsConnected()) FillSquares();
  m_Out->m_Value = this;
}

// A unit square per copy in its x/y plane, texture (0, 0) at -x +y.
void CCloneExpressionNode::FillSquares() {
  m_Squares.SetSize(static_cast<int>(m_Copies.size()));
  CQuadBatch::Quad *q = m_Squares.Quads();
  for (const CObjectCopy &copy : m_Copies) {
    const CMatrix &m = copy.matrix;
    const CVector3 a{m(0, 0) * 0.5f, m(0, 1) * 0.5f, m(0, 2) * 0.5f};
    const CVector3 b{m(1, 0) * 0.5f, m(1, 1) * 0.5f, m(1, 2) * 0.5f};
    const CVector3 t{m(3, 0), m(3, 1), m(3, 2)};
    const uint32_t color = PackColor(copy.color);
    auto corner = [&](const CVector3 &p, float u, float v) { return VertexPCT{p.x, p.y, p.z, u, v, color}; };
    *q++ = {{corner(t - a + b, 0, 0), corner(t - a - b, 1, 0), corner(t + a + b, 0, 1), corner(t + a - b, 1, 1)}};
  }
}

bool CCloneExpressionNode::RestoreDevice(CRender *render) { return m_Squares.RestoreDevice(render); }
void CCloneExpressionNode::InvalidateDevice(CRender *render) { m_Squares.InvalidateDevice(render); }

void CCloneExpressionNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  if (m_Object->IsConnected())
    AddCopiesToDrawList(list, parents, camera, m_Object, m_Copies.data(), static_cast<int>(m_Copies.size()));
  else
    AddBatchToDrawList(list, parents, camera, m_Effect->m_Value, m_Squares);
}
