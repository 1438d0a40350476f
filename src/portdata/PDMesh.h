#pragma once
// Mesh data a generator node produces, and the device buffers made from it.
// Generation (CreateMesh) runs once per frame after the graph update; the
// buffers follow on each unit, with tangents worked out on the way.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "render/Matrix.h"
#include "render/Render.h"

// Indices are 16 bits: a mesh addresses at most this many vertices.
constexpr int MESH_MAX_VERTICES = 65536;
// Far above what an addressable mesh needs (a few indices per vertex), and
// a bound on the index buffer whatever a generator is asked for.
constexpr int MESH_MAX_INDICES = 8 * MESH_MAX_VERTICES;

struct MeshVertex {
  CVector3 pos;
  CVector3 normal;
  float u = 0.0f, v = 0.0f;
  uint32_t color = 0xFFFFFFFFu;
};

struct MeshTriangle {
  int a, b, c;
};

struct MeshQuad {
  int a, b, c, d;
};

// A list whose storage only grows: generators set m_Num anew each time and
// the capacity stays for the next generation. Growing keeps the contents.
template <typename T>
class CMeshArray {
 public:
  void Resize(int count) {
    m_Num = count > 0 ? count : 0;
    if (static_cast<size_t>(m_Num) > m_Data.size()) m_Data.resize(m_Num);
  }
  T &operator[](int i) { return m_Data[i]; }
  const T &operator[](int i) const { return m_Data[i]; }
  T *Data() { return m_Data.data(); }
  const T *Data() const { return m_Data.data(); }
  size_t Capacity() const { return m_Data.size(); }

  int m_Num = 0;

 private:
  std::vector<T> m_Data;
};

class CPDMesh {
 public:
  virtual ~CPDMesh() = default;
  // Makes the buffers of the render object's device slot.
  virtual bool MeshRestoreDevice(CRender *render);
  // Releases the buffers of the render object's device slot.
  virtual void MeshInvalidateDevice(CRender *render);
  // Uploads the mesh: buffers grow to fit and are otherwise kept, tangents
  // are worked out, and a mesh with no faces releases its buffers. A mesh
  // that 16-bit indices can't address is refused with an error.
  virtual bool MeshCreateDevice(CRender *render);
  virtual bool MeshUpdateDevice(CRender *render) { return MeshRestoreDevice(render); }
  // One indexed draw of the whole mesh; nothing without buffers.
  virtual void Draw(CRender *render);
  // Fills the vertices and faces of `mesh`, normally this object itself.
  virtual bool CreateMesh(CPDMesh &) { return true; }

  // Sets the counts of a new generation: strip emptied, drawn as a list.
  void Resize(int vertices, int quads, int triangles);
  // Indices the device needs: quads first, then triangles, then the strip.
  int IndexCount() const;

  // True: the index buffer is a triangle list. False: a triangle strip,
  // with m_Strip as the only faces.
  bool m_TriangleList = true;
  bool m_Dirty = true;  // must be generated again
  CMeshArray<MeshTriangle> m_Triangles;
  CMeshArray<MeshQuad> m_Quads;
  CMeshArray<MeshVertex> m_Vertices;
  CMeshArray<int> m_Strip;
  uint32_t m_DirtyUnits = 0xFFFFFFFFu;

  struct DeviceObjects {
    CVertexBuffer *m_VertexBuffer = nullptr;
    CIndexBuffer *m_IndexBuffer = nullptr;
    int m_IndexCount = 0;
  };
  DeviceObjects dObjs[MaxRenderUnits];

 private:
  void WriteVertices(CVertexBuffer *buffer);
  void WriteIndices(CIndexBuffer *buffer);
};
