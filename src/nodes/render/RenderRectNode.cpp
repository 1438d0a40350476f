#include "nodes/render/RenderRectNode.h"

#include <algorithm>

#include "render/Camera.h"
#include "render/Render.h"
#include "render/DeviceCheck.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"
#include "portdata/PDEffect.h"

CNodeInfo *CRenderRectNode::CreateInfo() {
  auto *info = new CNodeInfo(1, "RenderRect", [] { return static_cast<CNode *>(new CRenderRectNode); },
                             "Renders a rectangle that covers the whole screen");
  info->AddInPort(new CPortRender("Render", "Render"));
  info->AddInPort(new CPortInt("TesselateW", "Width tessellation", 1, 1, 100000));
  info->AddInPort(new CPortInt("TesselateH", "Height tessellation", 1, 1, 100000));
  info->AddInPort(new CPortEffect(
      "Effect", "Effect to apply. If used SrcBlend, DstBlend, Color and Texture is ignored on this node"));
  info->AddOutPort(new CPortRender("Render", "Render"));
  return info;
}

CRenderRectNode::~CRenderRectNode() { InvalidateDevice(nullptr); }

bool CRenderRectNode::Init() {
  CStageNode::Init();
  m_TesselateW = InPort<CPortInt>("TesselateW");
  m_TesselateH = InPort<CPortInt>("TesselateH");
  m_Effect = InPort<CPortEffect>("Effect");
  return true;
}

void CRenderRectNode::Update(float time, FrameInfo *frame) {
  CStageNode::Update(time, frame);
  if (m_TesselateW->m_Changed || m_TesselateH->m_Changed) m_DirtyUnits = ALL_UNITS;
}

bool CRenderRectNode::RestoreDevice(CRender *render) {
  DeviceObjects *dObjs = &m_dObjs[render->m_DeviceSlot];
  const int W = std::clamp(m_TesselateW->m_Value, 1, MaxTessellation);
  const int H = std::clamp(m_TesselateH->m_Value, 1, MaxTessellation);
  const int vertexCount = (W + 1) * (H + 1);
  const int indexCount = W * H * 6;
  dObjs->m_Triangles = W * H * 2;

  ReleaseIfSmaller(dObjs->m_VertexBuffer, vertexCount);
  if (!dObjs->m_VertexBuffer &&
      DEVICE_FAILED(!(dObjs->m_VertexBuffer = render->CreateVertexBuffer(vertexCount, 0, VBF_PNTBTC))))
    return false;
  ReleaseIfSmaller(dObjs->m_IndexBuffer, indexCount);
  if (!dObjs->m_IndexBuffer && DEVICE_FAILED(!(dObjs->m_IndexBuffer = render->CreateIndexBuffer(indexCount, 0))))
    return false;

  auto *v = static_cast<VertexPNTBTC *>(dObjs->m_VertexBuffer->Lock());
  float y = 0.5f;
  for (int j = 0; j <= H; ++j, y -= 1.0f / static_cast<float>(H)) {
    float x = -0.5f;
    for (int i = 0; i <= W; ++i, x += 1.0f / static_cast<float>(W), ++v) {
      *v = VertexPNTBTC{x, y, 0.0f, 0.0f, 0.0f, -1.0f, 1.0f, 0.0f, 0.0f, 0.0f, 1.0f, 0.0f,
                        static_cast<float>(i) / static_cast<float>(W), 1.0f - static_cast<float>(j) / static_cast<float>(H),
                        0xFFFFFFFFu, 0u};
    }
  }
  dObjs->m_VertexBuffer->Unlock();

  uint16_t *index = dObjs->m_IndexBuffer->Lock();
  for (int j = 0; j < H; ++j)
    for (int i = 0; i < W; ++i) {
      const auto a = static_cast<uint16_t>(j * (W + 1) + i);
      const auto b = static_cast<uint16_t>(a + W + 1);
      const uint16_t cell[6] = {a, static_cast<uint16_t>(b + 1), b, static_cast<uint16_t>(b + 1), a,
                                static_cast<uint16_t>(a + 1)};
      for (uint16_t k : cell) *index++ = k;
    }
  dObjs->m_IndexBuffer->Unlock();
  return true;
}

void CRenderRectNode::InvalidateDevice(CRender *) {
  for (DeviceObjects &d : m_dObjs) {
    if (d.m_VertexBuffer) d.m_VertexBuffer->Release();
    if (d.m_IndexBuffer) d.m_IndexBuffer->Release();
    d = DeviceObjects();
  }
}

void CRenderRectNode::Render(CRender *render) {
  RenderUpstream(render);
  CCamera camera;
  camera.m_Fov = 60.0f;
  camera.m_Near = 0.0f;
  camera.m_Far = 100.0f;
  camera.m_ProjectionType = PROJ_Orthographic;
  LookAt(camera, {0, 0, 1}, {0, 0, 0}, {0, 1, 0});
  CPDEffect *effect = m_Effect->m_Value;
  DeviceObjects *dObjs = &m_dObjs[render->m_DeviceSlot];
  if (!effect || !dObjs->m_VertexBuffer || !dObjs->m_IndexBuffer) return;

  static const float white[4] = {1, 1, 1, 1};
  const CMatrix identity = CMatrix::Identity();
  effect->m_Render = render;
  for (PassHandle pass = effect->Begin(); pass; pass = effect->NextPass(pass)) {
    effect->BeginPass(pass);
    render->SetCamera(camera);
    effect->SetColor(white);
    effect->SetMatrix(0, identity);
    render->SetTransform(TS_World, identity);
    effect->Commit();
    render->SetVertexBuffer(dObjs->m_VertexBuffer);
    render->SetIndexBuffer(dObjs->m_IndexBuffer);
    render->DrawIndexedPrimitive(PT_TriangleList, 0, dObjs->m_Triangles);
    effect->EndPass(pass);
  }
  effect->End();
}
