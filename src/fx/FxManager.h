#pragma once
// CFxManager creates effects and reports compiler errors; CFx is one loaded
// effect with its own world matrix. This half needs no GL: a technique is
// valid when every pass translates. CFxManagerOGL (with the GL back end)
// overrides ValidateTechnique to compile and link on the current context and
// applies passes.

#include "fx/FxEffect.h"

#include <memory>
#include <string>

class CRender;
class CFx;
struct FxTechniqueRecord;

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

class CFx {
 public:
  ~CFx();
  bool Load(const char *path);
  bool Parse(const char *text);

  FxTechniqueRecord *GetBestTechnique();
  const CFxTechnique *GetNamedTechnique(const char *name) const;
  CFxParameter *GetNamedParameter(const char *name);
  CFxEffect *Effect() { return m_Effect.get(); }

  float m_World[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  CFxManager *m_Manager;

 private:
  friend class CFxManager;
  explicit CFx(CFxManager *manager) : m_Manager(manager) {}
  bool Create(const std::string &text, const std::string &fileName, const std::string &folder);

  std::unique_ptr<CFxEffect> m_Effect;
};
