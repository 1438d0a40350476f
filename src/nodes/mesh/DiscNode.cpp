#include "nodes/mesh/DiscNode.h"

#include <algorithm>
#include <cmath>

#include "core/Numeric.h"
#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

namespace {
MeshVertex Lerp(const MeshVertex &a, const MeshVertex &b, float f) {
  MeshVertex r = b;
  r.pos = a.pos + (b.pos - a.pos) * f;
  r.normal = a.normal + (b.normal - a.normal) * f;
  r.u = a.u + (b.u - a.u) * f;
  r.v = a.v + (b.v - a.v) * f;
  return r;
}
}  // namespace

CNodeInfo *CDiscNode::CreateInfo() {
  auto *info = new CNodeInfo(3, "Disc", [] { return static_cast<CNode *>(new CDiscNode); }, "Creates a disc mesh");
  info->AddInPort(new CPortFloat("OuterRadius", "Radius of the outer ring", 1.0f, 0.1f, 0.0f, 10000.0f));
  info->AddInPort(new CPortFloat("InnerRadius", "Radius of the inner ring", 0.0f, 0.1f, 0.0f, 10000.0f));
  info->AddInPort(new CPortInt("NumSegments", "Number of segments", 32, 3, 1000));
  info->AddInPort(new CPortFloat("End", "Where the disc should end if we shouldn't create a complete disc", 1.0f,
                                 0.001f, 0.0f, 1.0f));
  AddTextureScalePorts(info);
  AddMeshOutPort(info);
  return info;
}

bool CDiscNode::Init() {
  m_OuterRadius = InPort<CPortFloat>("OuterRadius");
  m_InnerRadius = InPort<CPortFloat>("InnerRadius");
  m_NumSegments = InPort<CPortInt>("NumSegments");
  m_End = InPort<CPortFloat>("End");
  return CShapeNode::Init();
}

bool CDiscNode::CreateMesh(CPDMesh &mesh) {
  // The two radii may be given either way round.
  const float outer = std::max(m_OuterRadius->m_Value, m_InnerRadius->m_Value);
  const float inner = std::min(m_OuterRadius->m_Value, m_InnerRadius->m_Value);
  const int n = PortCount(m_NumSegments);
  const float su = m_ScaleU->m_Value, sv = m_ScaleV->m_Value;
  const CVector3 up{0, 1, 0};

  if (inner <= 0.00001f) {
    mesh.Resize(n + 2, 0, n);
    mesh.m_Vertices[0] = MeshVertex{{0, 0, 0}, up, 0.5f, 0.5f};
    for (int i = 0; i <= n; ++i) {
      const float a = (static_cast<float>(i) / n) * MESH_TWO_PI;
      const float s = std::sin(a), c = std::cos(a), p = s * su * 0.5f, q = c * sv * 0.5f;
      mesh.m_Vertices[i + 1] = MeshVertex{{s * outer, c * outer, 0}, up, p + 0.5f, 1.0f - (q + 0.5f)};
    }
    for (int i = 1; i <= n; ++i) mesh.m_Triangles[i - 1] = MeshTriangle{0, i + 1, i};
    return true;
  }

  // A value over a connection isn't held to the port's range; the ring
  // never goes further than once round.
  const float end = std::clamp(m_End->m_Value, 0.0f, 1.0f);
  const bool partial = std::fabs(end - 1.0f) > 0.00001f;
  const float step = 1.0f / n;
  const int m = partial ? std::min(SatInt(end / step) + 1, n) : n;
  mesh.Resize(2 * m + 2, m, 0);
  const float ratio = outer <= 0.00001f ? 0.0f : inner / outer;
  for (int i = 0; i <= m; ++i) {
    const float a = (static_cast<float>(i) / n) * MESH_TWO_PI;
    const float s = std::sin(a), c = std::cos(a), p = s * su * 0.5f, q = c * sv * 0.5f;
    mesh.m_Vertices[2 * i] = MeshVertex{{s * outer, c * outer, 0}, up, p + 0.5f, 1.0f - (q + 0.5f)};
    mesh.m_Vertices[2 * i + 1] =
        MeshVertex{{s * inner, c * inner, 0}, up, ratio * p + 0.5f, 1.0f - (ratio * q + 0.5f)};
  }
  if (partial) {
    // Pull the last pair back so that the ring ends at End exactly.
    const float f = (end - static_cast<float>(m - 1) / n) / step;
    mesh.m_Vertices[2 * m + 1] = Lerp(mesh.m_Vertices[2 * m - 1], mesh.m_Vertices[2 * m + 1], f);
    mesh.m_Vertices[2 * m] = Lerp(mesh.m_Vertices[2 * m - 2], mesh.m_Vertices[2 * m], f);
  }
  for (int i = 0; i < m; ++i) mesh.m_Quads[i] = MeshQuad{2 * i, 2 * i + 1, 2 * i + 3, 2 * i + 2};
  return true;
}
