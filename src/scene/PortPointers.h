#pragma once
// Ports that carry a pointer to data a node produces (a render stage, an
// object, an effect, a texture, a mesh). The producer sets its out-port to
// itself on every update; an unconnected in-port holds null.

#include <cstdint>

#include "scene/Port.h"

class CPDRender;
class CPDObject;
class CPDEffect;
class CPDTexture;
class CPDMesh;

template <typename T, int Type>
class CPortPointer : public CPort {
 public:
  CPortPointer(const char *name, const char *desc) : CPort(Type, name, desc) {}
  void Update(float time) override {
    if (!PullSource(time)) {
      m_Value = nullptr;
      return;
    }
    m_Value = static_cast<CPortPointer *>(m_Source)->m_Value;
  }
  T *m_Value = nullptr;

 protected:
  CPort *CloneTyped() const override { return new CPortPointer(m_Name.c_str(), m_Desc.c_str()); }
};

using CPortRender = CPortPointer<CPDRender, PT_Render>;
using CPortObject = CPortPointer<CPDObject, PT_Object>;
using CPortEffect = CPortPointer<CPDEffect, PT_Effect>;

class CPortTexture : public CPortPointer<CPDTexture, PT_Texture> {
 public:
  using CPortPointer::CPortPointer;
  // Stores the texture; a change of its sampling flags or mode counts as a
  // change of the port, so consumers rebuild what depends on them.
  void SetTexture(CPDTexture *texture);
  uint32_t m_Flags = 0;
  int m_Mode = 0;

 protected:
  CPort *CloneTyped() const override;
};

class CPortMesh : public CPortPointer<CPDMesh, PT_Mesh> {
 public:
  using CPortPointer::CPortPointer;
  // Generates the mesh now when its producer changed, for nodes that read
  // mesh data outside the frame's normal order.
  void Prepare() override;

 protected:
  CPort *CloneTyped() const override;
};
