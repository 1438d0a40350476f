#include "expr/FunctionList.h"

#include "expr/Exception.h"
#include "expr/FunctionNode.h"

namespace ExprEval {

void FunctionList::Add(FunctionFactory *factory) {
  std::unique_ptr<FunctionFactory> owned(factory);
  if (!owned) throw NullPointerException("FunctionList::Add");
  std::string name = owned->GetName();
  for (const auto &listed : m_Factories)
    if (listed->GetName() == name) throw AlreadyExistsException(name);
  m_Factories.push_back(std::move(owned));
}

FunctionNode *FunctionList::Create(const std::string &name, Expression *expression) {
  if (!expression) throw NullPointerException("FunctionList::Create");
  for (const auto &factory : m_Factories) {
    if (factory->GetName() != name) continue;
    FunctionNode *node = factory->DoCreate(expression);
    if (node) node->SetFactory(factory.get());
    return node;
  }
  return nullptr;
}

}  // namespace ExprEval

#include "expr/BuiltinFunctions.h"

namespace ExprEval {

void FunctionList::AddDefaultFunctions() {
  Add(new abs_FunctionFactory);
  Add(new mod_FunctionFactory);
  Add(new ipart_FunctionFactory);
  Add(new fpart_FunctionFactory);
  Add(new min_FunctionFactory);
  Add(new max_FunctionFactory);
  Add(new sqrt_FunctionFactory);
  Add(new sin_FunctionFactory);
  Add(new cos_FunctionFactory);
  Add(new tan_FunctionFactory);
  Add(new sinh_FunctionFactory);
  Add(new cosh_FunctionFactory);
  Add(new tanh_FunctionFactory);
  Add(new asin_FunctionFactory);
  Add(new acos_FunctionFactory);
  Add(new atan_FunctionFactory);
  Add(new atan2_FunctionFactory);
  Add(new log_FunctionFactory);
  Add(new ln_FunctionFactory);
  Add(new exp_FunctionFactory);
  Add(new logn_FunctionFactory);
  Add(new ceil_FunctionFactory);
  Add(new floor_FunctionFactory);
  Add(new deg_FunctionFactory);
  Add(new rad_FunctionFactory);
  Add(new rect2pol_FunctionFactory);
  Add(new pol2rect_FunctionFactory);
  Add(new if_FunctionFactory);
  Add(new select_FunctionFactory);
  Add(new equal_FunctionFactory);
  Add(new above_FunctionFactory);
  Add(new below_FunctionFactory);
  Add(new clip_FunctionFactory);
  Add(new clamp_FunctionFactory);
  Add(new rescale_FunctionFactory);
  Add(new poly_FunctionFactory);
  Add(new and_FunctionFactory);
  Add(new or_FunctionFactory);
  Add(new not_FunctionFactory);
}

}  // namespace ExprEval
