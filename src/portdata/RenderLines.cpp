#include "portdata/RenderLines.h"

#include <algorithm>

#include "render/Color.h"
#include "render/DeviceCheck.h"

void CRenderLines::SetSize(int count) {
  m_Items.resize(std::max(count, 0));
  m_Count = 0;
}

void CRenderLines::AddLine(float x0, float y0, float z0, float x1, float y1, float z1, const float color[4]) {
  if (m_Count >= static_cast<int>(m_Items.size())) return;
  const uint32_t packed = PackColor(color);
  m_Items[m_Count++] = Line{{x0, y0, z0, packed}, {x1, y1, z1, packed}};
}

bool CRenderLines::RestoreDevice(CRender *render) {
  InvalidateDevice(render);
  m_RenderBufferLines = std::clamp(m_RenderBufferLines, 1, BATCH_MAX_VERTICES / 2);
  DeviceObjects *const dObjs = &Slot(render);
  for (int i = 0; i < RING_SIZE; ++i)
    if (DEVICE_FAILED(!(dObjs->m_VertexBuffer[i] = render->CreateVertexBuffer(2*m_RenderBufferLines, VBF_DYNAMIC, VBF_PCT))))
      return false;
  return true;
}

void CRenderLines::Draw(CRender *render) {
  if (!HasRing(render, false)) return;
  const int total = DrawCount(m_Count);
  const int chunk = RingBuffer(render)->m_Size / 2;
  for (int done = 0; done < total;) {
    const int n = std::min(total - done, chunk);
    CVertexBuffer *vb = RingBuffer(render);
    auto *out = static_cast<VertexPCT *>(vb->Lock());
    for (int i = 0; i < n; ++i) {
      const Line &line = m_Items[done + i];
      *out++ = VertexPCT{line.from.x, line.from.y, line.from.z, 0.0f, 0.5f, line.from.color};
      *out++ = VertexPCT{line.to.x, line.to.y, line.to.z, 1.0f, 0.5f, line.to.color};
    }
    vb->Unlock();
    render->SetVertexBuffer(vb);
    render->DrawPrimitive(PT_LineList, 0, n);
    AdvanceRing();
    done += n;
  }
}
