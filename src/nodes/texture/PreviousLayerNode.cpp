#include "nodes/texture/PreviousLayerNode.h"

#include <algorithm>

#include "render/Render.h"
#include "render/RenderTypes.h"
#include "render/RenderTarget.h"
#include "render/Resources.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
// The picture is drawn over the whole viewport: clamping keeps the far edge
// from bleeding into the near one.
constexpr uint32_t kLayerFlags = 0x20;
}  // namespace

CNodeInfo *CPreviousLayerNode::CreateInfo() {
  auto *info = new CNodeInfo(4, "PreviousLayer", [] { return static_cast<CNode *>(new CPreviousLayerNode); },
                             "A texture that contains the previous rendered layer (Background and foreground layers "
                             "combined). This node only works in postprocessing scenes");
  info->AddInPort(new CPortBool("CreateMipMaps", "Create mip maps for the new texture.", false));
  info->AddOutPort(new CPortTexture("Color", "Color texture"));
  return info;
}

CPreviousLayerNode::CPreviousLayerNode() {
  m_Flags = kLayerFlags;
  m_Mode = 2;
}

bool CPreviousLayerNode::Init() {
  m_CreateMipMaps = InPort<CPortBool>("CreateMipMaps");
  m_ColorOut = OutPort<CPortTexture>("Color");
  return true;
}

bool CPreviousLayerNode::WantsMipMaps() const { return m_CreateMipMaps && m_CreateMipMaps->m_Value; }

void CPreviousLayerNode::Update(float time, FrameInfo *) {
  if (m_Updated) return;
  UpdateInPorts(time);
  m_Flags = kLayerFlags | (WantsMipMaps() ? TEXF_HasMipmaps : 0);
  m_Mode = 2;
  if (m_ColorOut) m_ColorOut->SetTexture(this);
}

bool CPreviousLayerNode::BeginLayer(CRender *render) {
  const int width = std::max(1, render->m_Viewport.width);
  const int height = std::max(1, render->m_Viewport.height);
  m_Target = render->CreateRenderTarget(width, height, DEPTH_Stencil);
  if (!m_Target || !m_Target->m_Color) {
    m_Target = nullptr;
    return false;
  }
  // Held until FreeLayer: a release by someone else must not recycle it
  // while the layers are drawn into it.
  m_Target->m_Color->m_Flags &= ~TEXF_Pooled;
  m_SavedCamera = *render->GetCamera();
  m_Target->Begin(*render);
  m_InLayer = true;
  return true;
}

void CPreviousLayerNode::EndLayer(CRender *render) {
  if (!m_InLayer) return;
  m_InLayer = false;
  m_Target->End(*render);
  render->SetCamera(m_SavedCamera);
  if (WantsMipMaps()) m_Target->m_Color->GenerateMipmaps();
}

void CPreviousLayerNode::FreeLayer(CRender *render) {
  if (!m_Target || !m_Target->m_Color || (m_Target->m_Color->m_Flags & TEXF_Pooled)) return;  // not held
  m_Target->m_Color->m_Flags |= TEXF_Pooled;
  render->ReleaseTexture(m_Target->m_Color);
}

// Read only while the postprocessing scene draws, that is after this frame's
// BeginLayer: a target the pools dropped with the device is never looked at.
CTexture *CPreviousLayerNode::GetTexture(CRender *) { return m_Target ? m_Target->m_Color : nullptr; }
