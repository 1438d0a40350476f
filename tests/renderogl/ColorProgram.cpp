#include "GLTestSupport.h"
#include "renderogl/GLDriverPin.h"

GLuint ColorProgram() {
  GLuint program = glCreateProgram();
  const std::pair<GLenum, const char *> stages[] = {
      {GL_VERTEX_SHADER,
       "#version 120\nattribute vec4 position; attribute vec4 color; varying vec4 c;\n"
       "void main() { gl_Position = gl_ModelViewProjectionMatrix * position; c = color; }\n"},
      {GL_FRAGMENT_SHADER, "#version 120\nvarying vec4 c;\nvoid main() { gl_FragColor = c; }\n"}};
  for (auto [type, text] : stages) {
    GLuint shader = glCreateShader(type);
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    glAttachShader(program, shader);
  }
  glBindAttribLocation(program, 0, "position");
  glBindAttribLocation(program, 3, "color");
  glLinkProgram(program);
  GLint ok = 0;
  glGetProgramiv(program, GL_LINK_STATUS, &ok);
  EXPECT_TRUE(ok) << "program did not link";
  return program;
}
