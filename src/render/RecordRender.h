#pragma once
// A renderer that draws nothing and writes down everything: each call that
// has an effect becomes one line in m_Calls ("DrawPrimitive 4 0 2"), each draw
// also a CRecordedDraw with the world matrix and states it ran under, and
// misuse that a GPU would silently tolerate (a draw past a buffer's end, a
// draw from a locked buffer, a push left open at the end of a frame) goes to
// m_Faults. Buffers and textures are plain memory that tests read back.
//
//   CRecordRender render(640, 480);
//   render.m_Callbacks.onRender = [&] { scene.Draw(render); };
//   render.Render3DEnvironment(false);
//   EXPECT_EQ(render.Calls("Draw").size(), 2u);
//   EXPECT_TRUE(render.m_Faults.empty());
//
// Render targets are recorded too: "CreateTarget 64x32", "BeginTarget 64x32",
// "EndTarget 64x32" and, for a target's color, "ReleaseTarget pooled" (or
// "held" for a kept one, which is left alone). A target given back is handed out again for
// the same size, as the GL pools do; m_FailTargets makes CreateRenderTarget
// give none.
//
// Queries (GetCamera, GetTransform, GetAspect, IsRenderWindow,
// GetWindowHandle) are not logged. The non-virtual state helpers show up as
// the SetRenderState calls they make.

#include "core/Log.h"
#include "render/Render.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class CRecordRender;

// What every recorded resource shares: an id in creation order per kind, the
// log name built from both ("vb3") and the recorder it reports to.
class CRecordResource {
 public:
  CRecordResource(CRecordRender *owner, const char *kind, int id);
  virtual ~CRecordResource();
  CRecordResource(const CRecordResource &) = delete;
  CRecordResource &operator=(const CRecordResource &) = delete;

  // Logs "<operation> <kind><id>".
  void Note(const char *operation) const;

  CRecordRender *m_Owner;  // null once the recorder is gone
  const char *m_Kind;
  int m_Id;
};

// Buffer memory: each lock abandons the old contents, as an orphaned GPU
// buffer would, so code that reads back last frame's data shows up.
class CRecordStorage : public CRecordResource {
 public:
  using CRecordResource::CRecordResource;
  void *LockBytes();
  void UnlockBytes();

  bool m_Locked = false;
  std::vector<uint8_t> m_Bytes;
};

class CRecordVertexBuffer : public CVertexBuffer, public CRecordStorage {
 public:
  CRecordVertexBuffer(CRecordRender *owner, int id, int size, int flags, int format);
  void *Lock() override { return LockBytes(); }
  void Unlock() override { UnlockBytes(); }
  void Release() override;

  template <class Vertex>
  const Vertex *Vertices() const {
    return reinterpret_cast<const Vertex *>(m_Bytes.data());
  }
};

class CRecordIndexBuffer : public CIndexBuffer, public CRecordStorage {
 public:
  CRecordIndexBuffer(CRecordRender *owner, int id, int size, int flags);
  uint16_t *Lock() override { return static_cast<uint16_t *>(LockBytes()); }
  void Unlock() override { UnlockBytes(); }
  void Release() override;

  const uint16_t *Indices() const { return reinterpret_cast<const uint16_t *>(m_Bytes.data()); }
};

class CRecordTexture : public CTexture, public CRecordResource {
 public:
  CRecordTexture(CRecordRender *owner, int id, int width, int height, int depth, int format, int type);
  uint32_t *Lock() override;
  void Unlock() override;
  void Release() override;
  void GenerateMipmaps() override;

  int m_Type;
  int m_Uploads = 0;  // Unlock calls
  bool m_Released = false;
  std::vector<uint32_t> m_Pixels;  // TexelCount() texels until Release; none for render targets
};

class CRecordTarget : public CRenderTarget {
 public:
  CRecordTarget(CRecordRender *owner, int id, int width, int height);
  ~CRecordTarget() override;
  void Begin(CRender &render) override;
  void End(CRender &render) override;

  CRecordRender *m_Owner;
  bool m_InUse = true;
};

struct CRecordedDraw {
  bool indexed = false;
  int type = 0;
  int first = 0;         // start vertex; 0 for indexed draws
  int primitives = 0;
  int vertices = 0;      // vertices or indices read, from the primitive count
  int vertexBuffer = 0;  // ids, 0 for none
  int indexBuffer = 0;
  CMatrix world;
  RenderStateRecord states;
};

// Application callbacks made of functions; any left empty does nothing.
class CRenderClientFunctions : public CRenderClient {
 public:
  bool Render() override;
  bool FrameFinished() override;
  bool InvalidateDeviceObjects() override;

  std::function<void()> onRender;
  std::function<void()> onFrameFinished;
  std::function<void()> onInvalidate;
};

