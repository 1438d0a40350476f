#include "nodes/mesh/CloneMeshNode.h"

#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CCloneMeshNode::CreateInfo() {
  auto *info = new CNodeInfo(3, "CloneMesh", [] { return static_cast<CNode *>(new CCloneMeshNode); }, "Clones a mesh");
  const Vec3f step{0.1f, 0.1f, 0.1f}, lo{-10000, -10000, -10000}, hi{10000, 10000, 10000};
  info->AddInPort(new CPortInt("NumClones", "Number of clones to create", 2, 1, 1000));
  info->AddInPort(new CPortVector("PosChange", "Change in position per cloned mesh", {0, 1, 0}, step, lo, hi));
  info->AddInPort(new CPortVector("RotChange", "Change in rotation per cloned mesh", {0, 0, 0}, step, lo, hi));
  info->AddInPort(new CPortVector("ScaleChange", "Change in scale per cloned mesh", {0, 0, 0}, step, lo, hi));
  info->AddInPort(new CPortMesh("Mesh", "Mesh"));
  AddMeshOutPort(info);
  return info;
}

bool CCloneMeshNode::Init() {
  m_NumClones = InPort<CPortInt>("NumClones");
  m_PosChange = InPort<CPortVector>("PosChange");
  m_RotChange = InPort<CPortVector>("RotChange");
  m_ScaleChange = InPort<CPortVector>("ScaleChange");
  m_Mesh = InPort<CPortMesh>("Mesh");
  return CMeshNode::Init();
}

bool CCloneMeshNode::CreateMesh(CPDMesh &mesh) {
  // The source generates straight into `mesh` and stays there as clone 0.
  if (!GenerateFrom(m_Mesh, mesh)) return false;
  const int v = mesh.m_Vertices.m_Num, q = mesh.m_Quads.m_Num, t = mesh.m_Triangles.m_Num;
  const int clones = CloneLimit(mesh, PortCount(m_NumClones));
  mesh.m_Vertices.Resize(v * clones);
  mesh.m_Quads.Resize(q * clones);
  mesh.m_Triangles.Resize(t * clones);
  const Vec3f pos = m_PosChange->m_Value, rot = m_RotChange->m_Value, scale = m_ScaleChange->m_Value;
  for (int k = 1; k < clones; ++k) {
    const float r = k * MESH_DEG_TO_RAD;
    TransformVertices(mesh.m_Vertices.Data(), v, mesh.m_Vertices.Data() + k * v, RotationMatrix(rot.x * r, rot.y * r, rot.z * r),
                      {scale.x * k + 1.0f, scale.y * k + 1.0f, scale.z * k + 1.0f}, {pos.x * k, pos.y * k, pos.z * k});
  }
  for (int k = 1; k < clones; ++k) CopyFaces(mesh, q, t, mesh, k * q, k * t, k * v);
  return true;
}
