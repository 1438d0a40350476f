// Value and function lists, and the exceptions with their codes and
// messages.

#include "ExprTestSupport.h"
#include "expr/BuiltinFunctions.h"
#include "expr/FunctionNode.h"
#include "expr/Parser.h"


namespace {

using namespace ExprEval;

TEST(ValueList, EntriesWithOwnStorageOrAnAddress) {
  ValueList list;
  list.Add("a", 2.0, false);
  double external = 0.0;
  list.AddAddress("b", &external, 5.0);
  EXPECT_EQ(external, 5.0);  // written at once
  EXPECT_EQ(*list.GetAddress("a"), 2.0);
  EXPECT_EQ(list.GetAddress("b"), &external);
  EXPECT_EQ(list.GetAddress("c"), nullptr);
  *list.GetAddress("a") = 7.0;
  external = 9.0;
  list.Reset();
  EXPECT_EQ(*list.GetAddress("a"), 2.0);
  EXPECT_EQ(external, 5.0);
}

TEST(ValueList, ConstantsAndDefaults) {
  ValueList list;
  list.AddDefaultValues();
  ASSERT_EQ(list.GetCount(), 2u);
  EXPECT_EQ(list.GetItem(0).GetName(), "E");
  EXPECT_EQ(list.GetItem(1).GetName(), "PI");
  EXPECT_TRUE(list.IsConstant("E"));
  EXPECT_TRUE(list.IsConstant("PI"));
  EXPECT_FALSE(list.IsConstant("nothing"));
  EXPECT_EQ(*list.GetAddress("PI"), 3.141592653589793);
}

TEST(ValueList, AddressesStayValidAsTheListGrows) {
  ValueList list;
  list.Add("first", 1.0, false);
  double *first = list.GetAddress("first");
  for (int i = 0; i < 1000; ++i) list.Add("v" + std::to_string(i), i, false);
  EXPECT_EQ(list.GetAddress("first"), first);
  EXPECT_EQ(*first, 1.0);
}

TEST(ValueList, Refusals) {
  ValueList list;
  list.Add("a", 0.0, false);
  try {
    list.Add("a", 1.0, true);
    FAIL();
  } catch (const AlreadyExistsException &e) {
    EXPECT_EQ(e.GetName(), "a");
    EXPECT_STREQ(e.what(), "Variable already exists at -1 -1");
  }
  double d;
  EXPECT_THROW(list.AddAddress("a", &d, 0.0), AlreadyExistsException);
  try {
    list.AddAddress("n", nullptr, 0.0);
    FAIL();
  } catch (const NullPointerException &e) {
    EXPECT_EQ(e.GetName(), "ValueList::AddAddress");
  }
  try {
    ValueListItem item("n", static_cast<double *>(nullptr), 0.0);
    FAIL();
  } catch (const NullPointerException &e) {
    EXPECT_EQ(e.GetName(), "ValueListItem::ValueListItem");
  }
}

TEST(FunctionList, CreatesNodesByExactName) {
  FunctionList list;
  list.AddDefaultFunctions();
  ASSERT_EQ(list.GetCount(), 39u);
  const char *kOrder[] = {"abs",  "mod",  "ipart", "fpart", "min",     "max",      "sqrt",     "sin",
                          "cos",  "tan",  "sinh",  "cosh",  "tanh",    "asin",     "acos",     "atan",
                          "atan2", "log", "ln",    "exp",   "logn",    "ceil",     "floor",    "deg",
                          "rad",  "rect2pol", "pol2rect", "if", "select", "equal", "above", "below",
                          "clip", "clamp", "rescale", "poly", "and", "or", "not"};
  for (size_t i = 0; i < 39; ++i) EXPECT_EQ(list.GetFactory(i).GetName(), kOrder[i]);
  Expression expression;
  NodePtr node(list.Create("max", &expression));
  ASSERT_NE(node, nullptr);
  auto *function = static_cast<FunctionNode *>(node.get());
  EXPECT_EQ(function->GetFactory(), &list.GetFactory(5));
  EXPECT_EQ(function->GetName(), "max");
  EXPECT_EQ(list.Create("Max", &expression), nullptr);
  try {
    list.Create("max", nullptr);
    FAIL();
  } catch (const NullPointerException &e) {
    EXPECT_EQ(e.GetName(), "FunctionList::Create");
  }
}

TEST(FunctionList, ProgramFunctionsFollowTheStandardOnes) {
  FunctionList list;
  list.AddDefaultFunctions();
  AddProgramFunctions(list);
  ASSERT_EQ(list.GetCount(), 55u);
  const char *kOrder[] = {"time",    "date",  "length", "beat",   "band",   "waveform", "smoothstep", "spectrum",
                          "srandom", "srand", "rand",   "random", "pow",    "noise1",   "noise2",     "noise3"};
  for (size_t i = 0; i < 16; ++i) EXPECT_EQ(list.GetFactory(39 + i).GetName(), kOrder[i]);
}

TEST(FunctionList, Refusals) {
  FunctionList list;
  list.AddDefaultFunctions();
  try {
    list.Add(nullptr);
    FAIL();
  } catch (const NullPointerException &e) {
    EXPECT_EQ(e.GetName(), "FunctionList::Add");
  }
  try {
    list.Add(new abs_FunctionFactory);  // owned (and freed) even when refused
    FAIL();
  } catch (const AlreadyExistsException &e) {
    EXPECT_EQ(e.GetName(), "abs");
  }
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
      {UnmatchedParenthesisException(), 16, "Unmatched Parenthesis"},
  };
  for (const Expected &x : kAll) {
    EXPECT_EQ(x.e.GetType(), x.code);
    EXPECT_STREQ(x.e.what(), x.message) << x.code;
    EXPECT_EQ(x.e.GetStart(), -1);
    EXPECT_NE(dynamic_cast<const std::exception *>(&x.e), nullptr);
  }
  NotFoundException e("x");
  e.SetStart(3);
  e.SetEnd(9);
  EXPECT_STREQ(e.what(), "Variable not found at 3 9");
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
  EXPECT_EQ(failureOf("sin(0)"), 0);
  bare.Clear();
  EXPECT_THROW(bare.Evaluate(), EmptyExpressionException);

  try {
    Parser parser(nullptr);
    FAIL();
  } catch (const NullPointerException &e) {
    EXPECT_EQ(e.GetName(), "Parser::Parser");
  }
  try {
    NodePtr node(new (static_cast<Expression *>(nullptr)) ValueNode(nullptr));
    FAIL();
  } catch (const NullPointerException &e) {
    EXPECT_EQ(e.GetName(), "Node::Node");
  }
}

}  // namespace
