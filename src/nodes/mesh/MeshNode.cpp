#include "nodes/mesh/MeshNode.h"

#include <algorithm>

#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

bool CMeshNode::Init() {
  m_MeshOut = OutPort<CPortMesh>("Mesh");
  return true;
}

bool CShapeNode::Init() {
  m_ScaleU = InPort<CPortFloat>("ScaleU");
  m_ScaleV = InPort<CPortFloat>("ScaleV");
  return CMeshNode::Init();
}

void CMeshNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  if (UpdateInPorts(frame->Time)) m_Dirty = true;
  if (m_MeshOut) m_MeshOut->m_Value = this;
}

bool CMeshNode::GenerateFrom(const CPortMesh *port, CPDMesh &target) {
  if (!port || !port->m_Value || m_Generating) return false;
  m_Generating = true;
  const bool ok = port->m_Value->CreateMesh(target);
  m_Generating = false;
  return ok;
}

void AddTextureScalePorts(CNodeInfo *info, float u, float v) {
  info->AddInPort(new CPortFloat("ScaleU", "Scale of texture U", u, 0.01f, 0.0001f, 1000.0f));
  info->AddInPort(new CPortFloat("ScaleV", "Scale of texture V", v, 0.01f, 0.0001f, 1000.0f));
}

void AddMeshOutPort(CNodeInfo *info) { info->AddOutPort(new CPortMesh("Mesh", "Mesh")); }

int PortCount(const CPortInt *port) { return std::clamp(port->m_Value, port->m_Min, port->m_Max); }

void FitGrid(int &a, int &b, int minA, int minB, int extra) {
  auto vertices = [&] { return (static_cast<long long>(a) + 1) * (static_cast<long long>(b) + 1) + extra; };
  while (vertices() > MESH_MAX_VERTICES) {
    if ((a >= b || b <= minB) && a > minA)
      --a;
    else if (b > minB)
      --b;
    else
      break;
  }
}

int CloneLimit(const CPDMesh &mesh, long long wanted) {
  const long long byVertices = MESH_MAX_VERTICES / std::max(mesh.m_Vertices.m_Num, 1);
  const long long byIndices = MESH_MAX_INDICES / std::max((mesh.m_Triangles.m_Num + 2 * mesh.m_Quads.m_Num) * 3, 1);
  return static_cast<int>(std::max(1LL, std::min({wanted, byVertices, byIndices})));
}

void TransformVertices(const MeshVertex *src, int count, MeshVertex *dst, const CMatrix &rotation,
                       const CVector3 &scale, const CVector3 &offset) {
  const CVector3 r0{rotation(0, 0), rotation(0, 1), rotation(0, 2)};
  const CVector3 r1{rotation(1, 0), rotation(1, 1), rotation(1, 2)};
  const CVector3 r2{rotation(2, 0), rotation(2, 1), rotation(2, 2)};
  for (int i = 0; i < count; ++i) {
    const MeshVertex &s = src[i];
    MeshVertex &d = dst[i];
    d.pos = r0 * (s.pos.x * scale.x) + r1 * (s.pos.y * scale.y) + r2 * (s.pos.z * scale.z) + offset;
    d.normal = r0 * s.normal.x + r1 * s.normal.y + r2 * s.normal.z;
    d.u = s.u;
    d.v = s.v;
    d.color = s.color;
  }
}

void CopyFaces(const CPDMesh &src, int quads, int triangles, CPDMesh &dst, int quadAt, int triangleAt, int base) {
  for (int i = 0; i < quads; ++i) {
    const MeshQuad &q = src.m_Quads[i];
    dst.m_Quads[quadAt + i] = MeshQuad{q.a + base, q.b + base, q.c + base, q.d + base};
  }
  for (int i = 0; i < triangles; ++i) {
    const MeshTriangle &t = src.m_Triangles[i];
    dst.m_Triangles[triangleAt + i] = MeshTriangle{t.a + base, t.b + base, t.c + base};
  }
}
