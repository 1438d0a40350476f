// Value and function lists, and the exceptions' messages.

#include "ExprTestSupport.h"
#include "expr/BuiltinFunctions.h"
#include "expr/FunctionNode.h"

namespace {

using namespace ExprEval;

// The name carried by the AlreadyExistsException that action throws.
template <class Action>
std::string NameThrown(Action action) {
  try {
    action();
  } catch (const AlreadyExistsException &e) {
    return e.GetName();
  }
  return "nothing thrown";
}

TEST(ValueList, EntriesDefaultsConstantsAndRefusals) {
  ValueList list;
  list.AddDefaultValues();
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
  // A name is added once.
  EXPECT_EQ(NameThrown([&] { list.Add("a", 1.0, true); }), "a");
  EXPECT_EQ(NameThrown([&] { list.AddAddress("a", &external, 0.0); }), "a");
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
  // Owned, and so freed, even when refused.
  EXPECT_EQ(NameThrown([&] { list.Add(new abs_FunctionFactory); }), "abs");
}

// The other messages are pinned where the language raises them.
TEST(Exceptions, MessagesNothingElsePinsAndSpans) {
  EXPECT_STREQ(Exception().what(), "Expression error");
  EXPECT_STREQ(NullPointerException("m").what(), "Null pointer");
  EXPECT_STREQ(NoValueListException().what(), "Expression error");
  EXPECT_STREQ(NoFunctionListException().what(), "Expression error");
  AlreadyExistsException e("x");
  EXPECT_STREQ(e.what(), "Variable already exists at -1 -1");
  e.SetSpan(3, 9);
  EXPECT_STREQ(e.what(), "Variable already exists at 3 9");
}

TEST(Exceptions, MissingLists) {
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
  for (auto [text, type] : {std::pair{"1 + 2", 0}, {"x", Exception::NoValueList}, {"x = 1", Exception::NoValueList},
                            {"sin(1)", Exception::NoFunctionList}})
    EXPECT_EQ(failureOf(text), type) << text;
  FunctionList functions;
  functions.AddDefaultFunctions();
  bare.SetFunctionList(&functions);
  EXPECT_EQ(failureOf("rect2pol(1, 2, &r, &a)"), Exception::NoValueList);
  bare.Clear();
  EXPECT_THROW(bare.Evaluate(), EmptyExpressionException);
}

}  // namespace
