#pragma once
// A recording renderer whose buffer creation can be made to fail, for the
// failure paths of device object creation.

#include "render/RecordRender.h"

class CFailingRender : public CRecordRender {
 public:
  // Creations that still succeed before every further one fails; -1 never fails.
  int m_VertexBuffersLeft = -1;
  int m_IndexBuffersLeft = -1;

  CVertexBuffer *CreateVertexBuffer(int size, int flags, int format) override {
    if (m_VertexBuffersLeft == 0) return nullptr;
    if (m_VertexBuffersLeft > 0) --m_VertexBuffersLeft;
    return CRecordRender::CreateVertexBuffer(size, flags, format);
  }
  CIndexBuffer *CreateIndexBuffer(int size, int flags) override {
    if (m_IndexBuffersLeft == 0) return nullptr;
    if (m_IndexBuffersLeft > 0) --m_IndexBuffersLeft;
    return CRecordRender::CreateIndexBuffer(size, flags);
  }
};
