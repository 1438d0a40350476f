#include "renderogl/FxStateOGL.h"

namespace {
void Enable(GLenum cap, double on) {
  if (on != 0) glEnable(cap);
  else glDisable(cap);
}

GLenum E(double v) { return static_cast<GLenum>(v); }
GLfloat F(double v) { return static_cast<GLfloat>(v); }
GLboolean B(double v) { return v != 0 ? GL_TRUE : GL_FALSE; }
}  // namespace

void ApplyFxPassState(const FxStateValue &s) {
  const auto &v = s.values;
  switch (s.state) {
    case EFxState::DepthTestEnable: Enable(GL_DEPTH_TEST, v[0]); break;
    case EFxState::DepthMask: glDepthMask(B(v[0])); break;
    case EFxState::DepthFunc: glDepthFunc(E(v[0])); break;
    case EFxState::BlendEnable: Enable(GL_BLEND, v[0]); break;
    case EFxState::BlendFunc: glBlendFunc(E(v[0]), E(v[1])); break;
    case EFxState::BlendFuncSeparate: glBlendFuncSeparate(E(v[0]), E(v[1]), E(v[2]), E(v[3])); break;
    case EFxState::BlendEquation: glBlendEquation(E(v[0])); break;
    case EFxState::BlendColor: glBlendColor(F(v[0]), F(v[1]), F(v[2]), F(v[3])); break;
    case EFxState::CullFaceEnable: Enable(GL_CULL_FACE, v[0]); break;
    case EFxState::CullFace: glCullFace(E(v[0])); break;
    case EFxState::FrontFace: glFrontFace(E(v[0])); break;
    case EFxState::AlphaTestEnable: Enable(GL_ALPHA_TEST, v[0]); break;
    case EFxState::AlphaFunc: glAlphaFunc(E(v[0]), F(v[1])); break;
    case EFxState::ColorMask: glColorMask(B(v[0]), B(v[1]), B(v[2]), B(v[3])); break;
    case EFxState::PolygonMode: glPolygonMode(E(v[0]), E(v[1])); break;
    case EFxState::PolygonOffset: glPolygonOffset(F(v[0]), F(v[1])); break;
    case EFxState::PolygonOffsetFillEnable: Enable(GL_POLYGON_OFFSET_FILL, v[0]); break;
    case EFxState::PolygonOffsetLineEnable: Enable(GL_POLYGON_OFFSET_LINE, v[0]); break;
    case EFxState::PolygonOffsetPointEnable: Enable(GL_POLYGON_OFFSET_POINT, v[0]); break;
    case EFxState::PointSize: glPointSize(F(v[0])); break;
    case EFxState::LineWidth: glLineWidth(F(v[0])); break;
    case EFxState::StencilTestEnable: Enable(GL_STENCIL_TEST, v[0]); break;
    case EFxState::StencilFunc: glStencilFunc(E(v[0]), static_cast<GLint>(v[1]), static_cast<GLuint>(v[2])); break;
    case EFxState::StencilOp: glStencilOp(E(v[0]), E(v[1]), E(v[2])); break;
    case EFxState::StencilMask: glStencilMask(static_cast<GLuint>(v[0])); break;
    case EFxState::BlendEquationSeparate: glBlendEquationSeparate(E(v[0]), E(v[1])); break;
    case EFxState::StencilFuncSeparate:
      glStencilFuncSeparate(E(v[0]), E(v[1]), static_cast<GLint>(v[2]), static_cast<GLuint>(v[3]));
      break;
    case EFxState::StencilOpSeparate: glStencilOpSeparate(E(v[0]), E(v[1]), E(v[2]), E(v[3])); break;
    case EFxState::StencilMaskSeparate: glStencilMaskSeparate(E(v[0]), static_cast<GLuint>(v[1])); break;
    case EFxState::ScissorTestEnable: Enable(GL_SCISSOR_TEST, v[0]); break;
    case EFxState::DepthClampEnable: Enable(GL_DEPTH_CLAMP, v[0]); break;
    case EFxState::DepthRange: glDepthRange(v[0], v[1]); break;
    case EFxState::DitherEnable: Enable(GL_DITHER, v[0]); break;
    case EFxState::LineSmoothEnable: Enable(GL_LINE_SMOOTH, v[0]); break;
    case EFxState::PointSmoothEnable: Enable(GL_POINT_SMOOTH, v[0]); break;
    case EFxState::PolygonSmoothEnable: Enable(GL_POLYGON_SMOOTH, v[0]); break;
    case EFxState::MultisampleEnable: Enable(GL_MULTISAMPLE, v[0]); break;
    case EFxState::SampleAlphaToCoverageEnable: Enable(GL_SAMPLE_ALPHA_TO_COVERAGE, v[0]); break;
    case EFxState::SampleAlphaToOneEnable: Enable(GL_SAMPLE_ALPHA_TO_ONE, v[0]); break;
    case EFxState::ColorLogicOpEnable: Enable(GL_COLOR_LOGIC_OP, v[0]); break;
    case EFxState::LogicOp: glLogicOp(E(v[0])); break;
    case EFxState::ShadeModel: glShadeModel(E(v[0])); break;
    case EFxState::VertexProgramPointSizeEnable: Enable(GL_VERTEX_PROGRAM_POINT_SIZE, v[0]); break;
    case EFxState::PointSpriteEnable: Enable(GL_POINT_SPRITE, v[0]); break;
    case EFxState::LineStippleEnable: Enable(GL_LINE_STIPPLE, v[0]); break;
    case EFxState::PolygonStippleEnable: Enable(GL_POLYGON_STIPPLE, v[0]); break;
    case EFxState::LightingEnable: Enable(GL_LIGHTING, v[0]); break;
    case EFxState::FogEnable: Enable(GL_FOG, v[0]); break;
    case EFxState::ClipPlaneEnable0:
    case EFxState::ClipPlaneEnable1:
    case EFxState::ClipPlaneEnable2:
    case EFxState::ClipPlaneEnable3:
      Enable(GL_CLIP_PLANE0 + static_cast<GLenum>(s.state) - static_cast<GLenum>(EFxState::ClipPlaneEnable0), v[0]);
      break;
    case EFxState::CullMode:
      // With GL's counter-clockwise front faces, culling clockwise triangles
      // culls the back.
      Enable(GL_CULL_FACE, v[0]);
      glCullFace(v[0] == GL_CCW ? GL_FRONT : GL_BACK);
      break;
    case EFxState::SrcBlend:
    case EFxState::DestBlend: {
      GLint src = GL_ONE, dst = GL_ZERO;
      glGetIntegerv(GL_BLEND_SRC_RGB, &src);
      glGetIntegerv(GL_BLEND_DST_RGB, &dst);
      if (s.state == EFxState::SrcBlend) glBlendFunc(E(v[0]), static_cast<GLenum>(dst));
      else glBlendFunc(static_cast<GLenum>(src), E(v[0]));
      break;
    }
    case EFxState::FillMode: glPolygonMode(GL_FRONT_AND_BACK, E(v[0])); break;
    default: break;  // programs and sampler states go elsewhere
  }
}

