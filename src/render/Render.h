#pragma once
// The abstract renderer that nodes, port data and batch renderers draw
// against. It holds no windowing or graphics-library type: windows are
// opaque handles and device objects are the resources of Resources.h, so the
// node library compiles and runs its logic with no GPU present.

#include "platform/WindowMessage.h"
#include "render/Camera.h"
#include "render/Matrix.h"
#include "render/Rect.h"
#include "render/RenderTarget.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"
#include "render/VertexFormat.h"

#include <cstdint>
#include <deque>

class CFxManager;
class CSerialize;

// What a renderer's frame calls back into: the application. Render draws the
// whole scene for the render unit the renderer has just switched to.
class CRenderClient {
 public:
  virtual ~CRenderClient() = default;
  virtual bool Render() = 0;
  virtual bool FrameFinished() = 0;
  virtual bool InvalidateDeviceObjects() = 0;
};

// Device objects of nodes are kept per device slot; the slot is always 0
// because every render unit shares one context.
constexpr int MaxRenderUnits = 9;

class CRender {
 public:
  CRender();
  virtual ~CRender();
  CRender(const CRender &) = delete;
  CRender &operator=(const CRender &) = delete;

  // Fractions of the unit rect; see ViewportPixels.
  virtual void SetViewport(float x, float y, float width, float height);
  virtual CCamera *GetCamera();
  // Copies the camera, builds the projection for the current unit rect and
  // passes projection and view on through SetTransform.
  virtual void SetCamera(const CCamera &camera);
  // `size` counts vertices. Null only when allocation fails.
  virtual CVertexBuffer *CreateVertexBuffer(int size, int flags, int format) = 0;
  virtual bool SetVertexBuffer(CVertexBuffer *buffer);
  virtual CIndexBuffer *CreateIndexBuffer(int size, int flags) = 0;
  virtual bool SetIndexBuffer(CIndexBuffer *buffer);
  virtual intptr_t Reserved1(intptr_t) { return 0; }
  // The texture records the current device slot. Null only when allocation
  // fails.
  virtual CTexture *CreateTexture(int width, int height, int depth, int format, int type) = 0;
  // Copies from the current framebuffer into the texture's origin; the source
  // is CopySourceRect of the fractions. Sets TEXF_Copied.
  virtual void CopyToTexture(CTexture *texture, float x, float y, float width, float height) = 0;
  virtual bool Reserved2() { return true; }
  virtual bool Reserved3() { return true; }
  // A target of the size with a pooled color texture (TEXF_Pooled set) and,
  // for DEPTH_Stencil, a depth and stencil buffer; see RenderTarget.h. Null
  // when the renderer has none to give; an incomplete one is logged and
  // returned all the same.
  virtual CRenderTarget *CreateRenderTarget(int width, int height, int depthFormat) = 0;
  // Gives a pooled color texture back, and with it its target and buffer.
  // A texture without TEXF_Pooled (a file texture, a kept target) and a
  // second release are left alone.
  virtual void ReleaseTexture(CTexture *texture) = 0;
  // Clears color (CLEAR_Color), depth (CLEAR_Depth) and always the stencil.
  virtual bool Clear(const float color[4], float depth, int flags) = 0;
  // TS_World and TS_View store the matrix; TS_Projection stores nothing, the
  // projection comes from the camera.
  virtual void SetTransform(int type, const CMatrix &matrix);
  // TS_View gives the view matrix, anything else the world matrix.
  virtual const CMatrix *GetTransform(int type);
  // Of the unit rect with AllScreensSame, else of the virtual rect.
  virtual float GetAspect();
  virtual bool Reserved4(intptr_t, intptr_t, intptr_t, intptr_t, intptr_t, intptr_t, intptr_t, intptr_t, intptr_t) {
    return false;
  }
  virtual void Reserved5(intptr_t, intptr_t, intptr_t) {}
  // From the current vertex buffer; PrimitiveVertexCount gives how many
  // vertices the count covers.
  virtual bool DrawPrimitive(int primitiveType, int startVertex, int primitiveCount) = 0;
  // From the current vertex and index buffers, from index 0. `vertexCount`
  // is not used.
  virtual bool DrawIndexedPrimitive(int primitiveType, int vertexCount, int primitiveCount) = 0;
  // Adds a child view of `parent`; the render unit index or -1.
  virtual int CreateWin(WindowHandle parent, WindowHandle *outWindow);
  virtual bool Init();
  virtual void Reserved6() {}
  virtual void Reserved7() {}
  // Draws and presents one frame on every unit: the client's Render per
  // unit (or a black clear), then FrameFinished once.
  virtual bool Render3DEnvironment(bool blackOnly);
  virtual void Cleanup3DEnvironment();
  virtual bool CanRun();
  virtual bool CreateScreen(int mode, WindowHandle parent, bool visible);
  virtual void DestroyScreen();
  virtual bool Initialize3DEnvironment(int mode);
  virtual void Serialize(CSerialize &serializer);
  // The backend's effect of one state. Keeps no record: SetState does.
  virtual void SetRenderState(int state, int value) = 0;
  virtual intptr_t Reserved8(intptr_t) { return 0; }
  // Makes unit `index` current and sets the unit rect.
  virtual bool SwitchToRenderUnit(int index);
  // The current unit's whole rectangle as 3-byte pixels, rows bottom up,
  // each row padded to 4 bytes.
  virtual void ReadPixels(void *buffer);
  virtual bool IsRenderWindow(WindowHandle window);
  // Sees every window message before the default handling.
  virtual intptr_t MsgProc(WindowHandle window, uint32_t message, uintptr_t wparam, intptr_t lparam);
  // The handle of render window `index`, 0 if there is none. Index 0 is the
  // window a host sends its close message to.
  virtual WindowHandle GetWindowHandle(int index) const;

