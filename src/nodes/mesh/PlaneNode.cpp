#include "nodes/mesh/PlaneNode.h"

#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

CNodeInfo *CPlaneNode::CreateInfo() {
  auto *info = new CNodeInfo(3, "Plane", [] { return static_cast<CNode *>(new CPlaneNode); }, "A 2d plane");
  info->AddInPort(new CPortFloat("Width", "Width", 1.0f, 0.01f, 0.0001f, 1000.0f));
  info->AddInPort(new CPortFloat("Height", "Height", 1.0f, 0.01f, 0.0001f, 1000.0f));
  info->AddInPort(new CPortInt("TesselateW", "Width tessellation", 1, 1, 100000));
  info->AddInPort(new CPortInt("TesselateH", "Height tessellation", 1, 1, 100000));
  AddTextureScalePorts(info);
  AddMeshOutPort(info);
  return info;
}

bool CPlaneNode::Init() {
  m_Width = InPort<CPortFloat>("Width");
  m_Height = InPort<CPortFloat>("Height");
  m_TesselateW = InPort<CPortInt>("TesselateW");
  m_TesselateH = InPort<CPortInt>("TesselateH");
  return CShapeNode::Init();
}

bool CPlaneNode::CreateMesh(CPDMesh &mesh) {
  int w = PortCount(m_TesselateW), h = PortCount(m_TesselateH);
  FitGrid(w, h, 1, 1, 0);
  const float width = m_Width->m_Value, height = m_Height->m_Value;
  mesh.Resize((w + 1) * (h + 1), w * h, 0);
  // Running sums, row by row.
  const float dx = width / w, dy = -height / h;
  const float du = (1.0f / w) * m_ScaleU->m_Value, dv = (1.0f / h) * m_ScaleV->m_Value;
  float y = height * 0.5f, v = 0.0f;
  int k = 0;
  for (int j = 0; j <= h; ++j, y += dy, v += dv) {
    float x = width * -0.5f, u = 0.0f;
    for (int i = 0; i <= w; ++i, x += dx, u += du) mesh.m_Vertices[k++] = MeshVertex{{x, y, 0}, {0, 0, -1}, u, v};
  }
  k = 0;
  for (int j = 0; j < h; ++j)
    for (int i = 0; i < w; ++i) {
      const int a = j * (w + 1) + i;
      mesh.m_Quads[k++] = MeshQuad{a, a + w + 1, a + w + 2, a + 1};
    }
  return true;
}
