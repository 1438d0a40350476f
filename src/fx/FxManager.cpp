#include "fx/FxManager.h"

#include "core/Clock.h"
#include "core/Log.h"
#include "fx/FxMatrixSemantics.h"
#include "fx/FxText.h"
#include "render/Render.h"


namespace {
int g_ErrorCount = 0;
int64_t g_ErrorStamp = 0;
}  // namespace

const char *FxErrorString(long error) {
  switch (error) {
    case FX_NO_ERROR: return "No error has occurred.";
    case FX_COMPILER_ERROR: return "The compile returned an error.";
    case FX_FILE_READ_ERROR: return "The file could not be read.";
    case FX_INVALID_EFFECT: return "Invalid effect handle.";
    default: return "Unknown error.";
  }
}

void FxErrorHandler(const char *text, long number, const char *listing) {
  if (g_ErrorCount > 10) {
    int64_t now = GetClock().UnixSeconds();
    if (g_ErrorStamp == 0) {
      g_ErrorStamp = now;
      return;
    }
    if (now - g_ErrorStamp < 30) return;
    g_ErrorCount = 0;
    g_ErrorStamp = 0;
  }
  ++g_ErrorCount;
  LogError("CGError: %s (%ld)", text, number);
  if (listing && *listing) LogError("LastListing:\n%s\n-------", listing);
}

void ResetFxErrorHandler() {
  g_ErrorCount = 0;
  g_ErrorStamp = 0;
}

CFxManager::~CFxManager() = default;

bool CFxManager::Init(CRender *render) {
  m_Context = true;
  m_Render = render;
  return true;
}

void CFxManager::Free() { m_Context = false; }

void CFxManager::RaiseError(long error, const std::string &listing) {
  m_LastError = error;
  FxErrorHandler(FxErrorString(error), error, m_Context ? listing.c_str() : nullptr);
}

long CFxManager::GetError() {
  long e = m_LastError;
  m_LastError = FX_NO_ERROR;
  return e;
}

CFx *CFxManager::LoadEffect(const char *path) {
  std::unique_ptr<CFx> fx(new CFx(this));
  if (fx->Load(path)) return fx.release();
  if (long e = GetError()) LogError("CG Error: %s", FxErrorString(e));
  return nullptr;
}

CFx *CFxManager::ParseEffect(const char *text) {
  std::unique_ptr<CFx> fx(new CFx(this));
  if (fx->Parse(text)) return fx.release();
  if (long e = GetError()) LogError("CG Error: %s", FxErrorString(e));
  return nullptr;
}

bool CFxManager::ValidateTechnique(CFx &fx, const CFxTechnique &technique) {
  if (!fx.Effect()) return false;
  CFxDiagnostics diag;
  if (fx.Effect()->TranslateTechnique(technique, diag)) return true;
  RaiseError(FX_COMPILER_ERROR, diag.Listing());
  return false;
}

bool CFxManager::SetPassState(CFx &, const CFxPass &) { return true; }

void CFxManager::ResetPassState(CFx &, const CFxPass &) {}

void CFxManager::CommitChanges(CFx &) {}

uint32_t CFxManager::TextureName(CTexture *) { return 0; }

CFx::~CFx() = default;

bool CFx::Create(const std::string &text, const std::string &fileName, const std::string &folder) {
  m_Device.reset();
  m_CurrentPass = nullptr;
  m_Effect.reset();
  CFxDiagnostics diag;
  m_Effect = CFxEffect::Create(text, fileName, diag, FxFolderIncludes(folder));
  if (!m_Effect) m_Manager->RaiseError(FX_COMPILER_ERROR, diag.Listing());
  return m_Effect != nullptr;
}

bool CFx::Load(const char *path) {
  std::string text, p = path, why;
  if (!ReadFxFile(p, text, &why)) {
    m_Device.reset();
    m_Effect.reset();
    m_Manager->RaiseError(FX_FILE_READ_ERROR, p + ": " + why);
    return false;
  }
  return Create(text, p, FxFolderOf(p));
}

bool CFx::Parse(const char *text) { return Create(text, "<text>", ""); }

FxTechniqueRecord *CFx::GetBestTechnique() {
  if (!m_Effect) return nullptr;
  for (const CFxTechnique &t : m_Effect->Techniques()) {
    if (!m_Manager->ValidateTechnique(*this, t)) continue;
    auto *record = new FxTechniqueRecord;
    record->fx = this;
    record->technique = &t;
    record->pass.technique = record;
    return record;
  }
  return nullptr;
}

const CFxTechnique *CFx::GetNamedTechnique(const char *name) const {
  return m_Effect ? m_Effect->FindTechnique(name) : nullptr;
}

CFxParameter *CFx::GetNamedParameter(const char *name) { return m_Effect ? m_Effect->FindParameter(name) : nullptr; }

FxPassRecord *CFx::Begin(FxTechniqueRecord *technique) {
  if (!technique || technique->fx != this || technique->technique->passes.empty()) return nullptr;
  technique->pass.pass = &technique->technique->passes.front();
  return &technique->pass;
}

FxPassRecord *CFx::NextPass(FxPassRecord *pass) {
  if (!pass || !pass->pass || !pass->technique) return nullptr;
  const std::vector<CFxPass> &passes = pass->technique->technique->passes;
  size_t next = static_cast<size_t>(pass->pass - passes.data()) + 1;
  if (next >= passes.size()) return nullptr;
  pass->pass = &passes[next];
  return pass;
}

bool CFx::BeginPass(FxPassRecord *pass) {
  if (!m_Effect || !pass || !pass->pass) return false;
  if (m_CurrentPass) m_Manager->ResetPassState(*this, *m_CurrentPass);
  m_CurrentPass = pass->pass;
  return m_Manager->SetPassState(*this, *pass->pass);
}

void CFx::EndPass(FxPassRecord *pass) {
  if (!pass || !pass->pass || m_CurrentPass != pass->pass) return;
  m_Manager->ResetPassState(*this, *pass->pass);
  m_CurrentPass = nullptr;
}

void CFx::End() {
  if (m_CurrentPass) m_Manager->ResetPassState(*this, *m_CurrentPass);
  m_CurrentPass = nullptr;
}

void CFx::CommitChanges() {
  if (m_Effect && m_CurrentPass) m_Manager->CommitChanges(*this);
}

bool CFx::SetMatrixParameter(CFxParameter &parameter) {
  static const CMatrix kIdentity;
  CRender *render = m_Manager->m_Render;
  const float *view = render ? render->GetCamera()->m_View.m : kIdentity.m;
  const float *proj = render ? render->m_Projection.m : kIdentity.m;
  return ::SetMatrixParameter(parameter, m_World, view, proj);
}

void CFx::SetupSampler(CFxParameter &sampler, CTexture *texture) {
  sampler.SetTexture(texture ? m_Manager->TextureName(texture) : 0);
}
