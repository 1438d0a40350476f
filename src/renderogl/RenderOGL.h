#pragma once
// The draw-level half of the GL renderer: buffers, textures, clears, render
// states, matrices and draw calls on the fixed generic vertex attributes.
//
//   CRenderOGL render;                      // opens $DISPLAY
//   render.Init();                          // monitors
//   render.CreateScreen(MODE_Test, 0, true);
//   render.SetClient(&app);                 // Render() draws one unit
//   render.Initialize3DEnvironment(MODE_Test);
//   while (running) render.Render3DEnvironment(false);
//   render.Cleanup3DEnvironment();
//   render.DestroyScreen();

#include "renderogl/RenderOGLBase.h"

class CRenderOGL : public CRenderOGLBase {
 public:
  using CRenderOGLBase::CRenderOGLBase;

  void SetViewport(float x, float y, float width, float height) override;
  CVertexBuffer *CreateVertexBuffer(int size, int flags, int format) override;
  CIndexBuffer *CreateIndexBuffer(int size, int flags) override;
  CTexture *CreateTexture(int width, int height, int depth, int format, int type) override;
  void CopyToTexture(CTexture *texture, float x, float y, float width, float height) override;
  bool Clear(const float color[4], float depth, int flags) override;
  void SetTransform(int type, const CMatrix &matrix) override;
  bool DrawPrimitive(int primitiveType, int startVertex, int primitiveCount) override;
  bool DrawIndexedPrimitive(int primitiveType, int vertexCount, int primitiveCount) override;
  void SetRenderState(int state, int value) override;

 protected:
  void ResetDeviceState() override;
  // The effect manager (CFxManagerOGL) and the noise textures effects sample.
  bool InitEffects() override;
  void FreeEffects() override;
  void CreateDeviceTextures() override;
  // What a driver would otherwise make on a scene's first frame, made now.
  void WarmUpDevice();

 private:
  bool BindAttributes();
  void UnbindAttributes();
};

// GL names of the interface's numbers; 0 for a value that names none.
unsigned GLBlendFactor(int blend);
unsigned GLPrimitive(int primitiveType);
