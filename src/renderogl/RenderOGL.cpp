#include "renderogl/RenderOGL.h"

#include <GL/glew.h>

#include "core/Log.h"
#include "renderogl/BuffersOGL.h"
#include "renderogl/TextureOGL.h"

namespace {
constexpr GLenum kBlendFactors[BLEND_Count] = {
    GL_ZERO,      GL_ONE,       GL_SRC_COLOR,           GL_DST_COLOR,           GL_ONE_MINUS_SRC_COLOR, GL_ONE_MINUS_DST_COLOR,
    GL_SRC_ALPHA, GL_DST_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE_MINUS_DST_ALPHA, GL_SRC_ALPHA_SATURATE,
};

void Enable(GLenum cap, bool on) {
  if (on) glEnable(cap);
  else glDisable(cap);
}

GLint CurrentBlend(GLenum which) {
  GLint value = 0;
  glGetIntegerv(which, &value);
  return value;
}

// Blending is off exactly when it would change nothing.
void SetBlend(GLenum src, GLenum dst) {
  Enable(GL_BLEND, !(src == GL_ONE && dst == GL_ZERO));
  glBlendFunc(src, dst);
}
}  // namespace

unsigned GLBlendFactor(int blend) { return blend >= 0 && blend < BLEND_Count ? kBlendFactors[blend] : 0; }

unsigned GLPrimitive(int primitiveType) {
  switch (primitiveType) {
    case PT_PointList: return GL_POINTS;
    case PT_LineList: return GL_LINES;
    case PT_LineStrip: return GL_LINE_STRIP;
    case PT_TriangleList: return GL_TRIANGLES;
    case PT_TriangleStrip: return GL_TRIANGLE_STRIP;
    default: return 0;
  }
}

void CRenderOGL::ResetDeviceState() {
  CRenderOGLBase::ResetDeviceState();
  // A new context starts from GL's defaults; the record says otherwise.
  ApplyStates(m_States);
}

void CRenderOGL::SetViewport(float x, float y, float width, float height) {
  CRender::SetViewport(x, y, width, height);
  // Viewports are given from the top; a window's rows count from the bottom,
  // a render target's are stored top first.
  int glY = m_Flipped ? m_Viewport.y : m_UnitRect.Height() - m_Viewport.y - m_Viewport.height;
  glViewport(m_Viewport.x, glY, m_Viewport.width, m_Viewport.height);
}

CVertexBuffer *CRenderOGL::CreateVertexBuffer(int size, int flags, int format) {
  if (size <= 0 || !GetVertexLayout(format)) {
    LogError("CreateVertexBuffer: %ld vertices of format %ld", static_cast<long>(size), static_cast<long>(format));
    return nullptr;
  }
  auto *vb = new CVertexBufferOGL(size, flags, format);
  if (vb->m_Buffer.Valid() && glGetError() != GL_OUT_OF_MEMORY) return vb;
  delete vb;
  return nullptr;
}

CIndexBuffer *CRenderOGL::CreateIndexBuffer(int size, int flags) {
  if (size <= 0) return nullptr;
  auto *ib = new CIndexBufferOGL(size, flags);
  if (ib->m_Buffer.Valid() && glGetError() != GL_OUT_OF_MEMORY) return ib;
  delete ib;
  return nullptr;
}

CTexture *CRenderOGL::CreateTexture(int width, int height, int depth, int format, int type) {
  if (width <= 0 || height < 0 || depth < 0) {
    LogError("CreateTexture: bad size %ldx%ldx%ld", static_cast<long>(width), static_cast<long>(height),
             static_cast<long>(depth));
    return nullptr;
  }
  auto *texture = new CTextureOGL(width, height, depth, format, type);
  texture->m_DeviceSlot = m_DeviceSlot;
  return texture;
}

void CRenderOGL::CopyToTexture(CTexture *texture, float x, float y, float width, float height) {
  auto *t = dynamic_cast<CTextureOGL *>(texture);
  if (!t || !t->m_Name) return;
  CPixelRect src = CopySourceRect(*t, x, y, width, height);
  glBindTexture(GL_TEXTURE_2D, t->m_Name);
  if (!t->m_HasStorage) {
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, t->m_Width, t->m_Height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    t->m_HasStorage = true;
  }
  glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, src.x, src.y, src.width, src.height);
  glBindTexture(GL_TEXTURE_2D, 0);
  t->m_Flags |= TEXF_Copied;
}

bool CRenderOGL::Clear(const float color[4], float depth, int flags) {
  GLbitfield bits = GL_STENCIL_BUFFER_BIT;
  if (flags & CLEAR_Color) {
    glClearColor(color[0], color[1], color[2], color[3]);
    bits |= GL_COLOR_BUFFER_BIT;
  }
  if (flags & CLEAR_Depth) {
    glClearDepth(depth);
    bits |= GL_DEPTH_BUFFER_BIT;
  }
  glClearStencil(0);
  glClear(bits);
  return true;
}

