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

template <typename T, int Type, typename Self>
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
  CPort *CloneTyped() const override { return new Self(m_Name.c_str(), m_Desc.c_str()); }
};

class CPortRender : public CPortPointer<CPDRender, PT_Render, CPortRender> {
 public:
  using CPortPointer::CPortPointer;
};
class CPortObject : public CPortPointer<CPDObject, PT_Object, CPortObject> {
 public:
  using CPortPointer::CPortPointer;
};
class CPortEffect : public CPortPointer<CPDEffect, PT_Effect, CPortEffect> {
 public:
  using CPortPointer::CPortPointer;
};

class CPortTexture : public CPortPointer<CPDTexture, PT_Texture, CPortTexture> {
 public:
  using CPortPointer::CPortPointer;
  // Stores the texture; a change of its sampling flags or mode counts as a
  // change of the port, so consumers rebuild what depends on them.
  void SetTexture(CPDTexture *texture);
  uint32_t m_Flags = 0;
  int m_Mode = 0;
};

class CPortMesh : public CPortPointer<CPDMesh, PT_Mesh, CPortMesh> {
 public:
  using CPortPointer::CPortPointer;
  // Generates the mesh now when its producer changed, for nodes that read
  // mesh data outside the frame's normal order.
  void Prepare() override;
};
