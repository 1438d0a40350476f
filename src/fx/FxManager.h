#pragma once
// CFxManager creates effects and reports compiler errors; CFx is one loaded
// effect with its own world matrix. This half needs no GL: a technique is
// valid when every pass translates, and passes apply nothing.
// CFxManagerOGL (renderogl) overrides the device operations: it compiles and
// links on the current context, applies pass states and uploads values.
//
// Drawing with an effect:
//   FxTechniqueRecord *t = fx->GetBestTechnique();    // once, after loading
//   for (FxPassRecord *p = fx->Begin(t); p; p = fx->NextPass(p)) {
//     fx->BeginPass(p);                                // program and states
//     per item: set values, fx->m_World, fx->CommitChanges(); draw
//     fx->EndPass(p);                                  // states back
//   }

#include "fx/FxEffect.h"

#include <cstdint>
#include <memory>
#include <string>

class CRender;
class CTexture;
class CFx;
struct FxTechniqueRecord;
struct FxPassRecord;

// Error codes reported through the handler, with their texts.
enum EFxError : long { FX_NO_ERROR = 0, FX_COMPILER_ERROR = 1, FX_FILE_READ_ERROR = 2, FX_INVALID_EFFECT = 3 };
const char *FxErrorString(long error);

// The process's compiler error handler: logs "CGError: %s (%ld)" and the
// listing, at most 11 errors and then a burst of 11 every 30 seconds.
void FxErrorHandler(const char *text, long number, const char *listing);
void ResetFxErrorHandler();  // for tests

class CFxManager {
 public:
  virtual ~CFxManager();
  virtual bool Init(CRender *render);
  virtual void Free();

  // A new effect for the file or the text, or null (logged).
  CFx *LoadEffect(const char *path);
  CFx *ParseEffect(const char *text);

  // Whether the technique can be used; here: whether it translates.
  virtual bool ValidateTechnique(CFx &fx, const CFxTechnique &technique);
  // Device work of a pass; nothing without a device.
  virtual bool SetPassState(CFx &fx, const CFxPass &pass);
  virtual void ResetPassState(CFx &fx, const CFxPass &pass);
  // Sends the values and textures that changed since the pass was applied.
  virtual void CommitChanges(CFx &fx);
  // The device's name for a texture (a GL texture name); 0 for none.
  virtual uint32_t TextureName(CTexture *texture);

  // The last error, cleared by reading it.
  long GetError();

  CRender *m_Render = nullptr;

 protected:
  friend class CFx;
  void RaiseError(long error, const std::string &listing);
  bool m_Context = false;
  long m_LastError = FX_NO_ERROR;
};

struct FxPassRecord {
  FxTechniqueRecord *technique = nullptr;
  const CFxPass *pass = nullptr;
};

// What GetBestTechnique returns on the heap; the caller deletes it. The pass
// handle of a technique is its embedded pass record.
struct FxTechniqueRecord {
  CFx *fx = nullptr;
  const CFxTechnique *technique = nullptr;
  FxPassRecord pass;
};

// What a device keeps per effect (linked programs, uploaded values).
class CFxDeviceData {
 public:
  virtual ~CFxDeviceData() = default;
};

class CFx {
 public:
  ~CFx();
  bool Load(const char *path);
  bool Parse(const char *text);

  FxTechniqueRecord *GetBestTechnique();
  const CFxTechnique *GetNamedTechnique(const char *name) const;
  CFxParameter *GetNamedParameter(const char *name);
  CFxEffect *Effect() { return m_Effect.get(); }

  // The pass loop. Begin gives the technique's first pass (null when it has
  // none), NextPass the one after `pass` or null; both reuse the record
  // embedded in the technique record.
  FxPassRecord *Begin(FxTechniqueRecord *technique);
  FxPassRecord *NextPass(FxPassRecord *pass);
  // Applies the pass: program, states, values and textures. False when the
  // pass cannot be drawn (the draw should be skipped).
  bool BeginPass(FxPassRecord *pass);
  // Puts the states the pass set back to GL's defaults.
  void EndPass(FxPassRecord *pass);
  void End();
  void CommitChanges();

  // Feeds a float4x4 parameter the matrix its semantic names, from
  // m_World, the render object's camera view and its projection; any other
  // parameter is left alone.
  bool SetMatrixParameter(CFxParameter &parameter);
  // Binds a texture to a sampler parameter (null unbinds); the sampler's
  // own states apply when the pass is drawn.
  void SetupSampler(CFxParameter &sampler, CTexture *texture);

  float m_World[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  CFxManager *m_Manager;

 private:
  friend class CFxManager;
  explicit CFx(CFxManager *manager) : m_Manager(manager) {}
  bool Create(const std::string &text, const std::string &fileName, const std::string &folder);

  std::unique_ptr<CFxEffect> m_Effect;
  const CFxPass *m_CurrentPass = nullptr;  // between BeginPass and EndPass

 public:
  const CFxPass *CurrentPass() const { return m_CurrentPass; }
  // The device's record of this effect; it goes with the effect.
  std::unique_ptr<CFxDeviceData> m_Device;
};
