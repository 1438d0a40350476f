#include "nodes/mesh/TorusNode.h"

#include <cmath>

#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

CNodeInfo *CTorusNode::CreateInfo() {
  auto *info = new CNodeInfo(3, "Torus", [] { return static_cast<CNode *>(new CTorusNode); },
                             "A torus. Can also be twisted into a knot");
  info->AddInPort(new CPortInt("SubAxis", "Subdivisions axis", 256, 3, 1000));
  info->AddInPort(new CPortInt("SubHeight", "Subdivisions height", 16, 3, 1000));
  info->AddInPort(new CPortFloat("Radius", "Radius", 2.0f, 0.01f, 0.01f, 1000.0f));
  info->AddInPort(new CPortFloat("Thickness", "Thickness", 0.2f, 0.01f, 0.01f, 1000.0f));
  info->AddInPort(new CPortInt("Clumps", "Number of clones to create", 0, 0, 1000));
  info->AddInPort(new CPortFloat("ClumpOffset", "Offset of the clumps", 0.0f, 0.1f, -10000.0f, 10000.0f));
  info->AddInPort(new CPortFloat("ClumpScale", "Scale of a clumps", 0.0f, 0.01f, 0.01f, 1000.0f));
  info->AddInPort(new CPortBool("IsPQTorus", "Toggle if the torus is a PQ torus. If false P & Q values are ignored",
                                false));
  info->AddInPort(
      new CPortFloat("P", "P. Make sure IsPQTorus is set to true to enable this value", 1.0f, 0.01f, -1000.0f, 1000.0f));
  info->AddInPort(
      new CPortFloat("Q", "Q. Make sure IsPQTorus is set to true to enable this value", 0.0f, 0.01f, -1000.0f, 1000.0f));
  AddTextureScalePorts(info, 2.0f, 10.0f);
  AddMeshOutPort(info);
  return info;
}

bool CTorusNode::Init() {
  m_SubAxis = InPort<CPortInt>("SubAxis");
  m_SubHeight = InPort<CPortInt>("SubHeight");
  m_Radius = InPort<CPortFloat>("Radius");
  m_Thickness = InPort<CPortFloat>("Thickness");
  m_Clumps = InPort<CPortInt>("Clumps");
  m_ClumpOffset = InPort<CPortFloat>("ClumpOffset");
  m_ClumpScale = InPort<CPortFloat>("ClumpScale");
  m_IsPQTorus = InPort<CPortBool>("IsPQTorus");
  m_P = InPort<CPortFloat>("P");
  m_Q = InPort<CPortFloat>("Q");
  return CShapeNode::Init();
}

bool CTorusNode::CreateMesh(CPDMesh &mesh) {
  int axis = PortCount(m_SubAxis), around = PortCount(m_SubHeight);
  FitGrid(axis, around, 3, 3, 1);
  const int row = around + 1;
  const bool pq = m_IsPQTorus->m_Value;
  const float p = pq ? m_P->m_Value : 1.0f, q = pq ? m_Q->m_Value : 0.0f;
  const float radius = m_Radius->m_Value, offset = pq ? 0.0f : -radius;
  const float thickness = m_Thickness->m_Value, clumps = static_cast<float>(m_Clumps->m_Value);
  const float clumpOffset = m_ClumpOffset->m_Value, clumpScale = m_ClumpScale->m_Value;
  const float su = m_ScaleU->m_Value, sv = m_ScaleV->m_Value;
  // The center line: a circle in y = 0, or a (p, q) knot.
  auto center = [&](int n) {
    const float theta = n * p * MESH_TWO_PI / axis, phi = MESH_TWO_PI * (n * q) / axis;
    const float r = (std::sin(phi) + 2.0f) * 0.5f * radius;
    return CVector3{std::cos(theta) * r, std::cos(phi) * r + offset, std::sin(theta) * r};
  };

  mesh.Resize((axis + 1) * row + 1, 0, 0);  // the last vertex is spare
  mesh.m_Vertices[(axis + 1) * row] = MeshVertex{};
  for (int i = 0; i < axis; ++i) {
    const CVector3 c0 = center(i), c1 = center(i + 1);
    const CVector3 d = c1 - c0;
    const CVector3 b = Normalize(Cross(d, c1 + c0)), nn = Normalize(Cross(b, d));
    const float clump = i * clumps * MESH_TWO_PI / axis + clumpOffset;
    const float e = std::sin(clump) * clumpScale + 1.0f, f = std::cos(clump) * clumpScale + 1.0f;
    const float v = (static_cast<float>(i) / axis) * sv;
    MeshVertex *ring = &mesh.m_Vertices[i * row];
    for (int k = 0; k < around; ++k) {
      const float w = k * MESH_TWO_PI / around;
      const CVector3 pos = c0 + b * (std::cos(w) * thickness * f) + nn * (std::sin(w) * thickness * e);
      ring[k] = MeshVertex{pos, Normalize(pos - c0), (static_cast<float>(k) / around) * su, v};
    }
    ring[around] = ring[0];
    ring[around].u = su;
  }
  // The last row closes the tube onto the first.
  MeshVertex *last = &mesh.m_Vertices[axis * row];
  for (int k = 0; k <= around; ++k) {
    last[k] = mesh.m_Vertices[k];
    last[k].v = sv;
  }
  last[around].u = su;

  mesh.m_TriangleList = false;
  mesh.m_Strip.Resize((axis + 1) * around * 2);
  int s = 0;
  for (int k = 0; k < around; ++k)
    for (int i = 0; i <= axis; ++i) {
      mesh.m_Strip[s++] = i * row + k;
      mesh.m_Strip[s++] = i * row + k + 1;
    }
  return true;
}
