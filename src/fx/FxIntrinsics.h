#pragma once
// Cg's built-in functions as data: how the checker types a call, and which
// GLSL 1.20 function or helper of ours the emitter writes for it.

#include "fx/FxTypes.h"

enum class EFxRule : uint8_t {
  Map1, Map2, Map3,  // componentwise over the arguments' common float type
  Dot, Length, Distance, Cross, Normalize, Reflect, Refract, FaceForward,
  Transpose, Determinant, AnyAll, Lit, SinCos, Clip, Mul, Tex
};

enum class EFxTexForm : uint8_t { Plain, Proj, Lod, Bias };

struct FxIntrinsic {
  const char *name;
  EFxRule rule;
  const char *glsl;  // a GLSL built-in, or one of our helpers ("cg_...")
  EFxBase sampler = EFxBase::Void;  // Tex: the sampler kind
  EFxTexForm form = EFxTexForm::Plain;
  int coord = 0;  // Tex: size of the coordinate argument
};

// Index of the intrinsic called `name`, or -1.
int FindIntrinsic(const char *name);
const FxIntrinsic &GetIntrinsic(int index);
bool IsHelper(const FxIntrinsic &in);
