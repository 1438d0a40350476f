#include "fx/FxConstEval.h"

#include "core/Numeric.h"

#include <cstdlib>

namespace {
constexpr int MaxDepth = 16;

// Reshapes `v` from `from` to `to`: broadcast, truncation, sub-matrix.
std::vector<float> Reshape(const std::vector<float> &v, const CFxType &from, const CFxType &to) {
  size_t n = static_cast<size_t>(to.Components());
  if (v.size() == 1) return std::vector<float>(n, v[0]);
  if (from.IsMatrix() && to.IsMatrix()) {
    std::vector<float> out;
    for (int r = 0; r < to.rows; ++r)
      for (int c = 0; c < to.cols; ++c) out.push_back(v[static_cast<size_t>(r * from.cols + c)]);
    return out;
  }
  return std::vector<float>(v.begin(), v.begin() + static_cast<long>(n < v.size() ? n : v.size()));
}

float Convert(float v, EFxBase base) {
  if (base == EFxBase::Bool) return v != 0 ? 1.0f : 0.0f;
  if (base == EFxBase::Int) return static_cast<float>(SatInt(v));
  return v;
}

bool Eval(const FxExpr &e, std::vector<float> &out, int depth, const FxParameterValues *parameter) {
  if (depth > MaxDepth) return false;
  std::vector<float> a, b;
  switch (e.kind) {
    case EFxExpr::Literal:
      if (e.type.base == EFxBase::String) return false;
      if (e.type.base == EFxBase::Bool) out = {e.text == "true" ? 1.0f : 0.0f};
      else if (e.type.base == EFxBase::Int) out = {static_cast<float>(strtol(e.text.c_str(), nullptr, 0))};
      else out = {strtof(e.text.c_str(), nullptr)};
      return true;
    case EFxExpr::Name:
      if (parameter && e.var && e.var->isGlobal && !e.var->isStatic && !e.var->isConst) {
        const std::vector<float> *value = (*parameter)(*e.var);
        if (value) out = *value;
        return value != nullptr;
      }
      return e.var && e.var->init && (e.var->isConst || e.var->isStatic || e.var->isGlobal) &&
             Eval(*e.var->init, out, depth + 1, parameter);
    case EFxExpr::Unary:
      if (!Eval(*e.args[0], out, depth + 1, parameter)) return false;
      for (float &v : out) v = e.text == "-" ? -v : e.text == "!" ? (v == 0 ? 1.0f : 0.0f) : v;
      return e.text == "-" || e.text == "+" || e.text == "!";
    case EFxExpr::Cast:
      if (!Eval(*e.args[0], a, depth + 1, parameter)) return false;
      out = Reshape(a, e.args[0]->type, e.type);
      for (float &v : out) v = Convert(v, e.type.base);
      return true;
    case EFxExpr::Construct:
    case EFxExpr::InitList:
      out.clear();
      for (const auto &arg : e.args) {
        if (!Eval(*arg, a, depth + 1, parameter)) return false;
        out.insert(out.end(), a.begin(), a.end());
      }
      if (e.args.size() == 1 && e.type.IsNumeric()) out = Reshape(out, e.args[0]->type, e.type);
      return true;
    case EFxExpr::Binary:
      if (!Eval(*e.args[0], a, depth + 1, parameter) || !Eval(*e.args[1], b, depth + 1, parameter) || a.size() != b.size()) return false;
      out.resize(a.size());
      for (size_t i = 0; i < a.size(); ++i) {
        if (e.text == "+") out[i] = a[i] + b[i];
        else if (e.text == "-") out[i] = a[i] - b[i];
        else if (e.text == "*") out[i] = a[i] * b[i];
        else if (e.text == "/") out[i] = a[i] / b[i];
        else return false;
        out[i] = Convert(out[i], e.type.base);
      }
      return true;
    default:
      return false;
  }
}
}  // namespace

bool EvalConstant(const FxExpr &e, std::vector<float> &out) { return Eval(e, out, 0, nullptr); }

bool EvalConstant(const FxExpr &e, std::vector<float> &out, const FxParameterValues &parameter) {
  return Eval(e, out, 0, &parameter);
}
