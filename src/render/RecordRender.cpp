#include "render/RecordRender.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {
constexpr uint8_t AbandonedByte = 0xCD;

std::string Format(const char *format, va_list args) {
  char text[512];
  vsnprintf(text, sizeof(text), format, args);
  return text;
}

// Id of a resource this recorder made, 0 for null (or another renderer's).
template <class Recorded, class Resource>
int IdOf(Resource *resource) {
  auto *recorded = dynamic_cast<Recorded *>(resource);
  return recorded ? recorded->m_Id : 0;
}
}  // namespace

// --- resources ---

CRecordResource::CRecordResource(CRecordRender *owner, const char *kind, int id)
    : m_Owner(owner), m_Kind(kind), m_Id(id) {
  m_Owner->m_Live.push_back(this);
}

CRecordResource::~CRecordResource() {
  if (!m_Owner) return;
  auto &live = m_Owner->m_Live;
  live.erase(std::remove(live.begin(), live.end(), this), live.end());
}

void CRecordResource::Note(const char *operation) const {
  if (m_Owner) m_Owner->Record("%s %s%d", operation, m_Kind, m_Id);
}

void *CRecordStorage::LockBytes() {
  Note("Lock");
  std::fill(m_Bytes.begin(), m_Bytes.end(), AbandonedByte);
  m_Locked = true;
  return m_Bytes.data();
}

void CRecordStorage::UnlockBytes() {
  Note("Unlock");
  m_Locked = false;
}

CRecordVertexBuffer::CRecordVertexBuffer(CRecordRender *owner, int id, int size, int flags, int format)
    : CRecordStorage(owner, "vb", id) {
  m_Size = std::max(size, 0);
  m_Flags = flags;
  m_Format = format;
  m_Stride = VertexStride(format);
  m_Bytes.assign(static_cast<size_t>(m_Size) * static_cast<size_t>(m_Stride), AbandonedByte);
}

void CRecordVertexBuffer::Release() {
  Note("Release");
  delete this;
}

CRecordIndexBuffer::CRecordIndexBuffer(CRecordRender *owner, int id, int size, int flags)
    : CRecordStorage(owner, "ib", id) {
  m_Size = std::max(size, 0);
  m_Flags = flags;
  m_Bytes.assign(static_cast<size_t>(m_Size) * sizeof(uint16_t), AbandonedByte);
}

void CRecordIndexBuffer::Release() {
  Note("Release");
  delete this;
}

CRecordTexture::CRecordTexture(CRecordRender *owner, int id, int width, int height, int depth, int format, int type)
    : CRecordResource(owner, "tex", id), m_Type(type) {
  m_DeviceSlot = owner->m_DeviceSlot;
  m_Width = std::max(width, 0);
  m_Height = std::max(height, 0);
  m_Depth = std::max(depth, 0);
  m_Format = format;
  if (type == TT_RenderTarget) m_Flags |= TEXF_RenderTarget;
  else if (type == TT_Normal && Dimension() < 3) m_Flags |= TEXF_HasMipmaps;
  if (type != TT_RenderTarget) m_Pixels.assign(static_cast<size_t>(TexelCount()), 0);
}

uint32_t *CRecordTexture::Lock() {
  Note("Lock");
  if (m_Released && m_Owner) m_Owner->Fault("Lock of released tex%d", m_Id);
  return m_Pixels.empty() ? nullptr : m_Pixels.data();
}

void CRecordTexture::Unlock() {
  Note("Unlock");
  ++m_Uploads;
}

void CRecordTexture::Release() {
  Note("Release");
  m_Pixels.clear();
  m_Pixels.shrink_to_fit();
  m_Released = true;
}

void CRecordTexture::GenerateMipmaps() {
  Note("GenerateMipmaps");
  m_Flags |= TEXF_HasMipmaps;
}

CRecordTarget::CRecordTarget(CRecordRender *owner, int id, int width, int height) : m_Owner(owner) {
  m_Width = width;
  m_Height = height;
  m_Framebuffer = static_cast<unsigned>(id);
  m_Color = new CRecordTexture(owner, id, width, height, 0, TF_A8R8G8B8, TT_RenderTarget);
  m_Color->m_Flags |= TEXF_Pooled;
  m_Color->m_RenderTarget = this;
}

