#include "render/Render.h"

#include "core/Log.h"
#include "core/Numeric.h"
#include "render/Projection.h"

namespace {
bool IsState(int state) { return state > 0 && state < RS_Count; }
}  // namespace

CRender::CRender() : m_States(DefaultRenderStates()) {}

CRender::~CRender() {
  Log("Render destroyed (%ld pushed states left)", static_cast<long>(m_StateStack.size()));
  m_StateStack.clear();
}

void CRender::SetViewport(float x, float y, float width, float height) {
  m_Viewport = ViewportPixels(x, y, width, height);
}

CPixelRect CRender::ViewportPixels(float x, float y, float width, float height) const {
  int uW = m_UnitRect.Width(), uH = m_UnitRect.Height();
  CPixelRect r{SatInt(x * uW), SatInt(y * uH), SatInt(width * uW), SatInt(height * uH)};
  if (r.x + r.width > uW) r.width = uW - r.x;
  if (r.y + r.height > uH) r.height = uH - r.y;
  return r;
}

CPixelRect CRender::CopySourceRect(const CTexture &texture, float x, float y, float width, float height) {
  float tW = static_cast<float>(texture.m_Width), tH = static_cast<float>(texture.m_Height);
  return {SatInt(x * tW), SatInt(y * tH), SatInt(width * tW), SatInt(height * tH)};
}

CCamera *CRender::GetCamera() { return &m_Camera; }

void CRender::SetCamera(const CCamera &camera) {
  m_Camera = camera;
  m_Projection = ProjectionMatrix(m_Camera, m_UnitRect, m_VirtualRect, m_AllScreensSame, m_Flipped);
  SetTransform(TS_Projection, m_Projection);
  SetTransform(TS_View, m_Camera.m_View);
}

bool CRender::SetVertexBuffer(CVertexBuffer *buffer) {
  m_CurrentVB = buffer;
  return true;
}

bool CRender::SetIndexBuffer(CIndexBuffer *buffer) {
  m_CurrentIB = buffer;
  return true;
}

void CRender::SetTransform(int type, const CMatrix &matrix) {
  if (type == TS_World) m_World = matrix;
  else if (type == TS_View) m_View = matrix;
}

const CMatrix *CRender::GetTransform(int type) { return type == TS_View ? &m_View : &m_World; }

float CRender::GetAspect() {
  const CRect &r = m_AllScreensSame ? m_UnitRect : m_VirtualRect;
  if (r.Height() == 0) return 1.0f;
  return static_cast<float>(r.Width()) / static_cast<float>(r.Height());
}

int CRender::CreateWin(WindowHandle, WindowHandle *) { return -1; }

bool CRender::Init() { return true; }

bool CRender::Render3DEnvironment(bool) {
  if (m_Client) m_Client->FrameFinished();
  return true;
}

void CRender::Cleanup3DEnvironment() {}

bool CRender::CanRun() { return true; }

bool CRender::CreateScreen(int, WindowHandle, bool) { return true; }

void CRender::DestroyScreen() {}

bool CRender::Initialize3DEnvironment(int) { return true; }

void CRender::Serialize(CSerialize &) {}

bool CRender::SwitchToRenderUnit(int index) {
  m_DeviceSlot = 0;
  m_RenderUnit = index;
  return true;
}

void CRender::ReadPixels(void *) {}

bool CRender::IsRenderWindow(WindowHandle) { return false; }

intptr_t CRender::MsgProc(WindowHandle, uint32_t, uintptr_t, intptr_t) { return 0; }

WindowHandle CRender::GetWindowHandle(int) const { return 0; }

void CRender::SetState(int state, int value) {
  if (!IsState(state)) {
    LogError("Unknown render state %d", state);
    return;
  }
  m_States[state] = value;
  SetRenderState(state, value);
}

void CRender::ApplyStates(const RenderStateRecord &record) {
  for (int state = 1; state < RS_Count; ++state) SetRenderState(state, record[state]);
}

void CRender::PushRenderState() { m_StateStack.push_back(m_States); }

void CRender::PopRenderState() {
  if (m_StateStack.empty()) {
    LogError("PopRenderState without a matching PushRenderState");
    return;
  }
  m_States = m_StateStack.back();
  m_StateStack.pop_back();
  ApplyStates(m_States);
}

void CRender::EnableStates(int flags) {
  for (int state = RS_Lighting; state <= RS_Stencil; ++state)
    if (state != RS_Reserved5 && (flags & (1 << (state - 1)))) SetState(state, 1);
}

void CRender::DisableStates(int flags) {
  for (int state = RS_Lighting; state <= RS_Stencil; ++state)
    if (state != RS_Reserved5 && (flags & (1 << (state - 1)))) SetState(state, 0);
  if (flags & RSF_AlphaTest) SetBlendModes(BLEND_One, BLEND_Zero);
}

void CRender::SetBlendModes(int src, int dst) {
  SetState(RS_SrcBlend, src);
  SetState(RS_DstBlend, dst);
}

void CRender::SetCullMode(int value) {
  if (m_Flipped && value == CULL_Clockwise) value = CULL_CounterClockwise;
  else if (m_Flipped && value == CULL_CounterClockwise) value = CULL_Clockwise;
  SetState(RS_CullMode, value);
}

void CRender::DrawUnits(int unitCount, bool blackOnly) {
  static const float black[4] = {0.0f, 0.0f, 0.0f, 0.0f};
  for (int unit = 0; unit < unitCount; ++unit) {
    if (SwitchToRenderUnit(unit) && !m_Failed && !blackOnly && m_Client) m_Client->Render();
    else Clear(black, 1.0f, CLEAR_Color | CLEAR_Depth);
  }
}
