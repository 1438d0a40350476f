#pragma once

#include <cstdint>

class CRender;

// Mesh data a generator node produces. Generation (CreateMesh) runs once per
// frame after the graph update; device buffers follow on each unit.
class CPDMesh {
 public:
  virtual ~CPDMesh() = default;
  virtual bool MeshRestoreDevice(CRender *) { return true; }
  virtual void MeshInvalidateDevice(CRender *) {}
  virtual bool MeshCreateDevice(CRender *) { return true; }
  virtual bool MeshUpdateDevice(CRender *render) { return MeshRestoreDevice(render); }
  virtual void Draw(CRender *) {}
  // Fills the vertices and faces of `mesh`, normally this object itself.
  virtual bool CreateMesh(CPDMesh &) { return true; }

  bool m_Dirty = true;
  uint32_t m_DirtyUnits = 0xFFFFFFFFu;
};
