#include "FxGLSupport.h"

#include "renderogl/GLDriverPin.h"

const char *const kQuadVS =
    "void QuadVS(float4 p : POSITION, float2 uv : TEXCOORD0, out float4 hpos : POSITION, out float2 t : TEXCOORD0) {\n"
    "  hpos = p;\n"
    "  t = uv;\n"
    "}\n";

std::string QuadEffect(const std::string &declarationsAndPS) {
  return std::string(kQuadVS) + declarationsAndPS +
         "\ntechnique T { pass P { VertexProgram = compile glslv QuadVS(); FragmentProgram = compile glslf PS(); } }\n";
}

void FxGLTest::SetUp() {
  VELMOR_REQUIRE_DISPLAY();
  m_Window = std::make_unique<GLWindow>(64, 64);
  ASSERT_TRUE(m_Window->Ok()) << "no GL window on " << getenv("DISPLAY");
  m_Render = &m_Window->render;
  m_Manager = dynamic_cast<CFxManagerOGL *>(m_Render->m_FxManager);
  ASSERT_NE(m_Manager, nullptr) << "the GL renderer made no CFxManagerOGL";
  // The quad must reach every pixel whatever the renderer's start state.
  for (GLenum cap : {GL_CULL_FACE, GL_DEPTH_TEST, GL_BLEND, GL_ALPHA_TEST}) glDisable(cap);
  glGenTextures(1, &m_Color);
  glBindTexture(GL_TEXTURE_2D, m_Color);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F_ARB, kSize, kSize, 0, GL_RGBA, GL_FLOAT, nullptr);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glBindTexture(GL_TEXTURE_2D, 0);
  glGenFramebuffersEXT(1, &m_Framebuffer);
  glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, m_Framebuffer);
  glFramebufferTexture2DEXT(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT, GL_TEXTURE_2D, m_Color, 0);
  // Depth and stencil bits, so that those states mean something here (GL
  // clamps the stencil reference to the bits there are).
  glGenRenderbuffersEXT(1, &m_DepthStencil);
  glBindRenderbufferEXT(GL_RENDERBUFFER_EXT, m_DepthStencil);
  glRenderbufferStorageEXT(GL_RENDERBUFFER_EXT, GL_DEPTH24_STENCIL8_EXT, kSize, kSize);
  glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT, GL_RENDERBUFFER_EXT, m_DepthStencil);
  glFramebufferRenderbufferEXT(GL_FRAMEBUFFER_EXT, GL_STENCIL_ATTACHMENT_EXT, GL_RENDERBUFFER_EXT, m_DepthStencil);
  ASSERT_EQ(glCheckFramebufferStatusEXT(GL_FRAMEBUFFER_EXT), static_cast<GLenum>(GL_FRAMEBUFFER_COMPLETE_EXT));
  glViewport(0, 0, kSize, kSize);
  // Float targets keep values outside 0..1.
  glClampColorARB(GL_CLAMP_FRAGMENT_COLOR_ARB, GL_FALSE);
  glClampColorARB(GL_CLAMP_VERTEX_COLOR_ARB, GL_FALSE);
}

void FxGLTest::TearDown() {
  m_Techniques.clear();
  m_Effects.clear();
  if (m_Framebuffer) {
    glBindFramebufferEXT(GL_FRAMEBUFFER_EXT, 0);
    glDeleteFramebuffersEXT(1, &m_Framebuffer);
    glDeleteTextures(1, &m_Color);
    glDeleteRenderbuffersEXT(1, &m_DepthStencil);
  }
  m_Window.reset();
}

CFx *FxGLTest::Parse(const std::string &text) {
  CFx *fx = m_Manager->ParseEffect(text.c_str());
  EXPECT_NE(fx, nullptr) << text;
  if (fx) m_Effects.emplace_back(fx);
  return fx;
}

FxTechniqueRecord *FxGLTest::Technique(CFx *fx) {
  FxTechniqueRecord *t = fx ? fx->GetBestTechnique() : nullptr;
  EXPECT_NE(t, nullptr) << "no technique links";
  if (t) m_Techniques.emplace_back(t);
  return t;
}

void FxGLTest::DrawQuad() {
  static const float kPositions[] = {-1, -1, 0, 1, 1, -1, 0, 1, -1, 1, 0, 1, 1, 1, 0, 1};
  static const float kUv[] = {0, 0, 1, 0, 0, 1, 1, 1};
  glBindBuffer(GL_ARRAY_BUFFER, 0);
  glVertexAttribPointer(0, 4, GL_FLOAT, GL_FALSE, 0, kPositions);
  glVertexAttribPointer(8, 2, GL_FLOAT, GL_FALSE, 0, kUv);
  for (GLuint a : {0u, 8u}) glEnableVertexAttribArray(a);
  glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
  for (GLuint a : {0u, 8u}) glDisableVertexAttribArray(a);
}

void FxGLTest::ClearTarget(const Float4 &color) {
  glClearColor(color[0], color[1], color[2], color[3]);
  glClear(GL_COLOR_BUFFER_BIT);
}

Float4 FxGLTest::Read(int x, int y) {
  Float4 pixel{};
  glReadPixels(x, y, 1, 1, GL_RGBA, GL_FLOAT, pixel.data());
  return pixel;
}

void FxGLTest::Set(CFx &fx, const char *name, const std::vector<float> &values) {
  CFxParameter *p = fx.GetNamedParameter(name);
  ASSERT_NE(p, nullptr) << name;
  p->SetValuefr(values.data(), values.size());
}
