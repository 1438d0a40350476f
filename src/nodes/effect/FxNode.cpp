#include "nodes/effect/FxNode.h"

#include "fx/FxManager.h"
#include "nodes/effect/FxRuntime.h"
#include "render/Matrix.h"
#include "render/Render.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"
#include "render/DeviceCheck.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
bool IsType(const CFxParameter &p, EFxBase base, int cols) {
  return p.type.base == base && !p.type.matrix && p.type.arraySize == 0 && p.type.cols == cols;
}

// The port a parameter is set through: the in-port named by its UIName.
CPort *UIPort(const CNode &node, const CFxParameter &p) {
  const CFxAnnotationValue *ui = p.FindAnnotation("UIName");
  if (!ui || ui->type.base != EFxBase::String) return nullptr;
  return node.FindInPort(ui->text.c_str());
}
}  // namespace

CNEFx::~CNEFx() { ReleaseDevice(); }

bool CNEFx::Init() {
  m_DepthTest = InPort<CPortBool>("DepthTest");
  m_DepthWrite = InPort<CPortBool>("DepthWrite");
  m_AALine = InPort<CPortBool>("AALine");
  m_AlphaBlend = InPort<CPortBool>("AlphaBlend");
  m_SrcBlend = InPort<CPortInt>("SrcBlend");
  m_DstBlend = InPort<CPortInt>("DstBlend");
  m_CullMode = InPort<CPortInt>("CullMode");
  m_EffectOut = OutPort<CPortEffect>("Effect");
  return true;
}

void CNEFx::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  m_States.Read({{m_DepthTest, RSF_DepthTest},
                 {m_DepthWrite, RSF_DepthWrite},
                 {m_AALine, RSF_AALine},
                 {m_AlphaBlend, RSF_AlphaTest}});
  if (m_EffectOut) m_EffectOut->m_Value = this;
  m_Time = frame->Time;
  m_ElapsedTime = frame->DeltaTime;
}

bool CNEFx::RestoreDevice(CRender *render) {
  ReleaseDevice();
  DeviceObjects *dObjs = &m_DeviceObjects[render->m_DeviceSlot];
  // White stand-ins for open texture ports, one per sampler dimension: a
  // texture bound to a sampler of another dimension samples black. A height
  // below 2 makes a 1D texture.
  const uint32_t white[4] = {0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu, 0xFFFFFFFFu};
  int width = 2, height = 2;
  if (!dObjs->m_NullTexture) {
    if (DEVICE_FAILED(!(dObjs->m_NullTexture = render->CreateTexture(width, height, 0, TF_A8R8G8B8, TT_Normal))))
      return false;
    dObjs->m_NullTexture->Fill(white);
  }
  height = 1;
  if (!dObjs->m_NullTexture1D) {
    if (DEVICE_FAILED(!(dObjs->m_NullTexture1D = render->CreateTexture(width, height, 0, TF_A8R8G8B8, TT_Normal))))
      return false;
    dObjs->m_NullTexture1D->Fill(white);
  }
  const auto *info = dynamic_cast<const CNEFxInfo *>(m_Info);
  if (!info || !render->m_FxManager) return false;
  m_Fx = render->m_FxManager->LoadEffect(info->m_Path.c_str());
  if (!m_Fx) return false;
  m_Technique = m_Fx->GetBestTechnique();
  return m_Technique != nullptr;
}

void CNEFx::InvalidateDevice(CRender *render) {
  DeviceObjects &d = m_DeviceObjects[render->m_DeviceSlot];
  for (CTexture **t : {&d.m_NullTexture, &d.m_NullTexture1D}) {
    if (!*t) continue;
    (*t)->Release();
    delete *t;
    *t = nullptr;
  }
  ReleaseDevice();
}

void CNEFx::ReleaseDevice() {
  delete m_Technique;
  m_Technique = nullptr;
  delete m_Fx;
  m_Fx = nullptr;
}