CRecordTarget::~CRecordTarget() { delete m_Color; }

void CRecordTarget::Begin(CRender &render) {
  m_Owner->Record("BeginTarget %dx%d", m_Width, m_Height);
  CRenderTarget::Begin(render);
}

void CRecordTarget::End(CRender &render) {
  m_Owner->Record("EndTarget %dx%d", m_Width, m_Height);
  CRenderTarget::End(render);
}

bool CRenderClientFunctions::Render() {
  if (onRender) onRender();
  return true;
}

bool CRenderClientFunctions::FrameFinished() {
  if (onFrameFinished) onFrameFinished();
  return true;
}

bool CRenderClientFunctions::InvalidateDeviceObjects() {
  if (onInvalidate) onInvalidate();
  return true;
}

// --- the recorder ---

CRecordRender::CRecordRender(int width, int height) {
  SetUnits({CRect{0, 0, width, height}});
  SetClient(&m_Callbacks);
}

CRecordRender::~CRecordRender() {
  m_Targets.clear();
  // Resources the caller never released must not call back into us.
  for (CRecordResource *r : m_Live) r->m_Owner = nullptr;
}

void CRecordRender::SetUnits(const std::vector<CRect> &units) {
  m_Units = units;
  m_RenderUnit = 0;
  m_UnitRect = units.empty() ? CRect{} : units[0];
  m_VirtualRect = units.empty() ? CRect{} : units[0];
  for (const CRect &u : units)
    m_VirtualRect = {std::min(m_VirtualRect.left, u.left), std::min(m_VirtualRect.top, u.top),
                     std::max(m_VirtualRect.right, u.right), std::max(m_VirtualRect.bottom, u.bottom)};
}

void CRecordRender::Record(const char *format, ...) {
  if (!m_Recording) return;
  va_list args;
  va_start(args, format);
  m_Calls.push_back(Format(format, args));
  va_end(args);
}

void CRecordRender::Fault(const char *format, ...) {
  if (!m_Recording) return;
  va_list args;
  va_start(args, format);
  m_Faults.push_back(Format(format, args));
  va_end(args);
}

std::vector<std::string> CRecordRender::Calls(std::string_view prefix) const {
  std::vector<std::string> out;
  for (const std::string &line : m_Calls)
    if (std::string_view(line).starts_with(prefix)) out.push_back(line);
  return out;
}

int CRecordRender::LiveCount(std::string_view kind) const {
  return static_cast<int>(std::count_if(m_Live.begin(), m_Live.end(), [&](const CRecordResource *r) { return kind == r->m_Kind; }));
}

void CRecordRender::ClearCalls() {
  m_Calls.clear();
  m_Draws.clear();
  m_Faults.clear();
}

void CRecordRender::SetViewport(float x, float y, float width, float height) {
  Record("SetViewport %g %g %g %g", x, y, width, height);
  CRender::SetViewport(x, y, width, height);
}

void CRecordRender::SetCamera(const CCamera &camera) {
  Record("SetCamera");
  CRender::SetCamera(camera);
}

CVertexBuffer *CRecordRender::CreateVertexBuffer(int size, int flags, int format) {
  auto *vb = new CRecordVertexBuffer(this, m_NextId[0]++, size, flags, format);
  Record("CreateVertexBuffer %d %d %d vb%d", size, flags, format, vb->m_Id);
  if (!vb->m_Stride) Fault("CreateVertexBuffer with unknown format %d", format);
  return vb;
}

bool CRecordRender::SetVertexBuffer(CVertexBuffer *buffer) {
  Record("SetVertexBuffer vb%d", IdOf<CRecordVertexBuffer>(buffer));
  return CRender::SetVertexBuffer(buffer);
}

CIndexBuffer *CRecordRender::CreateIndexBuffer(int size, int flags) {
  auto *ib = new CRecordIndexBuffer(this, m_NextId[1]++, size, flags);
  Record("CreateIndexBuffer %d %d ib%d", size, flags, ib->m_Id);
  return ib;
}