void CRenderOGL::SetTransform(int type, const CMatrix &matrix) {
  CRender::SetTransform(type, matrix);
  // Row-major row-vector matrices read as GL's column-major column-vector
  // ones without a transpose, so effects that use GL's matrix state see
  // the same transform.
  if (type == TS_Projection) {
    glMatrixMode(GL_PROJECTION);
    glLoadMatrixf(matrix.m);
  } else {
    CMatrix modelView = m_World * m_View;
    glMatrixMode(GL_MODELVIEW);
    glLoadMatrixf(modelView.m);
  }
}

bool CRenderOGL::BindAttributes() {
  auto *vb = dynamic_cast<CVertexBufferOGL *>(m_CurrentVB);
  const VertexLayout *layout = vb ? GetVertexLayout(vb->m_Format) : nullptr;
  if (!layout) return false;
  glBindBuffer(GL_ARRAY_BUFFER, vb->m_Buffer.m_Name);
  for (int index : g_VertexAttributeIndices) glDisableVertexAttribArray(static_cast<GLuint>(index));
  for (int i = 0; i < layout->count; ++i) {
    const VertexAttribute &a = layout->attributes[i];
    const void *offset = reinterpret_cast<const void *>(static_cast<uintptr_t>(a.offset));
    if (a.type == VAT_UByteNormalized)
      glVertexAttribPointer(a.index, a.components, GL_UNSIGNED_BYTE, GL_TRUE, layout->stride, offset);
    else
      glVertexAttribPointer(a.index, a.components, GL_FLOAT, GL_FALSE, layout->stride, offset);
    glEnableVertexAttribArray(static_cast<GLuint>(a.index));
  }
  return true;
}

void CRenderOGL::UnbindAttributes() {
  for (int index : g_VertexAttributeIndices) glDisableVertexAttribArray(static_cast<GLuint>(index));
  glBindBuffer(GL_ARRAY_BUFFER, 0);
}

bool CRenderOGL::DrawPrimitive(int primitiveType, int startVertex, int primitiveCount) {
  GLenum mode = GLPrimitive(primitiveType);
  int count = PrimitiveVertexCount(primitiveType, primitiveCount);
  if (!mode || count <= 0 || startVertex < 0 || !m_CurrentVB) return false;
  if (count > m_CurrentVB->m_Size - startVertex || !BindAttributes()) return false;
  glDrawArrays(mode, startVertex, count);
  UnbindAttributes();
  return true;
}

bool CRenderOGL::DrawIndexedPrimitive(int primitiveType, int, int primitiveCount) {
  GLenum mode = GLPrimitive(primitiveType);
  int count = PrimitiveVertexCount(primitiveType, primitiveCount);
  auto *ib = dynamic_cast<CIndexBufferOGL *>(m_CurrentIB);
  if (!mode || count <= 0 || !ib || count > ib->m_Size) return false;
  if (!BindAttributes()) return false;
  glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, ib->m_Buffer.m_Name);
  glDrawElements(mode, count, GL_UNSIGNED_SHORT, nullptr);
  glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
  UnbindAttributes();
  return true;
}

void CRenderOGL::SetRenderState(int state, int value) {
  switch (state) {
    case RS_Lighting: Enable(GL_LIGHTING, value == 1); break;
    case RS_DepthTest:
      if (value == 1) glDepthFunc(GL_LESS);
      Enable(GL_DEPTH_TEST, value == 1);
      break;
    case RS_AALine: Enable(GL_LINE_SMOOTH, value == 1); break;
    case RS_Fog: Enable(GL_FOG, value == 1); break;
    case RS_AlphaTest:
      if (value == 1) glAlphaFunc(GL_GREATER, 0.01f);
      Enable(GL_ALPHA_TEST, value == 1);
      break;
    case RS_Stencil: Enable(GL_STENCIL_TEST, value == 1); break;
    case RS_SrcBlend:
      if (value >= 0 && value < BLEND_Count)
        SetBlend(GLBlendFactor(value), static_cast<GLenum>(CurrentBlend(GL_BLEND_DST)));
      break;
    case RS_DstBlend:
      if (value >= 0 && value < BLEND_Count)
        SetBlend(static_cast<GLenum>(CurrentBlend(GL_BLEND_SRC)), GLBlendFactor(value));
      break;
    case RS_CullMode:
      Enable(GL_CULL_FACE, value == CULL_Clockwise || value == CULL_CounterClockwise);
      if (value == CULL_Clockwise) glFrontFace(GL_CW);
      else if (value == CULL_CounterClockwise) glFrontFace(GL_CCW);
      break;
    case RS_RenderTarget: glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, static_cast<GLuint>(value)); break;
    default: break;  // RS_DepthWrite and RS_Reserved5 have no effect here
  }
}
