#pragma once
// One parsed text with the lists it reads its names from, and the abort
// countdown that lets a host stop a runaway evaluation.

#include "expr/Exception.h"
#include "expr/Node.h"
#include "expr/NodeArena.h"

#include <string>

namespace ExprEval {

class FunctionList;
class ValueList;

class Expression {
 public:
  static constexpr unsigned kDefaultAbortCount = 200000;

  Expression() = default;
  Expression(const Expression &) = delete;
  Expression &operator=(const Expression &) = delete;
  virtual ~Expression();

  // Called each time the countdown runs out; true stops the evaluation with
  // AbortException.
  virtual bool ShouldAbort() { return false; }

  // Neither list is owned; either may be null.
  void SetValueList(ValueList *list) { m_ValueList = list; }
  ValueList *GetValueList() const { return m_ValueList; }
  void SetFunctionList(FunctionList *list) { m_FunctionList = list; }
  FunctionList *GetFunctionList() const { return m_FunctionList; }

  // Replaces the tree by that of text. On an exception the tree stays empty.
  void Parse(const std::string &text);
  bool IsEmpty() const { return m_Root == nullptr; }
  // Deletes the tree.
  void Clear();

  double Evaluate() {
    if (!m_Root) throw EmptyExpressionException();
    TestAbort();
    return m_Root->Evaluate();
  }

  // Counts one node visit: when the countdown has run out it starts again
  // from the reset value and asks ShouldAbort.
  void TestAbort() {
    if (m_AbortCount == 0)
      AbortCountdownReached();
    else
      --m_AbortCount;
  }
  void SetAbortCount(unsigned countdown, unsigned resetValue) {
    m_AbortCount = countdown;
    m_AbortResetCount = resetValue;
  }

  // True when every node visit goes through TestAbort. Only a class that
  // overrides ShouldAbort can observe the countdown, so a plain Expression
  // counts only whole evaluations, and its parser folds constants and
  // flattens arithmetic, which changes how many nodes there are to visit.
  bool CountsVisits() const { return m_CountVisits; }

  void *AllocateNodeMemory(size_t size, size_t align) { return m_Arena.Allocate(size, align); }

 private:
  void AbortCountdownReached();

  ValueList *m_ValueList = nullptr;
  FunctionList *m_FunctionList = nullptr;
  Node *m_Root = nullptr;
  unsigned m_AbortCount = kDefaultAbortCount;
  unsigned m_AbortResetCount = kDefaultAbortCount;
  bool m_CountVisits = true;
  NodeArena m_Arena;
};

}  // namespace ExprEval