void ResetFxPassState(EFxState state) {
  const FxStateInfo &info = GetStateInfo(state);
  FxStateValue value;
  value.state = state;
  value.count = info.count;
  value.values = info.reset;
  ApplyFxPassState(value);
}

namespace {
// Whether the bound texture has a mip chain: more than one level when its
// first level is larger than one texel.
bool HasMipLevels(GLenum target) {
  const GLenum face = target == GL_TEXTURE_CUBE_MAP ? GL_TEXTURE_CUBE_MAP_POSITIVE_X : target;
  GLint width = 0, height = 0, nextWidth = 0;
  glGetTexLevelParameteriv(face, 0, GL_TEXTURE_WIDTH, &width);
  glGetTexLevelParameteriv(face, 0, GL_TEXTURE_HEIGHT, &height);
  if (width <= 1 && height <= 1) return true;
  glGetTexLevelParameteriv(face, 1, GL_TEXTURE_WIDTH, &nextWidth);
  return nextWidth > 0;
}

// A filter that reads mip levels on a texture without them makes it
// incomplete, and it samples black: such a texture (a render target drawn
// without mip maps, say) is filtered from its first level instead.
GLint UsableMinFilter(GLenum target, GLint filter) {
  switch (filter) {
    case GL_NEAREST_MIPMAP_NEAREST:
    case GL_NEAREST_MIPMAP_LINEAR: return HasMipLevels(target) ? filter : GL_NEAREST;
    case GL_LINEAR_MIPMAP_NEAREST:
    case GL_LINEAR_MIPMAP_LINEAR: return HasMipLevels(target) ? filter : GL_LINEAR;
    default: return filter;
  }
}
}  // namespace

