#pragma once
// The functions that expressions may call, one factory per name.

#include "expr/FunctionFactory.h"

#include <memory>
#include <string>
#include <vector>

namespace ExprEval {

class Expression;
class FunctionNode;

class FunctionList {
 public:
  FunctionList() = default;
  FunctionList(const FunctionList &) = delete;
  FunctionList &operator=(const FunctionList &) = delete;

  // Takes ownership, also when it throws: NullPointerException for null,
  // AlreadyExistsException for a name already listed.
  void Add(FunctionFactory *factory);
  // A new node for the function called name, or null if there is none.
  FunctionNode *Create(const std::string &name, Expression *expression);
  // The 39 standard functions.
  void AddDefaultFunctions();
  void Clear() { m_Factories.clear(); }

  size_t GetCount() const { return m_Factories.size(); }
  FunctionFactory &GetFactory(size_t index) { return *m_Factories[index]; }

 private:
  std::vector<std::unique_ptr<FunctionFactory>> m_Factories;
};

}  // namespace ExprEval
