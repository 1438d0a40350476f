#include "GLTestSupport.h"
#include "renderogl/GLDriverPin.h"

namespace {
GLuint Compile(GLenum type, const char *text) {
  GLuint shader = glCreateShader(type);
  glShaderSource(shader, 1, &text, nullptr);
  glCompileShader(shader);
  GLint ok = 0;
  glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
  EXPECT_TRUE(ok) << "shader did not compile";
  return shader;
}
}  // namespace

GLuint ColorProgram() {
  GLuint program = glCreateProgram();
  glAttachShader(program, Compile(GL_VERTEX_SHADER,
                                  "#version 120\n"
                                  "attribute vec4 position; attribute vec4 color; varying vec4 c;\n"
                                  "void main() { gl_Position = gl_ModelViewProjectionMatrix * position; c = color; }\n"));
  glAttachShader(program, Compile(GL_FRAGMENT_SHADER,
                                  "#version 120\nvarying vec4 c;\nvoid main() { gl_FragColor = c; }\n"));
  glBindAttribLocation(program, 0, "position");
  glBindAttribLocation(program, 3, "color");
  glLinkProgram(program);
  GLint ok = 0;
  glGetProgramiv(program, GL_LINK_STATUS, &ok);
  EXPECT_TRUE(ok) << "program did not link";
  return program;
}
