#include "nodes/mesh/CloneMeshExpressionNode.h"

#include "nodes/ExpressionPorts.h"

#include "expr/ExprEvaluator.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
const char *const kVariableNames[CCloneMeshExpressionNode::VariableCount] = {
    "x",     "y",     "z",     "numobjectsx", "numobjectsy", "numobjectsz", "in1",     "in2",
    "in3",   "in4",   "in5",   "pos.x",       "pos.y",       "pos.z",       "rot.x",   "rot.y",
    "rot.z", "scale.x", "scale.y", "scale.z", "col.r",       "col.g",       "col.b",   "col.a"};
}  // namespace

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
  for (int v = 0; v < VariableCount; ++v) m_Evaluator->AddAddress(kVariableNames[v], &m_Vars[v], 0.0);
  m_Evaluator->Attach();
  return CMeshNode::Init();
}

bool CCloneMeshExpressionNode::CreateMesh(CPDMesh &mesh) {
  if (!GenerateFrom(m_Mesh, m_Source)) return false;
  // Compiled each time, so every generation starts from the defaults.
  if (!m_Evaluator->Compile(m_Expression->m_Value)) return false;
  for (int i = 0; i < 5; ++i) m_Vars[In1 + i] = m_In[i]->m_Value;
  m_Evaluator->SeedRandom(static_cast<uint32_t>(m_RandomSeed->m_Value));

  const int nx = PortCount(m_NumObjects[0]), ny = PortCount(m_NumObjects[1]), nz = PortCount(m_NumObjects[2]);
  m_Vars[NumObjectsX] = nx;
  m_Vars[NumObjectsY] = ny;
  m_Vars[NumObjectsZ] = nz;
  const int clones = CloneLimit(m_Source, static_cast<long long>(nx) * ny * nz);
  const int v = m_Source.m_Vertices.m_Num, q = m_Source.m_Quads.m_Num, t = m_Source.m_Triangles.m_Num;
  mesh.Resize(v * clones, q * clones, t * clones);

  int c = 0;
  for (int z = 1; z <= nz && c < clones; ++z)
    for (int y = 1; y <= ny && c < clones; ++y)
      for (int x = 1; x <= nx && c < clones; ++x, ++c) {
        m_Vars[X] = m_Vars[PosX] = x;
        m_Vars[Y] = m_Vars[PosY] = y;
        m_Vars[Z] = m_Vars[PosZ] = z;
        // rot is left as the text last set it.
        for (int k : {ScaleX, ScaleY, ScaleZ, ColR, ColG, ColB, ColA}) m_Vars[k] = 1.0;
        m_Evaluator->Evaluate();
        const CMatrix rotation =
            RotationMatrix(static_cast<float>(m_Vars[RotX]) * MESH_DEG_TO_RAD,
                           static_cast<float>(m_Vars[RotY]) * MESH_DEG_TO_RAD,
                           static_cast<float>(m_Vars[RotZ]) * MESH_DEG_TO_RAD);
        const CVector3 scale{static_cast<float>(m_Vars[ScaleX]), static_cast<float>(m_Vars[ScaleY]),
                             static_cast<float>(m_Vars[ScaleZ])};
        const CVector3 pos{static_cast<float>(m_Vars[PosX]), static_cast<float>(m_Vars[PosY]),
                           static_cast<float>(m_Vars[PosZ])};
        TransformVertices(m_Source.m_Vertices.Data(), v, mesh.m_Vertices.Data() + c * v, rotation, scale, pos);
        CopyFaces(m_Source, q, t, mesh, c * q, c * t, c * v);
      }
  return true;
}
