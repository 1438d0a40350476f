#pragma once
// Every failure of the expression language is one of these. The type code
// selects the message that CExprEvaluator logs; only "not found" and "already
// exists" print the character span.

#include <exception>
#include <string>

namespace ExprEval {

class Exception : public std::exception {
 public:
  enum Type {
    Generic = 1,
    NotFound = 2,
    AlreadyExists = 3,
    NullPointer = 4,
    Math = 5,
    DivideByZero = 6,
    NoValueList = 7,
    NoFunctionList = 8,
    Abort = 9,
    EmptyExpression = 10,
    UnknownToken = 11,
    InvalidArgumentCount = 12,
    ConstantAssign = 13,
    ConstantReference = 14,
    Syntax = 15,
    UnmatchedParenthesis = 16,
    // Not one of the language's own failures: a text nested or chained too
    // deeply to parse or evaluate without risking the stack.
    TooComplex = 17,
  };

  explicit Exception(std::string name = {}) : Exception(Generic, std::move(name)) {}

  int GetType() const { return m_Type; }
  // A variable, a function or a method, depending on the class.
  const std::string &GetName() const { return m_Name; }
  // Character span in the text, both -1 until the parser sets them.
  long GetStart() const { return m_Start; }
  long GetEnd() const { return m_End; }
  void SetStart(long start) { m_Start = start; }
  void SetEnd(long end) { m_End = end; }
  void SetSpan(long start, long end) {
    m_Start = start;
    m_End = end;
  }

  // The text that the log gets.
  std::string GetMessage() const;
  const char *what() const noexcept override;

 protected:
  Exception(int type, std::string name) : m_Type(type), m_Name(std::move(name)) {}

 private:
  int m_Type;
  std::string m_Name;
  long m_Start = -1;
  long m_End = -1;
  mutable std::string m_What;
};

#define VELMOR_EXPR_EXCEPTION(CLASS, TYPE)                                       \
  class CLASS : public Exception {                                               \
   public:                                                                       \
    explicit CLASS(std::string name = {}) : Exception(TYPE, std::move(name)) {} \
  }

VELMOR_EXPR_EXCEPTION(NotFoundException, NotFound);
VELMOR_EXPR_EXCEPTION(AlreadyExistsException, AlreadyExists);
VELMOR_EXPR_EXCEPTION(NullPointerException, NullPointer);
VELMOR_EXPR_EXCEPTION(MathException, Math);
VELMOR_EXPR_EXCEPTION(DivideByZeroException, DivideByZero);
VELMOR_EXPR_EXCEPTION(NoValueListException, NoValueList);
VELMOR_EXPR_EXCEPTION(NoFunctionListException, NoFunctionList);
VELMOR_EXPR_EXCEPTION(AbortException, Abort);
VELMOR_EXPR_EXCEPTION(EmptyExpressionException, EmptyExpression);
VELMOR_EXPR_EXCEPTION(UnknownTokenException, UnknownToken);
VELMOR_EXPR_EXCEPTION(InvalidArgumentCountException, InvalidArgumentCount);
VELMOR_EXPR_EXCEPTION(ConstantAssignException, ConstantAssign);
VELMOR_EXPR_EXCEPTION(ConstantReferenceException, ConstantReference);
VELMOR_EXPR_EXCEPTION(SyntaxException, Syntax);
VELMOR_EXPR_EXCEPTION(UnmatchedParenthesisException, UnmatchedParenthesis);
VELMOR_EXPR_EXCEPTION(TooComplexException, TooComplex);

#undef VELMOR_EXPR_EXCEPTION

}  // namespace ExprEval
