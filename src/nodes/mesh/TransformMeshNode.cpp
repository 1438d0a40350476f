#include "nodes/mesh/TransformMeshNode.h"

#include <string>

#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

CNodeInfo *CTransformMeshNode::CreateInfo() {
  auto *info = new CNodeInfo(3, "TransformMesh", [] { return static_cast<CNode *>(new CTransformMeshNode); },
                             "Transforms and combines 1 to 5 meshes using the same transformation");
  const Vec3f step{0.1f, 0.1f, 0.1f}, lo{-10000, -10000, -10000}, hi{10000, 10000, 10000};
  info->AddInPort(new CPortVector("Pos", "Position of mesh", {0, 0, 0}, step, lo, hi));
  info->AddInPort(new CPortVector("Rot", "Rotation of mesh", {0, 0, 0}, step, lo, hi));
  info->AddInPort(new CPortVector("Scale", "Scale of mesh", {1, 1, 1}, step, lo, hi));
  for (const char *name : {"Mesh1", "Mesh2", "Mesh3", "Mesh4", "Mesh5"}) {
    const std::string desc = std::string("Mesh ") + name[4];
    info->AddInPort(new CPortMesh(name, desc.c_str()));
  }
  AddMeshOutPort(info);
  return info;
}

bool CTransformMeshNode::Init() {
  m_Pos = InPort<CPortVector>("Pos");
  m_Rot = InPort<CPortVector>("Rot");
  m_Scale = InPort<CPortVector>("Scale");
  for (int i = 0; i < 5; ++i) m_Meshes[i] = InPort<CPortMesh>(("Mesh" + std::to_string(i + 1)).c_str());
  return CMeshNode::Init();
}

bool CTransformMeshNode::CreateMesh(CPDMesh &mesh) {
  // Every source regenerates its own arrays first; `mesh` is touched only
  // when all of them succeeded, so a failure leaves it as it stood.
  CPDMesh *sources[5];
  int count = 0, vertices = 0, quads = 0, triangles = 0, indices = 0;
  for (CPortMesh *port : m_Meshes) {
    if (!port->m_Source || !port->m_Value || port->m_Value == &mesh) continue;
    CPDMesh *source = port->m_Value;
    if (!GenerateFrom(port, *source)) return false;
    const int v = source->m_Vertices.m_Num;
    const int i = (source->m_Triangles.m_Num + 2 * source->m_Quads.m_Num) * 3;
    if (vertices + v > MESH_MAX_VERTICES || indices + i > MESH_MAX_INDICES) continue;
    sources[count++] = source;
    vertices += v;
    indices += i;
    quads += source->m_Quads.m_Num;
    triangles += source->m_Triangles.m_Num;
  }
  const bool list = mesh.m_TriangleList;
  mesh.Resize(vertices, quads, triangles);
  mesh.m_TriangleList = list;
  if (vertices == 0) return true;

  const Vec3f pos = m_Pos->m_Value, rot = m_Rot->m_Value, scale = m_Scale->m_Value;
  const CMatrix rotation = RotationMatrix(rot.x * MESH_DEG_TO_RAD, rot.y * MESH_DEG_TO_RAD, rot.z * MESH_DEG_TO_RAD);
  int base = 0, quadAt = 0, triangleAt = 0;
  for (int s = 0; s < count; ++s) {
    const CPDMesh &src = *sources[s];
    TransformVertices(src.m_Vertices.Data(), src.m_Vertices.m_Num, &mesh.m_Vertices[base], rotation,
                      {scale.x, scale.y, scale.z}, {pos.x, pos.y, pos.z});
    CopyFaces(src, src.m_Quads.m_Num, src.m_Triangles.m_Num, mesh, quadAt, triangleAt, base);
    base += src.m_Vertices.m_Num;
    quadAt += src.m_Quads.m_Num;
    triangleAt += src.m_Triangles.m_Num;
  }
  return true;
}