class CRecordRender : public CRender {
 public:
  // One render unit of width x height at the desktop origin.
  explicit CRecordRender(int width = 800, int height = 600);
  ~CRecordRender() override;

  // One render unit per rect, in desktop coordinates; the virtual rect
  // becomes their union and unit 0 the current one. An empty list leaves
  // no unit.
  void SetUnits(const std::vector<CRect> &units);

  // One line to m_Calls (tests may add markers of their own), or to
  // m_Faults; both only while m_Recording is set.
  void Record(const char *format, ...) VELMOR_PRINTF(2, 3);
  void Fault(const char *format, ...) VELMOR_PRINTF(2, 3);
  // Lines of m_Calls that begin with `prefix`.
  std::vector<std::string> Calls(std::string_view prefix) const;
  // Forgets calls, draws and faults.
  void ClearCalls();

  // Live resources by id; null once released (textures: once deleted).
  CRecordVertexBuffer *VertexBuffer(int id) const { return Find<CRecordVertexBuffer>(id); }
  CRecordIndexBuffer *IndexBuffer(int id) const { return Find<CRecordIndexBuffer>(id); }
  CRecordTexture *Texture(int id) const { return Find<CRecordTexture>(id); }
  // Buffers and textures made and not yet deleted, of a kind ("vb", "ib", "tex").
  int LiveCount(std::string_view kind) const;

  void SetViewport(float x, float y, float width, float height) override;
  void SetCamera(const CCamera &camera) override;
  CVertexBuffer *CreateVertexBuffer(int size, int flags, int format) override;
  bool SetVertexBuffer(CVertexBuffer *buffer) override;
  CIndexBuffer *CreateIndexBuffer(int size, int flags) override;
  bool SetIndexBuffer(CIndexBuffer *buffer) override;
  CTexture *CreateTexture(int width, int height, int depth, int format, int type) override;
  void CopyToTexture(CTexture *texture, float x, float y, float width, float height) override;
  CRenderTarget *CreateRenderTarget(int width, int height, int depthFormat) override;
  void ReleaseTexture(CTexture *texture) override;
  bool Clear(const float color[4], float depth, int flags) override;
  void SetTransform(int type, const CMatrix &matrix) override;
  bool DrawPrimitive(int primitiveType, int startVertex, int primitiveCount) override;
  bool DrawIndexedPrimitive(int primitiveType, int vertexCount, int primitiveCount) override;
  int CreateWin(WindowHandle parent, WindowHandle *outWindow) override;
  bool Init() override;
  bool Render3DEnvironment(bool blackOnly) override;
  void Cleanup3DEnvironment() override;
  bool CreateScreen(int mode, WindowHandle parent, bool visible) override;
  void DestroyScreen() override;
  bool Initialize3DEnvironment(int mode) override;
  void SetRenderState(int state, int value) override;
  bool SwitchToRenderUnit(int index) override;
  // Fills the unit's padded rows with m_ReadPixelsValue.
  void ReadPixels(void *buffer) override;
  bool IsRenderWindow(WindowHandle window) override;
  intptr_t MsgProc(WindowHandle window, uint32_t message, uintptr_t wparam, intptr_t lparam) override;
  WindowHandle GetWindowHandle(int index) const override;

  std::vector<std::string> m_Calls;
  std::vector<CRecordedDraw> m_Draws;
  std::vector<std::string> m_Faults;
  // Off for benchmarks: no line, draw or fault is stored, so a steady frame
  // allocates nothing.
  bool m_Recording = true;
  std::vector<CRect> m_Units;
  std::vector<WindowHandle> m_Windows;  // what GetWindowHandle and IsRenderWindow see
  CRenderClientFunctions m_Callbacks;   // the client until SetClient names another
  int m_Frames = 0;                     // Render3DEnvironment calls
  uint8_t m_ReadPixelsValue = 0;
  bool m_FailTargets = false;
  // Every target made, in order; targets given back stay here for reuse.
  std::vector<std::unique_ptr<CRecordTarget>> m_Targets;
  CRecordTarget *LastTarget() const { return m_Targets.empty() ? nullptr : m_Targets.back().get(); }

 private:
  friend class CRecordResource;

  template <class Resource>
  Resource *Find(int id) const {
    for (CRecordResource *r : m_Live)
      if (r->m_Id == id)
        if (auto *found = dynamic_cast<Resource *>(r)) return found;
    return nullptr;
  }

  // Checks that the bound vertex buffer can serve `count` vertices from
  // `first`; records a fault naming `call` otherwise.
  bool CheckVertexRange(const char *call, int first, int count);
  void RecordDraw(bool indexed, int type, int first, int primitives);

  int m_NextId[3] = {1, 1, 1};  // vertex buffers, index buffers, textures
  std::vector<CRecordResource *> m_Live;
};
