// Value and function lists, and the exceptions with their codes and
// messages.

#include "ExprTestSupport.h"
#include "expr/BuiltinFunctions.h"
#include "expr/FunctionNode.h"
#include "expr/Parser.h"

namespace {

using namespace ExprEval;

// The name carried by the NullPointerException or AlreadyExistsException
// that action throws.
template <class E, class Action>
std::string NameThrown(Action action) {
  try {
    action();
  } catch (const E &e) {
    return e.GetName();
  }
  return "nothing thrown";
}

TEST(ValueList, EntriesDefaultsAndConstants) {
  ValueList list;
  list.AddDefaultValues();
  EXPECT_EQ(list.GetItem(0).GetName(), "E");
  EXPECT_EQ(list.GetItem(1).GetName(), "PI");
  EXPECT_TRUE(list.IsConstant("PI"));
  EXPECT_FALSE(list.IsConstant("nothing"));
  list.Add("a", 2.0, false);
  double external = 0.0;
  list.AddAddress("b", &external, 5.0);
  EXPECT_EQ(external, 5.0);  // written at once
  EXPECT_EQ(list.GetAddress("b"), &external);
  EXPECT_EQ(list.GetAddress("c"), nullptr);
  double *a = list.GetAddress("a");
  for (int i = 0; i < 1000; ++i) list.Add("v" + std::to_string(i), i, false);
  EXPECT_EQ(list.GetAddress("a"), a);  // entries never move
  *a = 7.0;
  external = 9.0;
  list.Reset();
  EXPECT_EQ(*a, 2.0);
  EXPECT_EQ(external, 5.0);
  EXPECT_EQ(*list.GetAddress("PI"), 3.141592653589793);
}

TEST(ValueList, Refusals) {
  ValueList list;
  list.Add("a", 0.0, false);
  double d;
  EXPECT_EQ(NameThrown<AlreadyExistsException>([&] { list.Add("a", 1.0, true); }), "a");
  EXPECT_EQ(NameThrown<AlreadyExistsException>([&] { list.AddAddress("a", &d, 0.0); }), "a");
  EXPECT_EQ(NameThrown<NullPointerException>([&] { list.AddAddress("n", nullptr, 0.0); }), "ValueList::AddAddress");
  EXPECT_EQ(NameThrown<NullPointerException>([] { ValueListItem("n", static_cast<double *>(nullptr), 0.0); }),
            "ValueListItem::ValueListItem");
}

// Each function's results are pinned by name in the other expression tests.
TEST(FunctionList, CreationAndRefusals) {
  FunctionList list;
  list.AddDefaultFunctions();
  AddProgramFunctions(list);
  EXPECT_EQ(list.GetCount(), 55u);
  Expression expression;
  NodePtr node(list.Create("max", &expression));
  ASSERT_NE(node, nullptr);
  EXPECT_EQ(static_cast<FunctionNode *>(node.get())->GetFactory()->GetName(), "max");
  EXPECT_EQ(list.Create("Max", &expression), nullptr);
  EXPECT_EQ(NameThrown<NullPointerException>([&] { list.Create("max", nullptr); }), "FunctionList::Create");
  EXPECT_EQ(NameThrown<NullPointerException>([&] { list.Add(nullptr); }), "FunctionList::Add");
  // Owned, and so freed, even when refused.
  EXPECT_EQ(NameThrown<AlreadyExistsException>([&] { list.Add(new abs_FunctionFactory); }), "abs");
}

TEST(Exceptions, CodesAndMessages) {
  struct Expected {
    const Exception &e;
    int code;
    const char *message;
  };
  const Expected kAll[] = {
      {Exception(), 1, "Expression error"},
      {NotFoundException("x"), 2, "Variable not found at -1 -1"},
      {AlreadyExistsException("x"), 3, "Variable already exists at -1 -1"},
      {NullPointerException("m"), 4, "Null pointer"},
      {MathException("sqrt"), 5, "Math exception"},
      {DivideByZeroException(), 6, "Divide by zero"},
      {NoValueListException(), 7, "Expression error"},
      {NoFunctionListException(), 8, "Expression error"},
      {AbortException(), 9, "Expression aborted"},
      {EmptyExpressionException(), 10, "Empty Expression"},
      {UnknownTokenException(), 11, "Unknown token"},
      {InvalidArgumentCountException("f"), 12, "Invalid number of arguments"},
      {ConstantAssignException("PI"), 13, "Trying to assign value to constant"},
      {ConstantReferenceException("PI"), 14, "Expression error"},
      {SyntaxException(), 15, "Syntax Error"},
      {UnmatchedParenthesisException(), 16, "Unmatched Parenthesis"}};
  for (const Expected &x : kAll) {
    EXPECT_EQ(x.e.GetType(), x.code);
    EXPECT_STREQ(x.e.what(), x.message) << x.code;
    EXPECT_EQ(x.e.GetStart(), -1);
  }
  AlreadyExistsException e("x");
  e.SetSpan(3, 9);
  EXPECT_STREQ(e.what(), "Variable already exists at 3 9");
}

TEST(Exceptions, MissingListsAndNullPointers) {
  Expression bare;
  auto failureOf = [&bare](const char *text) {
    try {
      bare.Parse(text);
      bare.Evaluate();
    } catch (const Exception &e) {
      return e.GetType();
    }
    return 0;
  };
  EXPECT_EQ(failureOf("1 + 2"), 0);
  EXPECT_EQ(failureOf("x"), Exception::NoValueList);
  EXPECT_EQ(failureOf("x = 1"), Exception::NoValueList);
  EXPECT_EQ(failureOf("sin(1)"), Exception::NoFunctionList);
  FunctionList functions;
  functions.AddDefaultFunctions();
  bare.SetFunctionList(&functions);
  EXPECT_EQ(failureOf("rect2pol(1, 2, &r, &a)"), Exception::NoValueList);
  bare.Clear();
  EXPECT_THROW(bare.Evaluate(), EmptyExpressionException);
  EXPECT_EQ(NameThrown<NullPointerException>([] { Parser parser(nullptr); }), "Parser::Parser");
  EXPECT_EQ(NameThrown<NullPointerException>([] { NodePtr n(new (static_cast<Expression *>(nullptr)) ValueNode(nullptr)); }),
            "Node::Node");
}

}  // namespace
