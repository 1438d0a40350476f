#include "expr/ExprEvaluator.h"

#include "core/Log.h"
#include "expr/ProgramFunctions.h"

CExprEvaluator::CExprEvaluator() {
  m_Expression.SetAbortCount(ExprEval::Expression::kDefaultAbortCount, ExprEval::Expression::kDefaultAbortCount);
  SeedRandomState(m_RandomState, StartSeed());
  m_ValueList.AddDefaultValues();
  m_FunctionList.AddDefaultFunctions();
  ExprEval::AddProgramFunctions(m_FunctionList);
}

void CExprEvaluator::Attach() {
  m_Expression.SetValueList(&m_ValueList);
  m_Expression.SetFunctionList(&m_FunctionList);
}

bool CExprEvaluator::Compile(const std::string &text) {
  m_Compiled = false;
  if (text.empty()) return false;
  try {
    m_ValueList.Reset();
    m_Expression.Parse(text);
    m_Compiled = true;
  } catch (const ExprEval::Exception &e) {
    Log("%s", e.what());
  }
  return m_Compiled;
}

double CExprEvaluator::Evaluate() {
  if (!m_Compiled) return 0.0;
  ExprEval::SetCurrentRandomState(&m_RandomState);
  try {
    return m_Expression.Evaluate();
  } catch (const ExprEval::Exception &e) {
    m_Compiled = false;
    Log("%s", e.what());
    return 0.0;
  }
}
