#include "nodes/sim/MetaballsNode.h"

#include <algorithm>
#include <cmath>

#include "nodes/object/SimRandom.h"
#include "render/DeviceCheck.h"
#include "scene/DrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
constexpr int MAX_VERTICES = CMetaballField::MaxVertices, MAX_INDICES = CMetaballField::MaxIndices;

void NewBall(MetaBall &b) {
  for (float *v : {b.pos, b.vel, b.attractor})
    for (int a = 0; a < 3; ++a) v[a] = DrawSigned() * 0.5f;
  b.timer = DrawUnsigned();
  b.mass = 1.0f;
}
}  // namespace

CNodeInfo *CMetaballsNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "Metaballs", [] { return static_cast<CNode *>(new CMetaballsNode); },
                             "Draws metaballs");
  info->AddInPort(new CPortInt("NumBalls", "Number of metaballs", 10, 1, 1000));
  info->AddInPort(new CPortInt("GridSize", "Size of the grid subdivision. Higher value will be smoother but slower",
                               50, 2, 10000));
  info->AddInPort(new CPortFloat("Threshold", "At what energy threshold we will create the hull of the balls", 100.0f,
                                 1.0f, 0.0f, 100000.0f));
  info->AddInPort(new CPortFloat("Speed", "Speed of ball movement", 0.1f, 0.001f, 0.0f, 10000.0f));
  info->AddInPort(new CPortEffect("Effect", "Effect"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CMetaballsNode::Init() {
  m_NumBalls = InPort<CPortInt>("NumBalls");
  m_GridSize = InPort<CPortInt>("GridSize");
  m_Threshold = InPort<CPortFloat>("Threshold");
  m_Speed = InPort<CPortFloat>("Speed");
  m_Effect = InPort<CPortEffect>("Effect");
  m_Out = OutPort<CPortObject>("Object");
  return true;
}

void CMetaballsNode::Move(MetaBall &b, float dt, float speed) const {
  for (int a = 0; a < 3; ++a) b.pos[a] += b.vel[a] * dt;
  b.timer -= dt;
  if (b.timer < 0.0f) {
    b.timer = DrawUnsigned();
    for (float &v : b.attractor) v = DrawSigned() * 0.5f;
  }
  float d[3], len2 = 0.0f;
  for (int a = 0; a < 3; ++a) d[a] = b.attractor[a] - b.pos[a], len2 += d[a] * d[a];
  const float inv = FastInvSqrt(len2);
  float v2 = 0.0f;
  for (int a = 0; a < 3; ++a) b.vel[a] += d[a] * inv * speed * dt, v2 += b.vel[a] * b.vel[a];
  if (v2 > 0.04f) {
    const float k = 0.2f / std::sqrt(v2);
    for (float &v : b.vel) v *= k;
  }
  const float lo = m_Field.VoxelSize() - 1.0f, hi = 1.0f - m_Field.VoxelSize();
  for (int a = 0; a < 3; ++a) {
    if (!std::isfinite(b.pos[a]) || !std::isfinite(b.vel[a])) b.pos[a] = b.vel[a] = 0.0f;
    if (b.pos[a] < lo) b.pos[a] = lo, b.vel[a] = 0.0f;
    if (b.pos[a] > hi) b.pos[a] = hi, b.vel[a] = 0.0f;
  }
}

void CMetaballsNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  m_Level = std::max(m_Threshold->m_Value, 20.0f);
  if (!(m_Level < 1.0e9f)) m_Level = 20.0f;
  if (m_GridSize->m_Changed || m_Field.GridSize() == 0) m_Field.SetGrid(m_GridSize->m_Value);
  m_Count = std::clamp(m_NumBalls->m_Value, 1, 1000);
  // Balls above a lowered count rest, and come back as they were.
  while (static_cast<int>(m_Balls.size()) < m_Count) NewBall(m_Balls.emplace_back());
  const float dt = std::isfinite(frame->DeltaTime) ? frame->DeltaTime : 0.0f;
  const float speed = std::isfinite(m_Speed->m_Value) ? m_Speed->m_Value : 0.0f;
  for (int b = 0; b < m_Count; ++b) Move(m_Balls[b], dt, speed);
  m_Out->m_Value = this;
}

bool CMetaballsNode::RestoreDevice(CRender *render) {
  InvalidateDevice(render);
  DeviceObjects *const d = &dObjs[render->m_DeviceSlot];
  for (int i = 0; i < RingSize; ++i) {
    if (DEVICE_FAILED(!(d->m_VertexBuffer[i] = render->CreateVertexBuffer(MAX_VERTICES, VBF_DYNAMIC, VBF_PNTC))))
      return false;
    if (DEVICE_FAILED(!(d->m_IndexBuffer[i] = render->CreateIndexBuffer(MAX_INDICES, IBF_DYNAMIC)))) return false;
  }
  return true;
}

void CMetaballsNode::InvalidateDevice(CRender *render) {
  DeviceObjects &d = dObjs[render->m_DeviceSlot];
  for (int i = 0; i < RingSize; ++i) {
    if (d.m_VertexBuffer[i]) d.m_VertexBuffer[i]->Release();
    if (d.m_IndexBuffer[i]) d.m_IndexBuffer[i]->Release();
    d.m_VertexBuffer[i] = nullptr;
    d.m_IndexBuffer[i] = nullptr;
  }
}

void CMetaballsNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  AppendObjectItems(list, parents, camera, this, m_Effect->m_Value);
}

void CMetaballsNode::Draw(CRender *render) {
  const DeviceObjects &d = dObjs[render->m_DeviceSlot];
  for (int i = 0; i < RingSize; ++i)
    if (!d.m_VertexBuffer[i] || !d.m_IndexBuffer[i]) return;
  m_DrawingOn = render;
  m_Vertices = static_cast<VertexPNTC *>(d.m_VertexBuffer[m_Buffer]->Lock());
  m_Indices = d.m_IndexBuffer[m_Buffer]->Lock();
  m_Field.Polygonise(m_Balls.data(), m_Count, m_Level, *this);
  m_DrawingOn = nullptr;
}

void CMetaballsNode::Flush(int vertexCount, int indexCount, bool last) {
  CRender *render = m_DrawingOn;
  const DeviceObjects &d = dObjs[render->m_DeviceSlot];
  d.m_VertexBuffer[m_Buffer]->Unlock();
  d.m_IndexBuffer[m_Buffer]->Unlock();
  if (vertexCount > 0 && indexCount > 0) {
    render->SetVertexBuffer(d.m_VertexBuffer[m_Buffer]);
    render->SetIndexBuffer(d.m_IndexBuffer[m_Buffer]);
    render->DrawIndexedPrimitive(PT_TriangleList, vertexCount, indexCount / 3);
    m_Buffer = (m_Buffer + 1) % RingSize;
  }
  if (last) return;
  m_Vertices = static_cast<VertexPNTC *>(d.m_VertexBuffer[m_Buffer]->Lock());
  m_Indices = d.m_IndexBuffer[m_Buffer]->Lock();
}