CTexture *CNEFx::SamplerTexture(const CFxParameter &sampler) {
  CFxParameter *texture = sampler.textureName.empty() ? nullptr : m_Fx->GetNamedParameter(sampler.textureName.c_str());
  auto *port = texture ? dynamic_cast<CPortTexture *>(UIPort(*this, *texture)) : nullptr;
  if (port && port->IsConnected() && port->m_Value) return port->m_Value->GetTexture(m_Render);
  // An open port samples white, so a texture-times-color effect shows its color.
  const DeviceObjects &d = m_DeviceObjects[m_Render->m_DeviceSlot];
  if (sampler.type.base == EFxBase::Sampler2D) return d.m_NullTexture;
  if (sampler.type.base == EFxBase::Sampler1D) return d.m_NullTexture1D;
  return nullptr;
}

PassHandle CNEFx::Begin() {
  if (!m_Fx || !m_Technique || !m_Render) return nullptr;
  for (CFxParameter &p : m_Fx->Effect()->Parameters()) {
    if (IsType(p, EFxBase::Float, 1)) {
      if (p.semantic == "ELAPSEDTIME") p.SetValuefr(&m_ElapsedTime, 1);
      else if (p.semantic == "TIME") p.SetValuefr(&m_Time, 1);
    } else if (p.type.IsSampler() && p.type.base != EFxBase::SamplerRect) {
      FxSetupSampler(*m_Fx, p, SamplerTexture(p));
    }
  }
  m_States.Apply(*m_Render, m_SrcBlend, m_DstBlend, m_CullMode);
  return FxFirstPass(m_Technique);
}

void CNEFx::BeginPass(PassHandle pass) {
  if (!m_Fx) return;
  FxSetPassState(*m_Fx, pass);
  for (CFxParameter &p : m_Fx->Effect()->Parameters()) {
    CPort *port = UIPort(*this, p);
    if (!port) continue;
    if (auto *f = dynamic_cast<CPortFloat *>(port); f && IsType(p, EFxBase::Float, 1)) {
      p.SetValuefr(&f->m_Value, 1);
    } else if (auto *v = dynamic_cast<CPortVector *>(port); v && IsType(p, EFxBase::Float, 3)) {
      p.SetValuefr(&v->m_Value.x, 3);
    } else if (auto *c = dynamic_cast<CPortColor *>(port); c && IsType(p, EFxBase::Float, 4)) {
      p.SetValuefr(&c->m_Value.r, 4);
      if (p.semantic == "DIFFUSE") std::copy_n(&c->m_Value.r, 4, m_DiffuseColor);
    } else if (auto *i = dynamic_cast<CPortInt *>(port); i && IsType(p, EFxBase::Int, 1)) {
      float value = static_cast<float>(i->m_Value);
      p.SetValuefr(&value, 1);
    } else if (auto *b = dynamic_cast<CPortBool *>(port); b && IsType(p, EFxBase::Bool, 1)) {
      float value = b->m_Value ? 1.0f : 0.0f;
      p.SetValuefr(&value, 1);
    }
  }
}

PassHandle CNEFx::NextPass(PassHandle pass) { return FxNextPass(pass); }

void CNEFx::EndPass(PassHandle pass) {
  if (m_Fx) FxResetPassState(*m_Fx, pass);
}

void CNEFx::SetColor(const float *color) { std::copy_n(color, 4, m_ItemColor); }

void CNEFx::SetMatrix(int, const CMatrix &matrix) {
  if (m_Fx) std::copy_n(matrix.m, 16, m_Fx->m_World);
}

void CNEFx::Commit() {
  if (!m_Fx || !m_Render) return;
  for (CFxParameter &p : m_Fx->Effect()->Parameters()) {
    if (!IsType(p, EFxBase::Float, 4) || p.semantic != "DIFFUSE") continue;
    float color[4];
    for (int i = 0; i < 4; ++i) color[i] = m_DiffuseColor[i] * m_ItemColor[i];
    p.SetValuefr(color, 4);
  }
  FxSetMatrixParameters(*m_Fx, *m_Render);
  FxCommitChanges(*m_Fx);
}
