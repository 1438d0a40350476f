#pragma once
// What Blur and CopyTexture share: a texture made from the texture on their
// in-port, drawn by the GPU into pooled render targets at the moment
// somebody reads it, with a quad of six vertices and a fixed camera. All
// render target work of the filters goes through the four calls of
// CFilterTargets, so that where targets come from is one place.

#include "portdata/PDTexture.h"
#include "render/Camera.h"
#include "scene/Node.h"

class CFx;
class CNodeInfo;
class CPortTexture;
class CRenderTarget;
class CVertexBuffer;
struct FxTechniqueRecord;

class CFilterTargets {
 public:
  // A pooled target of the size, drawn into until End; null when none.
  CRenderTarget *Begin(CRender &render, int width, int height);
  void End(CRender &render, CRenderTarget &target);
  // Gives a pooled texture back; others are left alone.
  void Release(CRender &render, CTexture *texture);
  CTexture *Color(const CRenderTarget &target) const;
};

class CTextureFilterNode : public CNode, public CPDTexture {
 public:
  ~CTextureFilterNode() override;
  // Frees the effect and the quad.
  void InvalidateDevice(CRender *render) override;

 protected:
  CTextureFilterNode();
  // Offers the texture at the head of Update.
  void Offer();
  // Two triangles of a quad from -`corner` to `corner` in x and y, u and v
  // from 0 to 1 along x and y, white. Row 0 of a render target is the top
  // of its picture and lies at clip space y -1: v grows with y so that the
  // source comes out the right way up.
  bool MakeQuad(CRender *render, float corner);
  // The texture of the Texture in-port, null when there is none.
  CTexture *Source(CRender *render) const;
  // The camera both filters draw with: orthographic, at the origin, looking
  // along +z.
  static CCamera FilterCamera();

  // Frees the effect; the handles into it are cleared by ForgetHandles.
  void ReleaseEffect();
  virtual void ForgetHandles() {}

  CFx *m_Fx = nullptr;
  FxTechniqueRecord *m_Technique = nullptr;
  CPortTexture *m_TextureIn = nullptr;
  CPortTexture *m_TextureOut = nullptr;
  CVertexBuffer *m_Quad[MAX_RENDER_UNITS] = {};
  CFilterTargets m_Targets;
};
