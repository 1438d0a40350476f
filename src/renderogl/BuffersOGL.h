#pragma once
// Vertex and index buffers as GL buffer objects. Each lock orphans the old
// store, so the driver never waits for draws that still read it.

#include <GL/glew.h>

#include "render/Resources.h"

// The storage both buffer kinds share.
class CBufferObjectOGL {
 public:
  CBufferObjectOGL(GLenum target, GLsizeiptr bytes, bool dynamic);
  ~CBufferObjectOGL();
  CBufferObjectOGL(const CBufferObjectOGL &) = delete;
  CBufferObjectOGL &operator=(const CBufferObjectOGL &) = delete;

  void *Map();
  void Unmap();
  bool Valid() const { return m_Name != 0; }

  GLenum m_Target;
  GLuint m_Name = 0;
  GLsizeiptr m_Bytes;
  GLenum m_Usage;
  void *m_Mapped = nullptr;
};

class CVertexBufferOGL : public CVertexBuffer {
 public:
  CVertexBufferOGL(int size, int flags, int format);
  void *Lock() override { return m_Buffer.Map(); }
  void Unlock() override { m_Buffer.Unmap(); }
  void Release() override;

  CBufferObjectOGL m_Buffer;
};

class CIndexBufferOGL : public CIndexBuffer {
 public:
  CIndexBufferOGL(int size, int flags);
  uint16_t *Lock() override { return static_cast<uint16_t *>(m_Buffer.Map()); }
  void Unlock() override { m_Buffer.Unmap(); }
  void Release() override;

  CBufferObjectOGL m_Buffer;
};
