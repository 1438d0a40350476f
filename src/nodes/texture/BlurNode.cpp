#include "nodes/texture/BlurNode.h"

#include <algorithm>
#include <vector>

#include "fx/FxManager.h"
#include "nodes/effect/FxRuntime.h"
#include "render/Render.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
const char *const kPassNames[CNTBlur::PassCount] = {"horizontalPass9", "verticalPass9", "horizontalPass21",
                                                    "verticalPass21"};
}  // namespace

CNodeInfo *CNTBlur::CreateInfo() {
  auto *info = new CNodeInfo(4, "Blur", [] { return static_cast<CNode *>(new CNTBlur); }, "Blurs a texture");
  info->AddInPort(new CPortInt("Dir", "Blur direction", 2, 0, 3))->AddValue(0, "X")->AddValue(1, "Y")->AddValue(2, "Both");
  auto *width = new CPortInt("Width", "Size of the blur", 4, 1, 100);
  const char *const widths[] = {"4 pixels",  "8 pixels",  "12 pixels", "36 pixels",
                                "20 pixels", "24 pixels", "28 pixels", "32 pixels"};
  for (int i = 0; i < 8; ++i) width->AddValue(4 * (i + 1), widths[i]);
  info->AddInPort(width);
  info->AddInPort(new CPortFloat("Brightness", "How much to amplify the image", 1, 0.1f, 0, 1000));
  info->AddInPort(new CPortTexture("Texture", "Texture"));
  info->AddOutPort(new CPortTexture("Texture", "Texture"));
  return info;
}

bool CNTBlur::Init() {
  m_Dir = InPort<CPortInt>("Dir");
  m_Width = InPort<CPortInt>("Width");
  m_Brightness = InPort<CPortFloat>("Brightness");
  m_TextureIn = InPort<CPortTexture>("Texture");
  m_TextureOut = OutPort<CPortTexture>("Texture");
  return true;
}

void CNTBlur::Update(float, FrameInfo *frame) {
  Offer();
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  if (m_TextureIn->m_Changed) m_DirtyUnits = ALL_UNITS;
}

bool CNTBlur::RestoreDevice(CRender *render) {
  ReleaseEffect();
  if (!render->m_FxManager) return false;
  m_Fx = render->m_FxManager->LoadEffect("nodedata/blur.cgfx");
  if (!m_Fx) return true;  // no technique: GetTexture gives null
  m_Technique = m_Fx->GetBestTechnique();
  m_SrcSampler = m_Fx->GetNamedParameter("srcSampler");
  m_SourceTextureSize = m_Fx->GetNamedParameter("gSourceTextureSize");
  m_BrightnessParam = m_Fx->GetNamedParameter("gBrightness");
  if (m_Technique)
    for (const CFxPass &pass : m_Technique->technique->passes)
      for (int p = 0; p < PassCount; ++p)
        if (pass.name == kPassNames[p]) m_Passes[p] = &pass;
  return MakeQuad(render, 1.0f);
}

void CNTBlur::ForgetHandles() {
  m_SrcSampler = m_SourceTextureSize = m_BrightnessParam = nullptr;
  for (const CFxPass *&p : m_Passes) p = nullptr;
}

CTexture *CNTBlur::GetTexture(CRender *render) {
  CVertexBuffer *quad = m_Quad[render->m_DeviceSlot];
  if (!quad || !m_Technique) return nullptr;
  CTexture *src = Source(render);
  if (!src) return nullptr;
  float brightness = 1.0f;
  int count = m_Width->m_Value;

  // The effect draws in clip space; the camera only sets what the matrices
  // of others start from. The caller sets its own before it draws.
  const CCamera camera = FilterCamera();
  render->SetCamera(camera);
  render->SetTransform(TS_World, CMatrix::Identity());
  render->SetTransform(TS_Projection, CMatrix::Identity());
  render->SetTransform(TS_View, camera.m_View);
  if (count < 1) return src;

  std::vector<Pass> cycle;
  if (m_Dir->m_Value == 0 || m_Dir->m_Value == 2) cycle.push_back(Horizontal9);
  if (m_Dir->m_Value == 1 || m_Dir->m_Value == 2) cycle.push_back(Vertical9);
  while (count > 0) {
    count -= 4;
    for (size_t i = 0; i < cycle.size(); ++i) {
      const float texel[2] = {1.0f / src->m_Width, 1.0f / std::max(src->m_Height, 1)};
      if (m_SourceTextureSize) m_SourceTextureSize->SetValuefr(texel, 2);
      if (count <= 0 && i + 1 == cycle.size()) brightness = m_Brightness->m_Value;
      if (m_BrightnessParam) m_BrightnessParam->SetValuefr(&brightness, 1);
      CRenderTarget *target = m_Targets.Begin(*render, src->m_Width, std::max(src->m_Height, 1));
      if (!target) return src;
      FxPassRecord pass{m_Technique, m_Passes[cycle[i]]};
      if (m_SrcSampler) FxSetupSampler(*m_Fx, *m_SrcSampler, src);
      if (pass.pass) {
        FxSetPassState(*m_Fx, &pass);
        render->SetVertexBuffer(quad);
        render->DrawPrimitive(PT_TriangleList, 0, 2);
        FxResetPassState(*m_Fx, &pass);
      }
      m_Targets.End(*render, *target);
      // Intermediate results go back to the pool at once.
      m_Targets.Release(*render, src);
      src = m_Targets.Color(*target);
    }
  }
  return src;
}
