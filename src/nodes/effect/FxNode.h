#pragma once
// CNEFx: the node types made from effect files. Each .cgfx file in the
// effect folder becomes one type: its tweakable parameters become in-ports,
// and the node hands the compiled effect to whatever is drawn under it.

#include <string>

#include "nodes/effect/EffectStates.h"
#include "portdata/PDEffect.h"
#include "portdata/PDTexture.h"
#include "scene/Node.h"
#include "scene/NodeInfo.h"

class CFx;
class CFxManager;
class CFxEffect;
class CFxParameter;
class CNodeFactory;
class CPortBool;
class CPortEffect;
class CPortInt;
class CTexture;
struct FxTechniqueRecord;

// The type record of an effect file: the file travels with the type, since
// every instance compiles its own copy on the device.
class CNEFxInfo : public CNodeInfo {
 public:
  CNEFxInfo(const std::string &typeName, const std::string &path);
  std::string m_Path;
};

class CNEFx : public CNode, public CPDEffect {
 public:
  // One type per readable effect file of `folder`, in name order, after
  // whatever the factory holds. Needs no GL context.
  static void AddNodesToFactory(CNodeFactory &factory, const char *folder = "nodes/effect");
  // The type record of one loaded effect: common ports, then one port per
  // parameter that a user sets. Null when the effect gives no type name.
  static CNEFxInfo *CreateInfo(const CFxEffect &effect, const std::string &typeName, const std::string &path);

  ~CNEFx() override;
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override;
  void InvalidateDevice(CRender *render) override;

  PassHandle Begin() override;
  void BeginPass(PassHandle pass) override;
  PassHandle NextPass(PassHandle pass) override;
  void EndPass(PassHandle pass) override;
  void End() override {}
  void SetLight(int, const float *) override {}
  void SetColor(const float *color) override;
  void SetMatrix(int index, const CMatrix &matrix) override;
  void Commit() override;

  CFx *GetFx() const { return m_Fx; }
  const float *DiffuseColor() const { return m_DiffuseColor; }

 private:
  CTexture *SamplerTexture(const CFxParameter &sampler);
  void ReleaseDevice();

  CPortBool *m_DepthTest = nullptr;
  CPortBool *m_DepthWrite = nullptr;
  CPortBool *m_AALine = nullptr;
  CPortBool *m_AlphaBlend = nullptr;
  CPortInt *m_SrcBlend = nullptr;
  CPortInt *m_DstBlend = nullptr;
  CPortInt *m_CullMode = nullptr;
  CPortEffect *m_EffectOut = nullptr;

  float m_DiffuseColor[4] = {1, 1, 1, 1};
  float m_ItemColor[4] = {1, 1, 1, 1};
  CFx *m_Fx = nullptr;
  FxTechniqueRecord *m_Technique = nullptr;
  CEffectStates m_States;
  float m_Time = 0, m_ElapsedTime = 0;

  struct DeviceObjects {
    CTexture *m_NullTexture = nullptr;    // 2D
    CTexture *m_NullTexture1D = nullptr;
  };
  DeviceObjects m_DeviceObjects[MAX_RENDER_UNITS];
};
