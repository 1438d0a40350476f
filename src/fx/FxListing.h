#pragma once
// A readable listing of an effect: techniques, passes with their states,
// parameters with type, semantic, default, annotations and sampler states.

#include <string>

class CFxEffect;
struct CFxAnnotationValue;
struct FxExpr;

std::string DescribeEffect(const CFxEffect &effect);
std::string AnnotationText(const CFxAnnotationValue &a);
// Cg-like text of a constant expression (compile arguments, values).
std::string ExprText(const FxExpr &e);
