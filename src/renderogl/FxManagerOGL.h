#pragma once
// The effect manager on the GL context: a technique is valid when every pass
// compiles and links; a pass binds its program, applies its states, sends
// the values that changed and binds its samplers' textures with their
// sampler states. Values live in the effect and go to GL when a pass is
// applied and at each CommitChanges, only for what changed since.

#include "fx/FxManager.h"
#include "renderogl/FxProgramOGL.h"

class CFxManagerOGL : public CFxManager {
 public:
  ~CFxManagerOGL() override;
  bool Init(CRender *render) override;
  void Free() override;

  bool ValidateTechnique(CFx &fx, const CFxTechnique &technique) override;
  bool SetPassState(CFx &fx, const CFxPass &pass) override;
  void ResetPassState(CFx &fx, const CFxPass &pass) override;
  void CommitChanges(CFx &fx) override;
  uint32_t TextureName(CTexture *texture) override;

  // Programs linked and still held by an effect.
  size_t ProgramCount();

 private:
  struct PassOGL;
  class DeviceOGL;
  // The pass's linked program, linked now if need be; null (with the error
  // raised) when it does not translate, compile or link.
  PassOGL *Prepare(CFx &fx, const CFxPass &pass);
  void Send(PassOGL &pass, bool all);
  // Whether GL is there to compile on.
  bool OnDevice() const;

  CFxProgramCache m_Programs;
  uint64_t m_PassCount = 0;  // names each prepared pass, for program ownership
};
