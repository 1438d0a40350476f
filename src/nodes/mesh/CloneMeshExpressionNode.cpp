#include "nodes/mesh/CloneMeshExpressionNode.h"

#include "nodes/ExpressionPorts.h"

#include "expr/ExprEvaluator.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CCloneMeshExpressionNode::CreateInfo() {
  auto *info = new CNodeInfo(3, "CloneMeshExpression",
                             [] { return static_cast<CNode *>(new CCloneMeshExpressionNode); },
                             "Clones a mesh using an expression");
  info->AddInPort(new CPortInt("NumObjectsX", "Number of objects to create in X", 3, 1, 10000));
  info->AddInPort(new CPortInt("NumObjectsY", "Number of objects to create in Y", 3, 1, 10000));
  info->AddInPort(new CPortInt("NumObjectsZ", "Number of objects to create in Z", 3, 1, 10000));
  AddExpressionInputPorts(*info, true);
  info->AddInPort(new CPortString(
      "Expression",
      "Expression to be evaluated for each cloned object. x/y/z contains the index of the current object. "
      "numobjectsx/y/z is the number of objects in each axis. Output values are pos.x, pos.y, pos.z, rot.x, rot.y, "
      "scale.x, scale.y, scale.z, rot.z, col.r, col.g, col.b, col.a. Please see the website for detailed "
      "description of this port. ",
      "pos.x = x;\r\npos.y = y;\r\npos.z = z;\r\n"));
  info->AddInPort(new CPortMesh("Mesh", "Mesh to clone"));
  AddMeshOutPort(info);
  return info;
}

CCloneMeshExpressionNode::CCloneMeshExpressionNode() : m_Evaluator(std::make_unique<CExprEvaluator>()) {}
CCloneMeshExpressionNode::~CCloneMeshExpressionNode() = default;

bool CCloneMeshExpressionNode::Init() {
  m_NumObjects[0] = InPort<CPortInt>("NumObjectsX");
  m_NumObjects[1] = InPort<CPortInt>("NumObjectsY");
  m_NumObjects[2] = InPort<CPortInt>("NumObjectsZ");
  const char *ins[] = {"In1", "In2", "In3", "In4", "In5"};
  for (int i = 0; i < 5; ++i) m_In[i] = InPort<CPortFloat>(ins[i]);
  m_RandomSeed = InPort<CPortInt>("RandomSeed");
  m_Expression = InPort<CPortString>("Expression");
  m_Mesh = InPort<CPortMesh>("Mesh");
  m_Grid.Register(*m_Evaluator, false);
  m_Evaluator->Attach();
  return CMeshNode::Init();
}

bool CCloneMeshExpressionNode::CreateMesh(CPDMesh &mesh) {
  if (!GenerateFrom(m_Mesh, m_Source)) return false;
  // Compiled each time, so every generation starts from the defaults.
  if (!m_Evaluator->Compile(m_Expression->m_Value)) return false;
  m_Grid.SetInputs(m_In);
  m_Evaluator->SeedRandom(static_cast<uint32_t>(m_RandomSeed->m_Value));
  m_Grid.SetCounts(PortCount(m_NumObjects[0]), PortCount(m_NumObjects[1]), PortCount(m_NumObjects[2]));
  const int clones = CloneLimit(m_Source, m_Grid.Cells());
  const int v = m_Source.m_Vertices.m_Num, q = m_Source.m_Quads.m_Num, t = m_Source.m_Triangles.m_Num;
  mesh.Resize(v * clones, q * clones, t * clones);
  // rot is left as the text last set it.
  m_Grid.Run(*m_Evaluator, clones, false, [&](int c, const CClonePlacement &p) {
    TransformVertices(m_Source.m_Vertices.Data(), v, mesh.m_Vertices.Data() + c * v,
                      RotationMatrix(p.rot.x, p.rot.y, p.rot.z), p.scale, p.pos);
    CopyFaces(m_Source, q, t, mesh, c * q, c * t, c * v);
  });
  return true;
}