void ApplyFxSamplerState(GLenum target, const FxStateValue &s) {
  const auto &v = s.values;
  switch (s.state) {
    case EFxState::MinFilter:
      glTexParameteri(target, GL_TEXTURE_MIN_FILTER, UsableMinFilter(target, static_cast<GLint>(v[0])));
      break;
    case EFxState::MagFilter: glTexParameteri(target, GL_TEXTURE_MAG_FILTER, static_cast<GLint>(v[0])); break;
    case EFxState::WrapS: glTexParameteri(target, GL_TEXTURE_WRAP_S, static_cast<GLint>(v[0])); break;
    case EFxState::WrapT:
      if (target != GL_TEXTURE_1D) glTexParameteri(target, GL_TEXTURE_WRAP_T, static_cast<GLint>(v[0]));
      break;
    case EFxState::WrapR:
      if (target == GL_TEXTURE_3D || target == GL_TEXTURE_CUBE_MAP)
        glTexParameteri(target, GL_TEXTURE_WRAP_R, static_cast<GLint>(v[0]));
      break;
    case EFxState::MaxAnisotropy:
      if (GLEW_EXT_texture_filter_anisotropic) glTexParameterf(target, GL_TEXTURE_MAX_ANISOTROPY_EXT, F(v[0]));
      break;
    case EFxState::BorderColor: {
      GLfloat color[4] = {F(v[0]), F(v[1]), F(v[2]), F(v[3])};
      glTexParameterfv(target, GL_TEXTURE_BORDER_COLOR, color);
      break;
    }
    case EFxState::LodBias: glTexParameterf(target, GL_TEXTURE_LOD_BIAS, F(v[0])); break;
    case EFxState::GenerateMipmap: glTexParameteri(target, GL_GENERATE_MIPMAP, v[0] != 0 ? GL_TRUE : GL_FALSE); break;
    case EFxState::MaxMipLevel: glTexParameteri(target, GL_TEXTURE_MAX_LEVEL, static_cast<GLint>(v[0])); break;
    case EFxState::MinMipLevel: glTexParameteri(target, GL_TEXTURE_BASE_LEVEL, static_cast<GLint>(v[0])); break;
    case EFxState::MaxLod: glTexParameterf(target, GL_TEXTURE_MAX_LOD, F(v[0])); break;
    case EFxState::MinLod: glTexParameterf(target, GL_TEXTURE_MIN_LOD, F(v[0])); break;
    case EFxState::CompareMode: glTexParameteri(target, GL_TEXTURE_COMPARE_MODE, static_cast<GLint>(v[0])); break;
    case EFxState::CompareFunc: glTexParameteri(target, GL_TEXTURE_COMPARE_FUNC, static_cast<GLint>(v[0])); break;
    case EFxState::DepthMode: glTexParameteri(target, GL_DEPTH_TEXTURE_MODE, static_cast<GLint>(v[0])); break;
    default: break;
  }
}
