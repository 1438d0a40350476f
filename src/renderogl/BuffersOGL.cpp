#include "renderogl/BuffersOGL.h"

#include <algorithm>

#include "core/Log.h"
#include "render/VertexFormat.h"

CBufferObjectOGL::CBufferObjectOGL(GLenum target, GLsizeiptr bytes, bool dynamic)
    : m_Target(target), m_Bytes(std::max<GLsizeiptr>(bytes, 0)), m_Usage(dynamic ? GL_DYNAMIC_DRAW : GL_STATIC_DRAW) {
  glGenBuffers(1, &m_Name);
  glBindBuffer(m_Target, m_Name);
  glBufferData(m_Target, m_Bytes, nullptr, m_Usage);
  glBindBuffer(m_Target, 0);
}

CBufferObjectOGL::~CBufferObjectOGL() {
  if (m_Mapped) Unmap();
  if (m_Name) glDeleteBuffers(1, &m_Name);
}

void *CBufferObjectOGL::Map() {
  if (m_Mapped) return m_Mapped;
  glBindBuffer(m_Target, m_Name);
  glBufferData(m_Target, m_Bytes, nullptr, m_Usage);
  m_Mapped = m_Bytes ? glMapBuffer(m_Target, GL_WRITE_ONLY) : nullptr;
  glBindBuffer(m_Target, 0);
  return m_Mapped;
}

void CBufferObjectOGL::Unmap() {
  if (!m_Mapped) return;
  m_Mapped = nullptr;
  glBindBuffer(m_Target, m_Name);
  if (!glUnmapBuffer(m_Target)) LogError("glUnmapBuffer returned false");
  glBindBuffer(m_Target, 0);
}

CVertexBufferOGL::CVertexBufferOGL(int size, int flags, int format)
    : m_Buffer(GL_ARRAY_BUFFER, static_cast<GLsizeiptr>(size) * VertexStride(format), flags & VBF_DYNAMIC) {
  m_Size = size;
  m_Flags = flags;
  m_Format = format;
  m_Stride = VertexStride(format);
}

void CVertexBufferOGL::Release() { delete this; }

CIndexBufferOGL::CIndexBufferOGL(int size, int flags)
    : m_Buffer(GL_ELEMENT_ARRAY_BUFFER, static_cast<GLsizeiptr>(size) * sizeof(Index16), flags & IBF_DYNAMIC) {
  m_Size = size;
  m_Flags = flags;
}

void CIndexBufferOGL::Release() { delete this; }
