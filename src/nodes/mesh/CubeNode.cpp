#include "nodes/mesh/CubeNode.h"

#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

namespace {
// Per face: the normal, then per corner the signs of x, y, z and whether u
// and v are at their scale (1) or at 0.
struct CubeFace {
  CVector3 normal;
  float corner[4][5];
};
// clang-format off
const CubeFace kFaces[6] = {
    {{0, 0, 1},  {{-1, 1, 1, 1, 0},  {1, 1, 1, 0, 0},   {1, -1, 1, 0, 1},   {-1, -1, 1, 1, 1}}},
    {{0, 0, -1}, {{1, -1, -1, 1, 1}, {1, 1, -1, 1, 0},  {-1, 1, -1, 0, 0},  {-1, -1, -1, 0, 1}}},
    {{0, 1, 0},  {{1, 1, 1, 1, 0},   {-1, 1, 1, 0, 0},  {-1, 1, -1, 0, 1},  {1, 1, -1, 1, 1}}},
    {{0, -1, 0}, {{-1, -1, 1, 1, 0}, {1, -1, 1, 0, 0},  {1, -1, -1, 0, 1},  {-1, -1, -1, 1, 1}}},
    {{1, 0, 0},  {{1, -1, 1, 1, 1},  {1, 1, 1, 1, 0},   {1, 1, -1, 0, 0},   {1, -1, -1, 0, 1}}},
    {{-1, 0, 0}, {{-1, 1, -1, 1, 0}, {-1, 1, 1, 0, 0},  {-1, -1, 1, 0, 1},  {-1, -1, -1, 1, 1}}},
};
// clang-format on
}  // namespace

CNodeInfo *CCubeNode::CreateInfo() {
  auto *info = new CNodeInfo(3, "Cube", [] { return static_cast<CNode *>(new CCubeNode); }, "A cube");
  info->AddInPort(new CPortVector("Size", "Cube size", {1, 1, 1}, {0.01f, 0.01f, 0.01f},
                                  {0.0001f, 0.0001f, 0.0001f}, {10000, 10000, 10000}));
  AddTextureScalePorts(info);
  AddMeshOutPort(info);
  return info;
}

bool CCubeNode::Init() {
  m_Size = InPort<CPortVector>("Size");
  return CShapeNode::Init();
}

bool CCubeNode::CreateMesh(CPDMesh &mesh) {
  const CVector3 half{m_Size->m_Value.x * 0.5f, m_Size->m_Value.y * 0.5f, m_Size->m_Value.z * 0.5f};
  const float su = m_ScaleU->m_Value, sv = m_ScaleV->m_Value;
  mesh.Resize(24, 6, 0);
  for (int q = 0; q < 6; ++q) {
    for (int k = 0; k < 4; ++k) {
      const float *c = kFaces[q].corner[k];
      mesh.m_Vertices[4 * q + k] =
          MeshVertex{{c[0] * half.x, c[1] * half.y, c[2] * half.z}, kFaces[q].normal, c[3] * su, c[4] * sv};
    }
    mesh.m_Quads[q] = MeshQuad{4 * q, 4 * q + 1, 4 * q + 2, 4 * q + 3};
  }
  return true;
}
