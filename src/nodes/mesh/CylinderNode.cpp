#include "nodes/mesh/CylinderNode.h"

#include <cmath>

#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

namespace {
// Two vertices per step round the ring, top then bottom. Without `cap` the
// normals point out from the axis and u runs round; with it they point up
// and down, and u, v map the ring onto a disc of the texture.
void WriteRing(MeshVertex *out, int n, float h, float top, float bottom, float su, float sv, bool cap) {
  const float capU = su / 2.8f, capV = sv / 2.8f;
  for (int i = 0; i <= n; ++i) {
    const float t = static_cast<float>(i) / n, a = t * MESH_TWO_PI;
    const float s = std::sin(a), c = std::cos(a);
    MeshVertex &up = out[2 * i], &down = out[2 * i + 1];
    up.pos = {s * top, h, c * top};
    down.pos = {s * bottom, -h, c * bottom};
    if (cap) {
      up.normal = {0, 1, 0};
      down.normal = {0, -1, 0};
      up.u = down.u = s * capU * 0.5f + 0.5f;
      up.v = down.v = c * capV * 0.5f + 0.5f;
    } else {
      up.normal = down.normal = Normalize({s, 0, c});
      up.u = down.u = (1.0f - t) * su;
      up.v = 0.0f;
      down.v = sv;
    }
    up.color = down.color = 0xFFFFFFFFu;
  }
}
}  // namespace

CNodeInfo *CCylinderNode::CreateInfo() {
  auto *info = new CNodeInfo(3, "Cylinder", [] { return static_cast<CNode *>(new CCylinderNode); }, "A cylinder");
  info->AddInPort(new CPortFloat("Radius", "Radius", 0.5f, 0.1f, 0.0001f, 10000.0f));
  info->AddInPort(new CPortFloat("RadiusScaleTop", "Scale adjustment of top ring", 1.0f, 0.1f, -1000.0f, 1000.0f));
  info->AddInPort(
      new CPortFloat("RadiusScaleBottom", "Scale adjustment of bottom ring", 1.0f, 0.1f, -1000.0f, 1000.0f));
  info->AddInPort(new CPortFloat("Height", "Height", 1.0f, 0.1f, 0.0001f, 10000.0f));
  info->AddInPort(new CPortInt("NumSegments", "Number of segments", 32, 3, 1000));
  AddTextureScalePorts(info);
  info->AddInPort(new CPortBool("Capped", "Put caps on the top and bottom of the cylinder", true));
  AddMeshOutPort(info);
  return info;
}

bool CCylinderNode::Init() {
  m_Radius = InPort<CPortFloat>("Radius");
  m_RadiusScaleTop = InPort<CPortFloat>("RadiusScaleTop");
  m_RadiusScaleBottom = InPort<CPortFloat>("RadiusScaleBottom");
  m_Height = InPort<CPortFloat>("Height");
  m_NumSegments = InPort<CPortInt>("NumSegments");
  m_Capped = InPort<CPortBool>("Capped");
  return CShapeNode::Init();
}

bool CCylinderNode::CreateMesh(CPDMesh &mesh) {
  const int n = PortCount(m_NumSegments);
  const bool capped = m_Capped->m_Value;
  const float h = m_Height->m_Value * 0.5f;
  const float top = m_Radius->m_Value * m_RadiusScaleTop->m_Value;
  const float bottom = m_Radius->m_Value * m_RadiusScaleBottom->m_Value;
  const float su = m_ScaleU->m_Value, sv = m_ScaleV->m_Value;
  mesh.Resize(capped ? 4 * n + 6 : 2 * n + 2, n, capped ? 2 * n : 0);
  WriteRing(&mesh.m_Vertices[0], n, h, top, bottom, su, sv, false);
  for (int i = 0; i < n; ++i) mesh.m_Quads[i] = MeshQuad{2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1};
  if (!capped) return true;

  const int center = 2 * n + 2;
  mesh.m_Vertices[center] = MeshVertex{{0, h, 0}, {0, 1, 0}, su * 0.5f, 0.0f};
  mesh.m_Vertices[center + 1] = MeshVertex{{0, -h, 0}, {0, -1, 0}, su * 0.5f, sv};
  WriteRing(&mesh.m_Vertices[center + 2], n, h, top, bottom, su, sv, true);
  for (int i = 0; i < n; ++i) {
    mesh.m_Triangles[i] = MeshTriangle{center + 2 * i + 4, center + 2 * i + 2, center};
    mesh.m_Triangles[n + i] = MeshTriangle{center + 2 * i + 3, center + 2 * i + 5, center + 1};
  }
  return true;
}
