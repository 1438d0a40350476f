#pragma once
// What every mesh node shares: the guarded Update that marks the mesh for
// generation when an in-port changed and hands the node out on its Mesh
// port, the texture scale ports of the shapes, and the limits that keep a
// generated mesh within what 16-bit indices address.

#include "portdata/PDMesh.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortFloat;
class CPortInt;
class CPortMesh;

constexpr float MESH_PI = 3.1415927410125732f;
constexpr float MESH_TWO_PI = 6.2831854820251465f;
constexpr float MESH_DEG_TO_RAD = 0.01745329238474369f;

class CMeshNode : public CNode, public CPDMesh {
 public:
  // Finds the Mesh out-port; types call it at the end of their own Init.
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

 protected:
  // Generates the mesh on `port` into `target`: false when the port holds
  // none, the source fails, or the call came back round a cycle of meshes.
  bool GenerateFrom(const CPortMesh *port, CPDMesh &target);

  CPortMesh *m_MeshOut = nullptr;

 private:
  bool m_Generating = false;
};

// A mesh node that generates a shape: it has the texture scale ports, which
// its Init binds before the Mesh out-port.
class CShapeNode : public CMeshNode {
 public:
  bool Init() override;

 protected:
  CPortFloat *m_ScaleU = nullptr, *m_ScaleV = nullptr;
};

// ScaleU and ScaleV, which every shape has.
void AddTextureScalePorts(CNodeInfo *info, float u = 1.0f, float v = 1.0f);
// The Mesh out-port that ends every mesh node type.
void AddMeshOutPort(CNodeInfo *info);

// A count port's value within its range: a value that arrives over a
// connection is not limited by the port.
int PortCount(const CPortInt *port);

// Lowers the larger of two tessellations, step by step, until a grid of
// (a + 1) * (b + 1) + extra vertices fits MESH_MAX_VERTICES; neither goes
// below its minimum.
void FitGrid(int &a, int &b, int minA, int minB, int extra);

// Clones of `mesh`'s vertices and faces that fit the vertex and index
// limits, from 1 to `wanted`.
int CloneLimit(const CPDMesh &mesh, long long wanted);

// Writes `count` vertices of `src` to `dst`: position (x * scale.x) * row 0
// of `rotation` + (y * scale.y) * row 1 + (z * scale.z) * row 2 + `offset`;
// normal * rotation, not normalized; texture coordinate and color copied.
void TransformVertices(const MeshVertex *src, int count, MeshVertex *dst, const CMatrix &rotation,
                       const CVector3 &scale, const CVector3 &offset);

// Copies the first `quads` quads and `triangles` triangles of `src` into
// `dst` at the given places, with `base` added to each index. `src` may be
// `dst` when the two ranges don't overlap.
void CopyFaces(const CPDMesh &src, int quads, int triangles, CPDMesh &dst, int quadAt, int triangleAt, int base);