bool CRecordRender::SetIndexBuffer(CIndexBuffer *buffer) {
  Record("SetIndexBuffer ib%d", IdOf<CRecordIndexBuffer>(buffer));
  return CRender::SetIndexBuffer(buffer);
}

CTexture *CRecordRender::CreateTexture(int width, int height, int depth, int format, int type) {
  auto *tex = new CRecordTexture(this, m_NextId[2]++, width, height, depth, format, type);
  Record("CreateTexture %d %d %d %d %d tex%d", width, height, depth, format, type, tex->m_Id);
  return tex;
}

void CRecordRender::CopyToTexture(CTexture *texture, float x, float y, float width, float height) {
  Record("CopyToTexture tex%d %g %g %g %g", IdOf<CRecordTexture>(texture), x, y, width, height);
  if (texture) texture->m_Flags |= TEXF_Copied;
}

CRenderTarget *CRecordRender::CreateRenderTarget(int width, int height, int) {
  Record("CreateTarget %dx%d", width, height);
  if (m_FailTargets) return nullptr;
  for (auto &t : m_Targets)
    if (!t->m_InUse && t->m_Width == width && t->m_Height == height) {
      t->m_InUse = true;
      t->m_Color->m_Flags |= TEXF_Pooled;
      return t.get();
    }
  m_Targets.push_back(std::make_unique<CRecordTarget>(this, m_NextId[2]++, width, height));
  return m_Targets.back().get();
}

void CRecordRender::ReleaseTexture(CTexture *texture) {
  // Only target colors are logged: for any other texture a release is no call.
  auto *target = texture ? dynamic_cast<CRecordTarget *>(texture->m_RenderTarget) : nullptr;
  if (!target) return;
  bool pooled = texture->m_Flags & TEXF_Pooled;
  Record("ReleaseTarget %s", pooled ? "pooled" : "held");
  if (pooled) target->m_InUse = false;
}

bool CRecordRender::Clear(const float color[4], float depth, int flags) {
  Record("Clear %g %g %g %g %g %d", color[0], color[1], color[2], color[3], depth, flags);
  return true;
}

void CRecordRender::SetTransform(int type, const CMatrix &matrix) {
  Record("SetTransform %d", type);
  CRender::SetTransform(type, matrix);
}

bool CRecordRender::CheckVertexRange(const char *call, int first, int count) {
  auto *vb = dynamic_cast<CRecordVertexBuffer *>(m_CurrentVB);
  if (!vb) {
    Fault("%s without a vertex buffer", call);
    return false;
  }
  if (vb->m_Locked) Fault("%s from locked vb%d", call, vb->m_Id);
  if (first < 0 || count < 0 || first + count > vb->m_Size) {
    Fault("%s reads vertices %d..%d of vb%d, which has %d", call, first, first + count - 1, vb->m_Id, vb->m_Size);
    return false;
  }
  return true;
}

void CRecordRender::RecordDraw(bool indexed, int type, int first, int primitives) {
  if (!m_Recording) return;
  CRecordedDraw d;
  d.indexed = indexed;
  d.type = type;
  d.first = first;
  d.primitives = primitives;
  d.vertices = PrimitiveVertexCount(type, primitives);
  d.vertexBuffer = IdOf<CRecordVertexBuffer>(m_CurrentVB);
  d.indexBuffer = indexed ? IdOf<CRecordIndexBuffer>(m_CurrentIB) : 0;
  d.world = m_World;
  d.states = m_States;
  m_Draws.push_back(d);
}

bool CRecordRender::DrawPrimitive(int primitiveType, int startVertex, int primitiveCount) {
  Record("DrawPrimitive %d %d %d", primitiveType, startVertex, primitiveCount);
  RecordDraw(false, primitiveType, startVertex, primitiveCount);
  CheckVertexRange("DrawPrimitive", startVertex, PrimitiveVertexCount(primitiveType, primitiveCount));
  return true;
}