  // Render state record. Nodes change states through these, never through
  // SetRenderState directly, so that push and pop can restore them.
  void SetState(int state, int value);
  void ApplyStates(const RenderStateRecord &record);
  void PushRenderState();
  // Restores the record pushed last and re-applies all twelve states, even
  // unchanged ones: the backend may have been changed behind the record.
  void PopRenderState();
  // RenderStateFlag bits, in ascending order.
  void EnableStates(int flags);
  // Also resets blending to One, Zero when RSF_AlphaTest is among the flags.
  void DisableStates(int flags);
  void SetBlendModes(int src, int dst);
  // Clockwise and counter-clockwise swap while drawing flipped into a
  // render target.
  void SetCullMode(int value);

  // Pixel rectangle of a viewport given as fractions of the unit rect,
  // clipped to it.
  CPixelRect ViewportPixels(float x, float y, float width, float height) const;
  // Source rectangle of CopyToTexture for fractions of the texture's size.
  static CPixelRect CopySourceRect(const CTexture &texture, float x, float y, float width, float height);

  void SetClient(CRenderClient *client) { m_Client = client; }

  CMatrix m_Projection;
  CRect m_VirtualRect;    // union of all shown monitors: the area one view spans
  CRect m_UnitRect;       // current render unit, or the render target while one is active
  CPixelRect m_Viewport;  // set by SetViewport, in pixels of the unit rect
  bool m_Failed = false;   // could not start; frames are black
  bool m_Flipped = false;  // drawing into a render target
  int m_DeviceSlot = 0;
  int m_RenderUnit = 0;
  std::deque<RenderStateRecord> m_StateStack;
  RenderStateRecord m_States;
  // The effect system that loads and parses effects, set by the backend that
  // owns it. Its base needs no device, so a test may lend a recorder one.
  CFxManager *m_FxManager = nullptr;
  CVertexBuffer *m_CurrentVB = nullptr;  // not owned
  CIndexBuffer *m_CurrentIB = nullptr;   // not owned
  CMatrix m_View;
  CMatrix m_World;
  CCamera m_Camera;
  bool m_AllScreensSame = false;

 protected:
  // The per-unit half of a frame: switch to each unit, then let the client
  // draw it, or clear it to black when blackOnly, failed or the switch failed.
  void DrawUnits(int unitCount, bool blackOnly);

  CRenderClient *m_Client = nullptr;  // not owned
};
