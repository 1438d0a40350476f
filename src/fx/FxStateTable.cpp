#include "fx/FxStateTable.h"

#include <cstdio>
#include <strings.h>

namespace {
const FxEnumName kBool[] = {{"true", 1}, {"false", 0}, {nullptr, 0}};
const FxEnumName kFunc[] = {{"Never", 0x0200},  {"Less", 0x0201},         {"Equal", 0x0202},
                            {"LEqual", 0x0203}, {"LessEqual", 0x0203},    {"Greater", 0x0204},
                            {"NotEqual", 0x0205}, {"GEqual", 0x0206},     {"GreaterEqual", 0x0206},
                            {"Always", 0x0207}, {nullptr, 0}};
const FxEnumName kBlend[] = {{"Zero", 0},
                             {"InvSrcColor", 0x0301},
                             {"InvSrcAlpha", 0x0303},
                             {"DestAlpha", 0x0304},
                             {"InvDestAlpha", 0x0305},
                             {"DestColor", 0x0306},
                             {"InvDestColor", 0x0307},
                             {"OneMinusDestColor", 0x0307},
                             {"OneMinusDestAlpha", 0x0305},
                             {"BlendFactor", 0x8001},
                             {"InvBlendFactor", 0x8002},
                             {"One", 1},
                             {"SrcColor", 0x0300},
                             {"OneMinusSrcColor", 0x0301},
                             {"SrcAlpha", 0x0302},
                             {"OneMinusSrcAlpha", 0x0303},
                             {"DstAlpha", 0x0304},
                             {"OneMinusDstAlpha", 0x0305},
                             {"DstColor", 0x0306},
                             {"OneMinusDstColor", 0x0307},
                             {"SrcAlphaSaturate", 0x0308},
                             {"ConstantColor", 0x8001},
                             {"OneMinusConstantColor", 0x8002},
                             {"ConstantAlpha", 0x8003},
                             {"OneMinusConstantAlpha", 0x8004},
                             {nullptr, 0}};
const FxEnumName kEquation[] = {{"FuncAdd", 0x8006},         {"Add", 0x8006},
                                {"Min", 0x8007},             {"Max", 0x8008},
                                {"FuncSubtract", 0x800A},    {"Subtract", 0x800A},
                                {"FuncReverseSubtract", 0x800B}, {"ReverseSubtract", 0x800B},
                                {"RevSubtract", 0x800B},     {"LogicOp", 0x0BF1},
                                {nullptr, 0}};
const FxEnumName kLogicOp[] = {{"Clear", 0x1500},   {"And", 0x1501},        {"AndReverse", 0x1502},
                               {"Copy", 0x1503},    {"AndInverted", 0x1504}, {"Noop", 0x1505},
                               {"Xor", 0x1506},     {"Or", 0x1507},         {"Nor", 0x1508},
                               {"Equiv", 0x1509},   {"Invert", 0x150A},     {"OrReverse", 0x150B},
                               {"CopyInverted", 0x150C}, {"OrInverted", 0x150D}, {"Nand", 0x150E},
                               {"Set", 0x150F},     {nullptr, 0}};
const FxEnumName kShadeModel[] = {{"Flat", 0x1D00}, {"Smooth", 0x1D01}, {nullptr, 0}};
// CullMode names the winding that is culled; None culls nothing.
const FxEnumName kCullMode[] = {{"None", 0}, {"CW", 0x0900}, {"CCW", 0x0901}, {nullptr, 0}};
const FxEnumName kFillMode[] = {{"Point", 0x1B00}, {"Wireframe", 0x1B01}, {"Line", 0x1B01},
                                {"Solid", 0x1B02}, {"Fill", 0x1B02},      {nullptr, 0}};
const FxEnumName kMipFilter[] = {{"None", 0}, {"Point", 0x2600}, {"Nearest", 0x2600}, {"Linear", 0x2601},
                                 {"Anisotropic", 0x2601}, {nullptr, 0}};
const FxEnumName kCompareMode[] = {{"None", 0}, {"CompareRToTexture", 0x884E}, {"CompareRefToTexture", 0x884E},
                                   {nullptr, 0}};
const FxEnumName kDepthMode[] = {{"Alpha", 0x1906}, {"Intensity", 0x8049}, {"Luminance", 0x1909}, {"Red", 0x1903},
                                 {nullptr, 0}};
const FxEnumName kFace[] = {{"Front", 0x0404}, {"Back", 0x0405}, {"FrontAndBack", 0x0408}, {nullptr, 0}};
const FxEnumName kWinding[] = {{"CW", 0x0900}, {"CCW", 0x0901}, {nullptr, 0}};
const FxEnumName kPolygonMode[] = {{"Front", 0x0404}, {"Back", 0x0405}, {"FrontAndBack", 0x0408}, {"Point", 0x1B00},
                                   {"Line", 0x1B01},  {"Fill", 0x1B02}, {nullptr, 0}};
// The faces lead the separate stencil states' values.
const FxEnumName kStencilFunc[] = {{"Front", 0x0404}, {"Back", 0x0405}, {"FrontAndBack", 0x0408}, {"Never", 0x0200},  {"Less", 0x0201},   {"Equal", 0x0202},  {"LEqual", 0x0203},
                                   {"Greater", 0x0204}, {"NotEqual", 0x0205}, {"GEqual", 0x0206}, {"Always", 0x0207},
                                   {nullptr, 0}};
const FxEnumName kStencilOp[] = {{"Front", 0x0404}, {"Back", 0x0405}, {"FrontAndBack", 0x0408}, {"Keep", 0x1E00},     {"Zero", 0},          {"Replace", 0x1E01},
                                 {"Incr", 0x1E02},     {"Decr", 0x1E03},     {"Invert", 0x150A},
                                 {"IncrWrap", 0x8507}, {"DecrWrap", 0x8508}, {nullptr, 0}};
// GL names, and Point of the other effect dialect, which composed Shader
// texts use for their permutation samplers
const FxEnumName kFilter[] = {{"Nearest", 0x2600},
                              {"Point", 0x2600},
                              {"Linear", 0x2601},
                              {"NearestMipMapNearest", 0x2700},
                              {"LinearMipMapNearest", 0x2701},
                              {"NearestMipMapLinear", 0x2702},
                              {"LinearMipMapLinear", 0x2703},
                              {"Anisotropic", 0x2601},
                              {nullptr, 0}};
// GL names and the other effect dialect's address modes
const FxEnumName kWrap[] = {{"Repeat", 0x2901},        {"Wrap", 0x2901},          {"Clamp", 0x2900},
                            {"ClampToEdge", 0x812F},   {"ClampToBorder", 0x812D}, {"Border", 0x812D},
                            {"MirroredRepeat", 0x8370}, {"Mirror", 0x8370},       {nullptr, 0}};

constexpr double kAllBits = 4294967295.0;
using S = EFxState;
const FxStateInfo kPassStates[] = {
    {"DepthTestEnable", S::DepthTestEnable, 1, kBool, {0}},
    {"DepthMask", S::DepthMask, 1, kBool, {1}},
    {"DepthFunc", S::DepthFunc, 1, kFunc, {0x0201}},
    {"BlendEnable", S::BlendEnable, 1, kBool, {0}},
    {"BlendFunc", S::BlendFunc, 2, kBlend, {1, 0}},
    {"BlendFuncSeparate", S::BlendFuncSeparate, 4, kBlend, {1, 0, 1, 0}},
    {"BlendEquation", S::BlendEquation, 1, kEquation, {0x8006}},
    {"BlendColor", S::BlendColor, 4, nullptr, {0, 0, 0, 0}},
    {"CullFaceEnable", S::CullFaceEnable, 1, kBool, {0}},
    {"CullFace", S::CullFace, 1, kFace, {0x0405}},
    {"FrontFace", S::FrontFace, 1, kWinding, {0x0901}},
    {"AlphaTestEnable", S::AlphaTestEnable, 1, kBool, {0}},
    {"AlphaFunc", S::AlphaFunc, 2, kFunc, {0x0207, 0}},
    {"ColorMask", S::ColorMask, 4, kBool, {1, 1, 1, 1}},
    {"PolygonMode", S::PolygonMode, 2, kPolygonMode, {0x0408, 0x1B02}},
    {"PolygonOffset", S::PolygonOffset, 2, nullptr, {0, 0}},
    {"PolygonOffsetFillEnable", S::PolygonOffsetFillEnable, 1, kBool, {0}},
    {"PolygonOffsetLineEnable", S::PolygonOffsetLineEnable, 1, kBool, {0}},
    {"PolygonOffsetPointEnable", S::PolygonOffsetPointEnable, 1, kBool, {0}},
    {"PointSize", S::PointSize, 1, nullptr, {1}},
    {"LineWidth", S::LineWidth, 1, nullptr, {1}},
    {"StencilTestEnable", S::StencilTestEnable, 1, kBool, {0}},
    {"StencilFunc", S::StencilFunc, 3, kStencilFunc, {0x0207, 0, kAllBits}},
    {"StencilOp", S::StencilOp, 3, kStencilOp, {0x1E00, 0x1E00, 0x1E00}},
    {"StencilMask", S::StencilMask, 1, nullptr, {kAllBits}},
    {"VertexProgram", S::VertexProgram, 0, nullptr, {0}},
    {"VertexShader", S::VertexProgram, 0, nullptr, {0}},
    {"FragmentProgram", S::FragmentProgram, 0, nullptr, {0}},
    {"PixelShader", S::FragmentProgram, 0, nullptr, {0}},
    {"BlendEquationSeparate", S::BlendEquationSeparate, 2, kEquation, {0x8006, 0x8006}},
    {"StencilFuncSeparate", S::StencilFuncSeparate, 4, kStencilFunc, {0x0408, 0x0207, 0, kAllBits}},
    {"StencilOpSeparate", S::StencilOpSeparate, 4, kStencilOp, {0x0408, 0x1E00, 0x1E00, 0x1E00}},
    {"StencilMaskSeparate", S::StencilMaskSeparate, 2, kFace, {0x0408, kAllBits}},
    {"ScissorTestEnable", S::ScissorTestEnable, 1, kBool, {0}},
    {"DepthClampEnable", S::DepthClampEnable, 1, kBool, {0}},
    {"DepthRange", S::DepthRange, 2, nullptr, {0, 1}},
    {"DitherEnable", S::DitherEnable, 1, kBool, {1}},
    {"LineSmoothEnable", S::LineSmoothEnable, 1, kBool, {0}},
    {"PointSmoothEnable", S::PointSmoothEnable, 1, kBool, {0}},
    {"PolygonSmoothEnable", S::PolygonSmoothEnable, 1, kBool, {0}},
    {"MultisampleEnable", S::MultisampleEnable, 1, kBool, {1}},
    {"SampleAlphaToCoverageEnable", S::SampleAlphaToCoverageEnable, 1, kBool, {0}},
    {"SampleAlphaToOneEnable", S::SampleAlphaToOneEnable, 1, kBool, {0}},
    {"ColorLogicOpEnable", S::ColorLogicOpEnable, 1, kBool, {0}},
    {"LogicOpEnable", S::ColorLogicOpEnable, 1, kBool, {0}},
    {"LogicOp", S::LogicOp, 1, kLogicOp, {0x1503}},
    {"ShadeModel", S::ShadeModel, 1, kShadeModel, {0x1D01}},
    {"VertexProgramPointSizeEnable", S::VertexProgramPointSizeEnable, 1, kBool, {0}},
    {"PointSpriteEnable", S::PointSpriteEnable, 1, kBool, {0}},
    {"LineStippleEnable", S::LineStippleEnable, 1, kBool, {0}},
    {"PolygonStippleEnable", S::PolygonStippleEnable, 1, kBool, {0}},
    {"LightingEnable", S::LightingEnable, 1, kBool, {0}},
    {"FogEnable", S::FogEnable, 1, kBool, {0}},
    {"ClipPlaneEnable0", S::ClipPlaneEnable0, 1, kBool, {0}},
    {"ClipPlaneEnable1", S::ClipPlaneEnable1, 1, kBool, {0}},
    {"ClipPlaneEnable2", S::ClipPlaneEnable2, 1, kBool, {0}},
    {"ClipPlaneEnable3", S::ClipPlaneEnable3, 1, kBool, {0}},
    // The other effect dialect's names, as effect authors write them.
    {"AlphaBlendEnable", S::BlendEnable, 1, kBool, {0}},
    {"ZEnable", S::DepthTestEnable, 1, kBool, {0}},
    {"ZWriteEnable", S::DepthMask, 1, kBool, {1}},
    {"ZFunc", S::DepthFunc, 1, kFunc, {0x0201}},
    {"BlendOp", S::BlendEquation, 1, kEquation, {0x8006}},
    {"StencilEnable", S::StencilTestEnable, 1, kBool, {0}},
    {"CullMode", S::CullMode, 1, kCullMode, {0}},
    {"SrcBlend", S::SrcBlend, 1, kBlend, {1}},
    {"DestBlend", S::DestBlend, 1, kBlend, {0}},
    {"FillMode", S::FillMode, 1, kFillMode, {0x1B02}},
};
const FxStateInfo kSamplerStates[] = {
    {"Texture", S::Texture, 0, nullptr, {0}},
    {"MinFilter", S::MinFilter, 1, kFilter, {0x2702}},
    {"MagFilter", S::MagFilter, 1, kFilter, {0x2601}},
    {"WrapS", S::WrapS, 1, kWrap, {0x2901}},
    {"WrapT", S::WrapT, 1, kWrap, {0x2901}},
    {"WrapR", S::WrapR, 1, kWrap, {0x2901}},
    {"AddressU", S::WrapS, 1, kWrap, {0x2901}},
    {"AddressV", S::WrapT, 1, kWrap, {0x2901}},
    {"AddressW", S::WrapR, 1, kWrap, {0x2901}},
    {"MaxAnisotropy", S::MaxAnisotropy, 1, nullptr, {1}},
    {"BorderColor", S::BorderColor, 4, nullptr, {0, 0, 0, 0}},
    {"LODBias", S::LodBias, 1, nullptr, {0}},
    {"MipMapLodBias", S::LodBias, 1, nullptr, {0}},
    {"GenerateMipmap", S::GenerateMipmap, 1, kBool, {0}},
    {"MipFilter", S::MipFilter, 1, kMipFilter, {0}},
    {"MaxMipLevel", S::MaxMipLevel, 1, nullptr, {1000}},
    {"MinMipLevel", S::MinMipLevel, 1, nullptr, {0}},
    {"MaxLOD", S::MaxLod, 1, nullptr, {1000}},
    {"MinLOD", S::MinLod, 1, nullptr, {-1000}},
    {"CompareMode", S::CompareMode, 1, kCompareMode, {0}},
    {"CompareFunc", S::CompareFunc, 1, kFunc, {0x0203}},
    {"DepthMode", S::DepthMode, 1, kDepthMode, {0x1909}},
};

void Components(const FxExpr &e, std::vector<const FxExpr *> &out) {
  if (e.kind == EFxExpr::Construct || e.kind == EFxExpr::InitList) {
    for (const auto &a : e.args) Components(*a, out);
    return;
  }
  out.push_back(&e);
}

bool Component(const FxStateInfo &info, const FxExpr &e, double &value) {
  if (e.kind == EFxExpr::Literal && e.type.base != EFxBase::String) {
    value = e.text == "true" ? 1 : e.text == "false" ? 0 : strtod(e.text.c_str(), nullptr);
    if (e.type.base == EFxBase::Int) value = static_cast<double>(strtol(e.text.c_str(), nullptr, 0));
    return true;
  }
  if (e.kind == EFxExpr::Unary && e.text == "-" && Component(info, *e.args[0], value)) {
    value = -value;
    return true;
  }
  if (e.kind == EFxExpr::Name && info.names)
    for (const FxEnumName *n = info.names; n->name; ++n)
      if (!strcasecmp(n->name, e.text.c_str())) {
        value = n->value;
        return true;
      }
  return false;
}
}  // namespace

