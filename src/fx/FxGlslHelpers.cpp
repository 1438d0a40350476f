// GLSL for the Cg intrinsics GLSL 1.20 lacks. Component-wise helpers are
// written once with T and instantiated for float and vec2..vec4.
#include <cctype>
#include <cstring>
#include <string>

namespace {
struct HelperText {
  const char *name;
  const char *text;  // T stands for the type
  const char *types;  // "f": float family, "i": int family, "": as written
};

const HelperText kHelpers[] = {
    {"cg_trunc", "T cg_trunc(T x) { return sign(x) * floor(abs(x)); }\n", "f"},
    {"cg_round", "T cg_round(T x) { return sign(x) * floor(abs(x) + 0.5); }\n", "f"},
    // Cg's fmod keeps the sign of x: x - y * trunc(x / y).
    {"cg_fmod", "T cg_fmod(T x, T y) { T q = x / y; return x - y * (sign(q) * floor(abs(q))); }\n", "f"},
    {"cg_imod", "T cg_imod(T a, T b) { return a - b * (a / b); }\n", "i"},
    {"cg_sinh", "T cg_sinh(T x) { return 0.5 * (exp(x) - exp(-x)); }\n", "f"},
    {"cg_cosh", "T cg_cosh(T x) { return 0.5 * (exp(x) + exp(-x)); }\n", "f"},
    {"cg_tanh", "T cg_tanh(T x) { T e = exp(-2.0 * abs(x)); return sign(x) * (1.0 - e) / (1.0 + e); }\n", "f"},
    {"cg_log10", "T cg_log10(T x) { return log2(x) * 0.30102999566398120; }\n", "f"},
    {"cg_saturate", "T cg_saturate(T x) { return clamp(x, 0.0, 1.0); }\n", "f"},
    {"cg_ldexp", "T cg_ldexp(T x, T e) { return x * exp2(e); }\n", "f"},
    {"cg_sincos", "void cg_sincos(T x, out T s, out T c) { s = sin(x); c = cos(x); }\n", "f"},
    {"cg_clip", "void cg_clip(T x) { if (any(lessThan(x, T(0.0)))) discard; }\n", "v"},
    {"cg_lit",
     "vec4 cg_lit(float ndotl, float ndoth, float m) {\n"
     "  float specular = (ndotl < 0.0 || ndoth < 0.0) ? 0.0 : pow(ndoth, m);\n"
     "  return vec4(1.0, max(ndotl, 0.0), specular, 1.0);\n}\n",
     ""},
    {"cg_determinant",
     "float cg_determinant(mat2 m) { return m[0][0] * m[1][1] - m[0][1] * m[1][0]; }\n"
     "float cg_determinant(mat3 m) { return dot(m[0], cross(m[1], m[2])); }\n"
     "float cg_determinant(mat4 m) {\n"
     "  float b00 = m[0][0] * m[1][1] - m[0][1] * m[1][0], b01 = m[0][0] * m[1][2] - m[0][2] * m[1][0];\n"
     "  float b02 = m[0][0] * m[1][3] - m[0][3] * m[1][0], b03 = m[0][1] * m[1][2] - m[0][2] * m[1][1];\n"
     "  float b04 = m[0][1] * m[1][3] - m[0][3] * m[1][1], b05 = m[0][2] * m[1][3] - m[0][3] * m[1][2];\n"
     "  float b06 = m[2][0] * m[3][1] - m[2][1] * m[3][0], b07 = m[2][0] * m[3][2] - m[2][2] * m[3][0];\n"
     "  float b08 = m[2][0] * m[3][3] - m[2][3] * m[3][0], b09 = m[2][1] * m[3][2] - m[2][2] * m[3][1];\n"
     "  float b10 = m[2][1] * m[3][3] - m[2][3] * m[3][1], b11 = m[2][2] * m[3][3] - m[2][3] * m[3][2];\n"
     "  return b00 * b11 - b01 * b10 + b02 * b09 + b03 * b08 - b04 * b07 + b05 * b06;\n}\n",
     ""},
    {"cg_tex1Dlod", "vec4 cg_tex1Dlod(sampler1D s, vec4 c) { return texture1DLod(s, c.x, c.w); }\n", ""},
    {"cg_tex2Dlod", "vec4 cg_tex2Dlod(sampler2D s, vec4 c) { return texture2DLod(s, c.xy, c.w); }\n", ""},
    {"cg_tex3Dlod", "vec4 cg_tex3Dlod(sampler3D s, vec4 c) { return texture3DLod(s, c.xyz, c.w); }\n", ""},
    {"cg_texCUBElod", "vec4 cg_texCUBElod(samplerCube s, vec4 c) { return textureCubeLod(s, c.xyz, c.w); }\n", ""},
    {"cg_texCUBEproj", "vec4 cg_texCUBEproj(samplerCube s, vec4 c) { return textureCube(s, c.xyz / c.w); }\n", ""},
};

// Bias needs the fragment stage's implicit level of detail; a vertex
// program has none, so there the bias is the level itself.
const HelperText kBias[] = {
    {"cg_tex1Dbias", "vec4 cg_tex1Dbias(sampler1D s, vec4 c) { return texture1D@(s, c.x, c.w); }\n", ""},
    {"cg_tex2Dbias", "vec4 cg_tex2Dbias(sampler2D s, vec4 c) { return texture2D@(s, c.xy, c.w); }\n", ""},
    {"cg_tex3Dbias", "vec4 cg_tex3Dbias(sampler3D s, vec4 c) { return texture3D@(s, c.xyz, c.w); }\n", ""},
    {"cg_texCUBEbias", "vec4 cg_texCUBEbias(samplerCube s, vec4 c) { return textureCube@(s, c.xyz, c.w); }\n", ""},
};

std::string Instantiate(const std::string &text, const char *type) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    bool alone = text[i] == 'T' && (i == 0 || !isalnum(static_cast<unsigned char>(text[i - 1]))) &&
                 (i + 1 == text.size() || !isalnum(static_cast<unsigned char>(text[i + 1])));
    out += alone ? std::string(type) : std::string(1, text[i]);
  }
  return out;
}
}  // namespace

std::string FxGlslHelperText(const std::string &name, bool fragment) {
  static const char *const floats[] = {"float", "vec2", "vec3", "vec4"};
  static const char *const ints[] = {"int", "ivec2", "ivec3", "ivec4"};
  for (const HelperText &h : kBias) {
    if (name != h.name) continue;
    std::string text = h.text;
    text.replace(text.find('@'), 1, fragment ? "" : "Lod");
    return text;
  }
  for (const HelperText &h : kHelpers) {
    if (name != h.name) continue;
    if (!strcmp(h.types, "")) return h.text;
    std::string out;
    if (!strcmp(h.types, "v")) {  // any() needs a vector: the float one is written apart
      out += "void cg_clip(float x) { if (x < 0.0) discard; }\n";
      for (int i = 1; i < 4; ++i) out += Instantiate(h.text, floats[i]);
      return out;
    }
    for (const char *t : !strcmp(h.types, "i") ? ints : floats) out += Instantiate(h.text, t);
    return out;
  }
  return "";
}
