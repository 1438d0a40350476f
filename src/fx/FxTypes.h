#pragma once
// Cg value types and the implicit conversions between them. float1 and
// float1x1 are plain scalars here: no GLSL type stands for them either.

#include <cstdint>
#include <string>
#include <vector>

struct FxStructDef;

enum class EFxBase : uint8_t {
  Void, Bool, Int, Fixed, Half, Float,  // numeric ones ordered by rank
  String, Texture, Sampler1D, Sampler2D, Sampler3D, SamplerCube, SamplerRect, Struct,
  Program  // `vertexshader` and `pixelshader` variables: compiled programs that passes pick
};

struct CFxType {
  EFxBase base = EFxBase::Void;
  uint8_t rows = 1;  // matrices only
  uint8_t cols = 1;  // vector size or matrix columns
  bool matrix = false;
  int arraySize = 0;  // 0: not an array
  int arrayInner = 0;  // arrays of arrays: each element's size (GLSL gets one flat array)
  const FxStructDef *structDef = nullptr;

  static CFxType Scalar(EFxBase b) { return CFxType{b}; }
  static CFxType Vector(EFxBase b, int n);
  static CFxType Matrix(EFxBase b, int rows, int cols);

  bool IsNumeric() const { return base >= EFxBase::Bool && base <= EFxBase::Float && arraySize == 0; }
  bool IsFloatLike() const { return base >= EFxBase::Fixed && base <= EFxBase::Float; }
  bool IsScalar() const { return IsNumeric() && !matrix && cols == 1; }
  bool IsVector() const { return IsNumeric() && !matrix && cols > 1; }
  bool IsMatrix() const { return IsNumeric() && matrix; }
  bool IsSampler() const { return base >= EFxBase::Sampler1D && base <= EFxBase::SamplerRect; }
  int Components() const { return rows * cols; }
  CFxType Element() const;        // array element (a row of an array of arrays), or the type itself
  CFxType Leaf() const;           // what the array holds at the bottom, or the type itself
  int FlatCount() const { return arraySize * (arrayInner > 0 ? arrayInner : 1); }
  CFxType WithBase(EFxBase b) const;
  bool operator==(const CFxType &o) const;
  bool operator!=(const CFxType &o) const { return !(*this == o); }
};

// "float", "half3", "int2", "float4x4", "sampler2D", "texture": false when
// `name` names no built-in type.
bool ParseTypeName(const std::string &name, CFxType &type);
std::string TypeName(const CFxType &type);

// `.xyz`, `.rgba` on a value of `size` components: the selected indices.
bool ParseSwizzle(const std::string &text, int size, std::vector<int> &index);
// `._m01_m12` (0-based) or `._12_23` (1-based) on a rows x cols matrix: the
// selected elements as row * 4 + column.
bool ParseMatrixSwizzle(const std::string &text, int rows, int cols, std::vector<int> &index);

// Cost of an implicit conversion for overload ranking: 0 exact, higher is
// worse, -1 when there is none. Scalars broadcast to vectors and matrices,
// vectors truncate, numeric bases convert among themselves.
int ConversionCost(const CFxType &from, const CFxType &to);
// The type both operands of an arithmetic operator convert to.
bool CommonType(const CFxType &a, const CFxType &b, CFxType &out);
