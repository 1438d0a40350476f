#pragma once
// Pass and sampler states as data: each state's name, how many values it
// takes, the symbolic names it accepts (with their GL enum numbers) and its
// GL default, which is what resetting a pass restores. The GL back end maps
// each EFxState to one GL call; nothing here needs a context.

#include "fx/FxAst.h"

#include <array>
#include <string>

enum class EFxState : uint8_t {
  // pass states
  DepthTestEnable, DepthMask, DepthFunc, BlendEnable, BlendFunc, BlendFuncSeparate, BlendEquation, BlendColor,
  CullFaceEnable, CullFace, FrontFace, AlphaTestEnable, AlphaFunc, ColorMask, PolygonMode, PolygonOffset,
  PolygonOffsetFillEnable, PolygonOffsetLineEnable, PolygonOffsetPointEnable, PointSize, LineWidth,
  StencilTestEnable, StencilFunc, StencilOp, StencilMask, VertexProgram, FragmentProgram,
  BlendEquationSeparate, StencilFuncSeparate, StencilOpSeparate, StencilMaskSeparate, ScissorTestEnable,
  DepthClampEnable, DepthRange, DitherEnable, LineSmoothEnable, PointSmoothEnable, PolygonSmoothEnable,
  MultisampleEnable, SampleAlphaToCoverageEnable, SampleAlphaToOneEnable, ColorLogicOpEnable, LogicOp, ShadeModel,
  VertexProgramPointSizeEnable, PointSpriteEnable, LineStippleEnable, PolygonStippleEnable, LightingEnable,
  FogEnable, ClipPlaneEnable0, ClipPlaneEnable1, ClipPlaneEnable2, ClipPlaneEnable3,
  // the other effect dialect's names that need a state of their own
  CullMode, SrcBlend, DestBlend, FillMode,
  // sampler states
  Texture, MinFilter, MagFilter, WrapS, WrapT, WrapR, MaxAnisotropy, BorderColor, LodBias, GenerateMipmap,
  MipFilter, MaxMipLevel, MinMipLevel, MaxLod, MinLod, CompareMode, CompareFunc, DepthMode
};

struct FxEnumName {
  const char *name;
  double value;  // the GL enum
};

struct FxStateInfo {
  const char *name;
  EFxState state;
  int count;                  // values it takes (int2, float4, ...)
  const FxEnumName *names;    // null-terminated, or null: numbers and bools only
  std::array<double, 4> reset;  // GL's default
};

struct FxStateValue {
  EFxState state = EFxState::DepthTestEnable;
  std::array<double, 4> values{};
  int count = 0;
  FxLocation at;
  // Set when the value is computed from parameters (`PointSize = gSize * 2`):
  // then `values` holds nothing until CFxEffect::StateNow evaluates it.
  const FxExpr *computed = nullptr;
};

// Case-insensitive, as CgFX state names are; `sampler` picks the table.
const FxStateInfo *FindState(const std::string &name, bool sampler);
const FxStateInfo &GetStateInfo(EFxState state);
// Reads a state's value: a number, bool, symbolic name, `int2(a, b)` or
// `{a, b}`. False with `error` set when it does not fit.
bool ParseStateValue(const FxStateInfo &info, const FxExpr &value, FxStateValue &out, std::string &error);
// Turns the state's value names in `value` into numbers, so that a value
// mixing them with parameters (`int3(Equal, gRef, 255)`) can be checked and
// computed as an expression. Whether other names remain: a value made of
// numbers and value names alone is not computed.
bool ResolveStateNames(const FxStateInfo &info, FxExpr &value);
// "BlendFunc = int2(SrcAlpha, OneMinusSrcAlpha)": the value in words.
std::string StateValueText(const FxStateValue &value);
