#include "fx/FxIntrinsics.h"

#include <cstring>

namespace {
using R = EFxRule;
using F = EFxTexForm;
using B = EFxBase;
const FxIntrinsic kIntrinsics[] = {
    {"abs", R::Map1, "abs"},           {"acos", R::Map1, "acos"},
    {"asin", R::Map1, "asin"},         {"atan", R::Map1, "atan"},
    {"ceil", R::Map1, "ceil"},         {"cos", R::Map1, "cos"},
    {"cosh", R::Map1, "cg_cosh"},      {"degrees", R::Map1, "degrees"},
    {"exp", R::Map1, "exp"},           {"exp2", R::Map1, "exp2"},
    {"floor", R::Map1, "floor"},       {"frac", R::Map1, "fract"},
    {"log", R::Map1, "log"},           {"log2", R::Map1, "log2"},
    {"log10", R::Map1, "cg_log10"},    {"radians", R::Map1, "radians"},
    {"round", R::Map1, "cg_round"},    {"rsqrt", R::Map1, "inversesqrt"},
    {"saturate", R::Map1, "cg_saturate"}, {"sign", R::Map1, "sign"},
    {"sin", R::Map1, "sin"},           {"sinh", R::Map1, "cg_sinh"},
    {"sqrt", R::Map1, "sqrt"},         {"tan", R::Map1, "tan"},
    {"tanh", R::Map1, "cg_tanh"},      {"trunc", R::Map1, "cg_trunc"},
    {"ddx", R::Map1, "dFdx"},          {"ddy", R::Map1, "dFdy"},
    {"fwidth", R::Map1, "fwidth"},     {"atan2", R::Map2, "atan"},
    {"fmod", R::Map2, "cg_fmod"},      {"pow", R::Map2, "pow"},
    {"step", R::Map2, "step"},         {"min", R::Map2, "min"},
    {"max", R::Map2, "max"},           {"ldexp", R::Map2, "cg_ldexp"},
    {"lerp", R::Map3, "mix"},          {"clamp", R::Map3, "clamp"},
    {"smoothstep", R::Map3, "smoothstep"}, {"dot", R::Dot, "dot"},
    {"length", R::Length, "length"},   {"distance", R::Distance, "distance"},
    {"cross", R::Cross, "cross"},      {"normalize", R::Normalize, "normalize"},
    {"reflect", R::Reflect, "reflect"}, {"refract", R::Refract, "refract"},
    {"faceforward", R::FaceForward, "faceforward"}, {"transpose", R::Transpose, "transpose"},
    {"determinant", R::Determinant, "cg_determinant"}, {"any", R::AnyAll, "any"},
    {"all", R::AnyAll, "all"},         {"lit", R::Lit, "cg_lit"},
    {"sincos", R::SinCos, "cg_sincos"}, {"clip", R::Clip, "cg_clip"},
    {"mul", R::Mul, ""},
    {"tex1D", R::Tex, "texture1D", B::Sampler1D, F::Plain, 1},
    {"tex1Dproj", R::Tex, "texture1DProj", B::Sampler1D, F::Proj, 2},
    {"tex1Dlod", R::Tex, "texture1DLod", B::Sampler1D, F::Lod, 4},
    {"tex1Dbias", R::Tex, "texture1D", B::Sampler1D, F::Bias, 4},
    {"tex2D", R::Tex, "texture2D", B::Sampler2D, F::Plain, 2},
    {"tex2Dproj", R::Tex, "texture2DProj", B::Sampler2D, F::Proj, 4},
    {"tex2Dlod", R::Tex, "texture2DLod", B::Sampler2D, F::Lod, 4},
    {"tex2Dbias", R::Tex, "texture2D", B::Sampler2D, F::Bias, 4},
    {"tex3D", R::Tex, "texture3D", B::Sampler3D, F::Plain, 3},
    {"tex3Dproj", R::Tex, "texture3DProj", B::Sampler3D, F::Proj, 4},
    {"tex3Dlod", R::Tex, "texture3DLod", B::Sampler3D, F::Lod, 4},
    {"tex3Dbias", R::Tex, "texture3D", B::Sampler3D, F::Bias, 4},
    {"texCUBE", R::Tex, "textureCube", B::SamplerCube, F::Plain, 3},
    {"texCUBEproj", R::Tex, "textureCube", B::SamplerCube, F::Proj, 4},
    {"texCUBElod", R::Tex, "textureCubeLod", B::SamplerCube, F::Lod, 4},
    {"texCUBEbias", R::Tex, "textureCube", B::SamplerCube, F::Bias, 4},
};
constexpr int kCount = static_cast<int>(sizeof kIntrinsics / sizeof kIntrinsics[0]);
}  // namespace

int FindIntrinsic(const char *name) {
  for (int i = 0; i < kCount; ++i)
    if (!strcmp(kIntrinsics[i].name, name)) return i;
  return -1;
}

const FxIntrinsic &GetIntrinsic(int index) { return kIntrinsics[index]; }

bool IsHelper(const FxIntrinsic &in) { return !strncmp(in.glsl, "cg_", 3); }
