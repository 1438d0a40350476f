#pragma once
// The GL renderer's frame and life cycle: render units (one per window that
// is drawn into, all on one shared GL context), start-up in order, the frame
// over all monitors with presenting as a separate pass, shutdown, and the
// per-monitor settings of config.xml. Draw-level operations are CRenderOGL's.

#include <memory>
#include <string>
#include <vector>

#include "render/RenderWin.h"
#include "renderogl/Screenshot.h"

class IGLContext;
class IWindowSystem;
class CTexture;
class CTextureManager;

struct CRenderUnitOGL {
  CRenderWindow *m_Window = nullptr;  // an entry of m_Windows
  bool m_HasContext = false;
  void Free(IGLContext *context);
};

// What the GL context offers, as `velmor-tool info` prints it.
struct GLInfo {
  std::string vendor, renderer, version;
  bool framebufferObjects = false;
  bool bufferObjects = false;
  bool version20 = false;
};

class CRenderOGLBase : public CRenderWin {
 public:
  // Opens the X display ($DISPLAY when null). Without one the renderer still
  // exists, lists no monitor and makes no window.
  explicit CRenderOGLBase(const char *displayName = nullptr);
  // Draws through a window system the caller owns.
  explicit CRenderOGLBase(IWindowSystem *windows);
  // Frees the device objects and windows without calling the client back.
  ~CRenderOGLBase() override;

  bool Reserved2() override;
  bool Reserved3() override;
  int CreateWin(WindowHandle parent, WindowHandle *outWindow) override;
  bool Init() override;
  bool CreateScreen(int mode, WindowHandle parent, bool visible) override;
  bool Render3DEnvironment(bool blackOnly) override;
  void Cleanup3DEnvironment() override;
  bool Initialize3DEnvironment(int mode) override;
  void Serialize(CSerialize &serializer) override;
  bool SwitchToRenderUnit(int index) override;
  void ReadPixels(void *buffer) override;
  std::string Screenshot(const std::string &path) override;
  void SetSwapInterval(int interval) override;
  // From the pools of the device slot; null before GL first works.
  CRenderTarget *CreateRenderTarget(int width, int height, int depthFormat) override;
  void ReleaseTexture(CTexture *texture) override;
  bool BeginMovie(const std::string &file) override { return m_Screenshot.BeginMovie(file); }
  void AddMovieFrame(int framesPerSecond) override { m_Screenshot.AddMovieFrame(framesPerSecond); }
  void EndMovie() override { m_Screenshot.EndMovie(); }

  bool InitRenderUnit(CRenderWindow *window, CRenderUnitOGL &unit, CRenderUnitOGL *firstUnit);
  bool InitOpenGL(CRenderUnitOGL *unit);
  bool ChangeScreenResolution(CMonitor &monitor);
  bool SetupPixelFormat(CRenderUnitOGL &unit);

  int UnitCount() const { return m_UnitCount; }
  const CRenderUnitOGL &Unit(int index) const { return m_Units[static_cast<size_t>(index)]; }
  // The render unit that draws window `windowIndex`, -1 for a black or
  // missing window.
  int UnitOfWindow(int windowIndex) const;
  // Valid while a context exists.
  GLInfo QueryGLInfo() const;
  // Textures the renderer owns for the whole run (the noise textures);
  // released and deleted by Cleanup3DEnvironment.
  void AdoptTexture(CTexture *texture) { m_OwnedTextures.push_back(texture); }

  CScreenshot m_Screenshot;
  // The render target pools, one per device slot; from the first InitOpenGL
  // to the cleanup.
  CTextureManager *m_TextureManager = nullptr;

 protected:
  // Where the effect system joins: made once, when GL first works, and
  // freed by the cleanup. False fails the start.
  virtual bool InitEffects() { return true; }
  virtual void FreeEffects() {}
  // Runs once the context is ready on unit 0 (the noise textures).
  virtual void CreateDeviceTextures() {}
  // Applies the start state on the current context.
  virtual void ResetDeviceState();
  // Shows an error to a person: a line on stderr, besides the log.
  void ReportError(const char *text);

  CRenderOGLBase(std::unique_ptr<IWindowSystem> windows);
  std::unique_ptr<IWindowSystem> m_OwnWindowSystem;
  std::unique_ptr<IGLContext> m_Context;
  std::array<CRenderUnitOGL, MaxRenderUnits> m_Units;
  int m_UnitCount = 0;
  bool m_GLReady = false;  // GLEW has run and GL 2.0 is there
  bool m_SwitchFailureLogged = false;
  std::vector<CMonitor *> m_ChangedModes;
  std::vector<CTexture *> m_OwnedTextures;
};
