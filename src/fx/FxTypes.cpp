#include "fx/FxTypes.h"

#include <cstring>

namespace {
struct BaseName {
  const char *name;
  EFxBase base;
};
const BaseName kNumeric[] = {{"float", EFxBase::Float}, {"half", EFxBase::Half}, {"fixed", EFxBase::Fixed},
                             {"int", EFxBase::Int},     {"bool", EFxBase::Bool}};
const BaseName kOther[] = {{"void", EFxBase::Void},
                           {"string", EFxBase::String},
                           {"texture", EFxBase::Texture},
                           {"texture1D", EFxBase::Texture},
                           {"texture2D", EFxBase::Texture},
                           {"texture3D", EFxBase::Texture},
                           {"textureCUBE", EFxBase::Texture},
                           {"sampler1D", EFxBase::Sampler1D},
                           {"sampler2D", EFxBase::Sampler2D},
                           {"sampler3D", EFxBase::Sampler3D},
                           {"samplerCUBE", EFxBase::SamplerCube},
                           {"samplerRECT", EFxBase::SamplerRect},
                           {"sampler", EFxBase::Sampler2D},
                           {"vertexshader", EFxBase::Program},
                           {"pixelshader", EFxBase::Program},
                           {"fragmentshader", EFxBase::Program}};  // after sampler2D, which names the type
}  // namespace

CFxType CFxType::Vector(EFxBase b, int n) {
  CFxType t{b};
  t.cols = static_cast<uint8_t>(n);
  return t;
}

CFxType CFxType::Matrix(EFxBase b, int rows, int cols) {
  if (rows == 1 && cols == 1) return Scalar(b);
  CFxType t{b};
  t.rows = static_cast<uint8_t>(rows);
  t.cols = static_cast<uint8_t>(cols);
  t.matrix = true;
  return t;
}

CFxType CFxType::Element() const {
  CFxType t = *this;
  t.arraySize = arrayInner;
  t.arrayInner = 0;
  return t;
}

CFxType CFxType::Leaf() const {
  CFxType t = *this;
  t.arraySize = t.arrayInner = 0;
  return t;
}

CFxType CFxType::WithBase(EFxBase b) const {
  CFxType t = *this;
  t.base = b;
  return t;
}

bool CFxType::operator==(const CFxType &o) const {
  return base == o.base && rows == o.rows && cols == o.cols && matrix == o.matrix && arraySize == o.arraySize && arrayInner == o.arrayInner &&
         structDef == o.structDef;
}

bool ParseTypeName(const std::string &name, CFxType &type) {
  for (const BaseName &b : kOther)
    if (name == b.name) {
      type = CFxType::Scalar(b.base);
      return true;
    }
  for (const BaseName &b : kNumeric) {
    size_t n = strlen(b.name);
    if (name.compare(0, n, b.name) != 0) continue;
    const char *rest = name.c_str() + n;
    auto dim = [](char c) { return c >= '1' && c <= '4' ? c - '0' : 0; };
    if (*rest == 0) {
      type = CFxType::Scalar(b.base);
      return true;
    }
    if (dim(rest[0]) && rest[1] == 0) {
      type = dim(rest[0]) == 1 ? CFxType::Scalar(b.base) : CFxType::Vector(b.base, dim(rest[0]));
      return true;
    }
    if (dim(rest[0]) && rest[1] == 'x' && dim(rest[2]) && rest[3] == 0) {
      type = CFxType::Matrix(b.base, dim(rest[0]), dim(rest[2]));
      return true;
    }
  }
  return false;
}

std::string TypeName(const CFxType &t) {
  std::string name;
  if (t.base == EFxBase::Struct) {
    name = t.structDef ? "struct" : "struct?";
  } else {
    for (const BaseName &b : kNumeric)
      if (b.base == t.base) name = b.name;
    for (const BaseName &b : kOther)
      if (name.empty() && b.base == t.base) name = b.name;
    if (t.matrix) name += std::to_string(t.rows) + "x" + std::to_string(t.cols);
    else if (t.cols > 1) name += std::to_string(t.cols);
  }
  if (t.arraySize > 0) name += "[" + std::to_string(t.arraySize) + "]";
  if (t.arrayInner > 0) name += "[" + std::to_string(t.arrayInner) + "]";
  return name;
}

int ConversionCost(const CFxType &from, const CFxType &to) {
  if (from == to) return 0;
  if (!from.IsNumeric() || !to.IsNumeric()) {
    // A sampler of unknown dimension ("sampler") fits any sampler parameter.
    return from.IsSampler() && to.IsSampler() && from.arraySize == to.arraySize ? 8 : -1;
  }
  int cost = 0;
  if (from.base != to.base) {
    // precision changes are cheapest; bool prefers int to the float types
    bool boolToFloat = from.base == EFxBase::Bool && to.IsFloatLike();
    cost += (from.IsFloatLike() && to.IsFloatLike()) ? 1 : boolToFloat ? 3 : 2;
  }
  if (from.IsScalar() && !to.IsScalar()) return cost + 4;
  if (from.matrix != to.matrix) return -1;
  if (from.rows == to.rows && from.cols == to.cols) return cost;
  if (from.rows < to.rows || from.cols < to.cols) return -1;
  return cost + 6;  // truncation
}

bool CommonType(const CFxType &a, const CFxType &b, CFxType &out) {
  if (!a.IsNumeric() || !b.IsNumeric()) return false;
  EFxBase base = a.base > b.base ? a.base : b.base;
  if (a.IsScalar()) {
    out = b.WithBase(base);
  } else if (b.IsScalar()) {
    out = a.WithBase(base);
  } else if (a.matrix != b.matrix) {
    return false;
  } else {
    out = a.WithBase(base);
    out.rows = a.rows < b.rows ? a.rows : b.rows;
    out.cols = a.cols < b.cols ? a.cols : b.cols;
    if (a.matrix && (a.rows != b.rows || a.cols != b.cols)) return false;
  }
  return true;
}

bool ParseSwizzle(const std::string &text, int size, std::vector<int> &index) {
  static const char *const sets[] = {"xyzw", "rgba", "stpq"};
  index.clear();
  if (text.empty() || text.size() > 4) return false;
  for (const char *set : sets) {
    index.clear();
    for (char c : text) {
      const char *p = strchr(set, c);
      if (!p || c == 0 || p - set >= size) break;
      index.push_back(static_cast<int>(p - set));
    }
    if (index.size() == text.size()) return true;
  }
  return false;
}

bool ParseMatrixSwizzle(const std::string &text, int rows, int cols, std::vector<int> &index) {
  index.clear();
  size_t i = 0;
  while (i < text.size()) {
    if (text[i] != '_' || index.size() == 4) return false;
    bool zeroBased = i + 1 < text.size() && text[i + 1] == 'm';
    size_t d = i + (zeroBased ? 2 : 1);
    if (d + 1 >= text.size() + 0 || d + 2 > text.size()) return false;
    int r = text[d] - '0', c = text[d + 1] - '0';
    if (!zeroBased) {
      --r;
      --c;
    }
    if (r < 0 || c < 0 || r >= rows || c >= cols) return false;
    index.push_back(r * 4 + c);
    i = d + 2;
  }
  return !index.empty();
}
