#include "portdata/BatchRender.h"

#include <algorithm>

#include "render/DeviceCheck.h"

const int QUAD_STRIP_PATTERN[6] = {0, 1, 2, 3, 3, 4};

void CBatchRender::InvalidateDevice(CRender *render) {
  DeviceObjects &d = Slot(render);
  for (CVertexBuffer *&vb : d.m_VertexBuffer) {
    if (vb) vb->Release();
    vb = nullptr;
  }
  if (d.m_IndexBuffer) d.m_IndexBuffer->Release();
  d.m_IndexBuffer = nullptr;
}

int CBatchRender::DrawCount(int available) const {
  return m_DrawCount < 1 ? available : std::min(m_DrawCount, available);
}

void CBatchRender::FillQuadIndices(CIndexBuffer *buffer, int quads, const int pattern[6]) {
  uint16_t *out = buffer->Lock();
  const int last = std::max(4 * quads - 1, 0);
  for (int q = 0; q < quads; ++q)
    for (int k = 0; k < 6; ++k) *out++ = static_cast<uint16_t>(std::min(4 * q + pattern[k], last));
  buffer->Unlock();
}

void CBatchRender::DrawQuadChunk(CRender *render, int quads) {
  render->SetIndexBuffer(Slot(render).m_IndexBuffer);
  render->SetVertexBuffer(RingBuffer(render));
  render->DrawIndexedPrimitive(PT_TriangleStrip, 4 * quads, 6 * quads - 2);
  AdvanceRing();
}

void CBatchRender::DrawTriangleChunk(CRender *render, int triangles) {
  render->SetIndexBuffer(Slot(render).m_IndexBuffer);
  render->SetVertexBuffer(RingBuffer(render));
  render->DrawIndexedPrimitive(PT_TriangleList, 3 * triangles, triangles);
  AdvanceRing();
}

bool CBatchRender::CreateTriangleRing(CRender *render, int triangles, int format) {
  DeviceObjects *const dObjs = &Slot(render);
  const int size = 3 * triangles;
  for (int i = 0; i < RING_SIZE; ++i)
    if (DEVICE_FAILED(!(dObjs->m_VertexBuffer[i] = render->CreateVertexBuffer(size, VBF_DYNAMIC, format)))) return false;
  if (DEVICE_FAILED(!(dObjs->m_IndexBuffer = render->CreateIndexBuffer(size, 0)))) return false;
  uint16_t *index = dObjs->m_IndexBuffer->Lock();
  for (int i = 0; i < size; ++i) index[i] = static_cast<uint16_t>(i);
  dObjs->m_IndexBuffer->Unlock();
  return true;
}

bool CBatchRender::HasRing(CRender *render, bool indexed) {
  const DeviceObjects &d = Slot(render);
  for (CVertexBuffer *vb : d.m_VertexBuffer)
    if (!vb) return false;
  return !indexed || d.m_IndexBuffer;
}

bool CBatchRender::CreateQuadRing(CRender *render, const int pattern[6]) {
  m_RenderBufferQuads = std::clamp(m_RenderBufferQuads, 1, BATCH_MAX_QUADS);
  DeviceObjects *const dObjs = &Slot(render);
  for (int i = 0; i < RING_SIZE; ++i)
    if (DEVICE_FAILED(!(dObjs->m_VertexBuffer[i] = render->CreateVertexBuffer(4*m_RenderBufferQuads, VBF_DYNAMIC, VBF_PCT))))
      return false;
  if (DEVICE_FAILED(!(dObjs->m_IndexBuffer = render->CreateIndexBuffer(6*m_RenderBufferQuads, 0)))) return false;
  FillQuadIndices(dObjs->m_IndexBuffer, m_RenderBufferQuads, pattern);
  return true;
}