bool CRecordRender::DrawIndexedPrimitive(int primitiveType, int vertexCount, int primitiveCount) {
  Record("DrawIndexedPrimitive %d %d %d", primitiveType, vertexCount, primitiveCount);
  RecordDraw(true, primitiveType, 0, primitiveCount);
  auto *ib = dynamic_cast<CRecordIndexBuffer *>(m_CurrentIB);
  int indices = PrimitiveVertexCount(primitiveType, primitiveCount);
  if (!ib) {
    Fault("DrawIndexedPrimitive without an index buffer");
    return true;
  }
  if (ib->m_Locked) Fault("DrawIndexedPrimitive from locked ib%d", ib->m_Id);
  if (indices > ib->m_Size) {
    Fault("DrawIndexedPrimitive reads %d indices of ib%d, which has %d", indices, ib->m_Id, ib->m_Size);
    return true;
  }
  uint16_t highest = 0;
  for (int i = 0; i < indices; ++i) highest = std::max(highest, ib->Indices()[i]);
  if (indices > 0) CheckVertexRange("DrawIndexedPrimitive", 0, highest + 1);
  return true;
}

int CRecordRender::CreateWin(WindowHandle parent, WindowHandle *outWindow) {
  Record("CreateWin %lu", static_cast<unsigned long>(parent));
  return CRender::CreateWin(parent, outWindow);
}

bool CRecordRender::Init() {
  Record("Init");
  return true;
}

bool CRecordRender::Render3DEnvironment(bool blackOnly) {
  Record("Render3DEnvironment %d", blackOnly ? 1 : 0);
  int units = static_cast<int>(m_Units.size());
  DrawUnits(units, blackOnly);
  for (int unit = 0; unit < units; ++unit) Record("Present %d", unit);
  if (!m_StateStack.empty())
    Fault("%d render states still pushed at the end of the frame", static_cast<int>(m_StateStack.size()));
  ++m_Frames;
  if (m_Client) m_Client->FrameFinished();
  return true;
}

void CRecordRender::Cleanup3DEnvironment() {
  Record("Cleanup3DEnvironment");
  if (SwitchToRenderUnit(0) && m_Client) m_Client->InvalidateDeviceObjects();
}

bool CRecordRender::CreateScreen(int mode, WindowHandle parent, bool visible) {
  Record("CreateScreen %d %lu %d", mode, static_cast<unsigned long>(parent), visible ? 1 : 0);
  return true;
}

void CRecordRender::DestroyScreen() { Record("DestroyScreen"); }

bool CRecordRender::Initialize3DEnvironment(int mode) {
  Record("Initialize3DEnvironment %d", mode);
  return true;
}

void CRecordRender::SetRenderState(int state, int value) { Record("SetRenderState %d %d", state, value); }

bool CRecordRender::SwitchToRenderUnit(int index) {
  Record("SwitchToRenderUnit %d", index);
  if (index < 0 || index >= static_cast<int>(m_Units.size())) return false;
  CRender::SwitchToRenderUnit(index);
  m_UnitRect = m_Units[static_cast<size_t>(index)];
  return true;
}

void CRecordRender::ReadPixels(void *buffer) {
  Record("ReadPixels");
  int rowBytes = (m_UnitRect.Width() * 3 + 3) & ~3;
  std::memset(buffer, m_ReadPixelsValue, static_cast<size_t>(std::max(rowBytes * m_UnitRect.Height(), 0)));
}

bool CRecordRender::IsRenderWindow(WindowHandle window) {
  return window && std::find(m_Windows.begin(), m_Windows.end(), window) != m_Windows.end();
}

intptr_t CRecordRender::MsgProc(WindowHandle window, uint32_t message, uintptr_t wparam, intptr_t lparam) {
  Record("MsgProc %lu 0x%04x %lu %ld", static_cast<unsigned long>(window), message, static_cast<unsigned long>(wparam),
         static_cast<long>(lparam));
  return 0;
}

WindowHandle CRecordRender::GetWindowHandle(int index) const {
  if (index < 0 || index >= static_cast<int>(m_Windows.size())) return 0;
  return m_Windows[static_cast<size_t>(index)];
}
