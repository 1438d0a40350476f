#include "nodes/texture/TextureFilter.h"

#include "fx/FxManager.h"
#include "render/DeviceCheck.h"
#include "render/Render.h"
#include "render/RenderTarget.h"
#include "render/RenderTypes.h"
#include "render/Resources.h"
#include "render/VertexFormat.h"
#include "scene/PortPointers.h"

// A filter draws one quad: no depth buffer.
CRenderTarget *CFilterTargets::Begin(CRender &render, int width, int height) {
  CRenderTarget *target = render.CreateRenderTarget(width, height, 0);
  if (!target || !target->m_Color) return nullptr;
  target->Begin(render);
  return target;
}

void CFilterTargets::End(CRender &render, CRenderTarget &target) { target.End(render); }

void CFilterTargets::Release(CRender &render, CTexture *texture) {
  if (texture && (texture->m_Flags & TEXF_Pooled)) render.ReleaseTexture(texture);
}

CTexture *CFilterTargets::Color(const CRenderTarget &target) const { return target.m_Color; }

CTextureFilterNode::CTextureFilterNode() {
  m_Flags = 0;
  m_Mode = 2;
}

void CTextureFilterNode::Offer() {
  if (m_TextureOut) m_TextureOut->SetTexture(this);
}

bool CTextureFilterNode::MakeQuad(CRender *render, float corner) {
  struct {
    CVertexBuffer *&m_VertexBuffer;
  } slot{m_Quad[render->m_DeviceSlot]}, *dObjs = &slot;
  const int vertexCount = 6;
  ReleaseIfSmaller(dObjs->m_VertexBuffer, vertexCount);
  if (!dObjs->m_VertexBuffer &&
      DEVICE_FAILED(!(dObjs->m_VertexBuffer = render->CreateVertexBuffer(vertexCount, 0, VBF_PNTBTC))))
    return false;
  const float c = corner;
  const float xy[6][2] = {{-c, -c}, {-c, c}, {c, c}, {c, c}, {c, -c}, {-c, -c}};
  auto *v = static_cast<VertexPNTBTC *>(dObjs->m_VertexBuffer->Lock());
  for (int i = 0; i < 6; ++i) {
    const float u = xy[i][0] > 0 ? 1.0f : 0.0f, up = xy[i][1] > 0 ? 1.0f : 0.0f;
    v[i] = VertexPNTBTC{xy[i][0], xy[i][1], 0, 0, 0, -1, 1, 0, 0, 0, 1, 0, u, up, 0xFFFFFFFFu, 0};
  }
  dObjs->m_VertexBuffer->Unlock();
  return true;
}

CTextureFilterNode::~CTextureFilterNode() { ReleaseEffect(); }

void CTextureFilterNode::ReleaseEffect() {
  ForgetHandles();
  delete m_Technique;
  m_Technique = nullptr;
  delete m_Fx;
  m_Fx = nullptr;
}

void CTextureFilterNode::InvalidateDevice(CRender *render) {
  ReleaseEffect();
  CVertexBuffer *&vb = m_Quad[render->m_DeviceSlot];
  if (vb) vb->Release();
  vb = nullptr;
}

CTexture *CTextureFilterNode::Source(CRender *render) const {
  if (!m_TextureIn || !m_TextureIn->IsConnected() || !m_TextureIn->m_Value) return nullptr;
  return m_TextureIn->m_Value->GetTexture(render);
}

CCamera CTextureFilterNode::FilterCamera() {
  CCamera camera;
  camera.m_Fov = 60;
  camera.m_Near = 0;
  camera.m_Far = 1000;
  camera.m_ProjectionType = PROJ_Orthographic;
  LookAt(camera, {0, 0, 1}, {0, 0, 0}, {0, 1, 0});
  return camera;
}