const FxStateInfo *FindState(const std::string &name, bool sampler) {
  if (sampler) {
    for (const FxStateInfo &s : kSamplerStates)
      if (!strcasecmp(s.name, name.c_str())) return &s;
  } else {
    for (const FxStateInfo &s : kPassStates)
      if (!strcasecmp(s.name, name.c_str())) return &s;
  }
  return nullptr;
}

const FxStateInfo &GetStateInfo(EFxState state) {
  for (const FxStateInfo &s : kPassStates)
    if (s.state == state) return s;
  for (const FxStateInfo &s : kSamplerStates)
    if (s.state == state) return s;
  return kPassStates[0];
}

bool ParseStateValue(const FxStateInfo &info, const FxExpr &value, FxStateValue &out, std::string &error) {
  std::vector<const FxExpr *> parts;
  Components(value, parts);
  out.state = info.state;
  out.at = value.at;
  out.count = static_cast<int>(parts.size());
  if (out.count != info.count) {
    error = std::string(info.name) + " takes " + std::to_string(info.count) + " values, not " + std::to_string(out.count);
    return false;
  }
  for (int i = 0; i < out.count; ++i)
    if (!Component(info, *parts[i], out.values[i])) {
      error = "bad value '" + parts[i]->text + "' for " + info.name;
      return false;
    }
  return true;
}

bool ResolveStateNames(const FxStateInfo &info, FxExpr &value) {
  bool names = false;
  for (auto &a : value.args) names = ResolveStateNames(info, *a) || names;
  double number = 0;
  if (value.kind == EFxExpr::Name && Component(info, value, number)) {
    value.kind = EFxExpr::Literal;
    value.text = std::to_string(static_cast<long>(number));
    value.type = CFxType::Scalar(EFxBase::Int);
  }
  return names || value.kind == EFxExpr::Name;
}

std::string StateValueText(const FxStateValue &v) {
  const FxStateInfo &info = GetStateInfo(v.state);
  std::string text;
  for (int i = 0; i < v.count; ++i) {
    std::string word;
    for (const FxEnumName *n = info.names; n && n->name && word.empty(); ++n)
      if (n->value == v.values[i] && (info.names == kBool || n->value > 1 || info.names == kBlend)) word = n->name;
    if (word.empty()) {
      char number[32];
      snprintf(number, sizeof number, "%g", v.values[i]);
      word = number;
    }
    text += (i ? ", " : "") + word;
  }
  return v.count > 1 ? "(" + text + ")" : text;
}
