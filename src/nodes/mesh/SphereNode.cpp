#include "nodes/mesh/SphereNode.h"

#include <cmath>

#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

CNodeInfo *CSphereNode::CreateInfo() {
  auto *info = new CNodeInfo(3, "Sphere", [] { return static_cast<CNode *>(new CSphereNode); }, "A sphere");
  info->AddInPort(new CPortFloat("Radius", "Radius", 1.0f, 1.0f, 0.0001f, 10000.0f));
  info->AddInPort(new CPortInt("NumRings", "Number of rings", 32, 3, 1000));
  info->AddInPort(new CPortInt("NumSegments", "Number of segments", 32, 3, 1000));
  AddTextureScalePorts(info);
  AddMeshOutPort(info);
  return info;
}

bool CSphereNode::Init() {
  m_Radius = InPort<CPortFloat>("Radius");
  m_NumRings = InPort<CPortInt>("NumRings");
  m_NumSegments = InPort<CPortInt>("NumSegments");
  return CShapeNode::Init();
}

bool CSphereNode::CreateMesh(CPDMesh &mesh) {
  int rings = PortCount(m_NumRings), segments = PortCount(m_NumSegments);
  FitGrid(rings, segments, 3, 3, 0);
  const float radius = m_Radius->m_Value, su = m_ScaleU->m_Value, sv = m_ScaleV->m_Value;
  const int row = segments + 1;
  mesh.Resize((rings + 1) * row, 0, 2 * rings * row);
  int k = 0;
  for (int j = 0; j <= rings; ++j) {
    const float b = j * (MESH_PI / rings);
    const float r = std::sin(b) * radius, y = std::cos(b) * radius;
    for (int i = 0; i <= segments; ++i) {
      const float a = i * (MESH_TWO_PI / segments);
      const CVector3 p{std::sin(a) * r, y, std::cos(a) * r};
      mesh.m_Vertices[k++] = MeshVertex{p, Normalize(p), 1.0f - (static_cast<float>(i) / segments) * su,
                                        (static_cast<float>(j) / rings) * sv};
    }
  }
  // Two triangles for every vertex above the last row: the first and last
  // of a row reach round the seam and fall degenerate.
  for (int k0 = 0, t = 0; k0 < rings * row; ++k0) {
    const int below = k0 + row;
    mesh.m_Triangles[t++] = MeshTriangle{k0, below, below - 1};
    mesh.m_Triangles[t++] = MeshTriangle{k0 + 1, below, k0};
  }
  return true;
}
