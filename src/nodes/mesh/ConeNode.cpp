#include "nodes/mesh/ConeNode.h"

#include <cmath>

#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

CNodeInfo *CConeNode::CreateInfo() {
  auto *info = new CNodeInfo(3, "Cone", [] { return static_cast<CNode *>(new CConeNode); }, "A cone");
  info->AddInPort(new CPortFloat("Radius", "Radius", 0.5f, 0.1f, 0.0001f, 10000.0f));
  info->AddInPort(new CPortFloat("Height", "Height", 1.0f, 0.1f, 0.0001f, 10000.0f));
  info->AddInPort(new CPortInt("NumSegments", "Number of segments", 32, 3, 1000));
  AddTextureScalePorts(info);
  AddMeshOutPort(info);
  return info;
}

bool CConeNode::Init() {
  m_Radius = InPort<CPortFloat>("Radius");
  m_Height = InPort<CPortFloat>("Height");
  m_NumSegments = InPort<CPortInt>("NumSegments");
  return CShapeNode::Init();
}

bool CConeNode::CreateMesh(CPDMesh &mesh) {
  const int n = PortCount(m_NumSegments);
  const float h = m_Height->m_Value * 0.5f, r = m_Radius->m_Value;
  const float su = m_ScaleU->m_Value, sv = m_ScaleV->m_Value;
  mesh.Resize(2 * n + 2, 0, n);
  for (int i = 0; i <= n; ++i) {
    const float t = static_cast<float>(i) / n, a = t * MESH_TWO_PI;
    const float s = std::sin(a), c = std::cos(a);
    // One apex per segment, so that each gets the u of its segment's middle.
    mesh.m_Vertices[2 * i] = MeshVertex{{0, h, 0}, {0, 1, 0}, (1.0f - (t + 0.5f / n)) * su, 0.0f};
    mesh.m_Vertices[2 * i + 1] = MeshVertex{{s * r, -h, c * r}, Normalize({s, 0, c}), (1.0f - t) * su, sv};
  }
  for (int i = 0; i < n; ++i) mesh.m_Triangles[i] = MeshTriangle{2 * i, 2 * i + 3, 2 * i + 1};
  return true;
}
