// Statements and expressions of function bodies, with C's precedences.
#include "fx/FxParser.h"

namespace {
// Binary operators from loosest to tightest.
const char *const kLevels[][4] = {{"||"}, {"&&"}, {"|"}, {"^"}, {"&"}, {"==", "!="}, {"<", ">", "<=", ">="},
                                  {"<<", ">>"}, {"+", "-"}, {"*", "/", "%"}};
constexpr int kLevelCount = 10;

bool IsAssignOp(const FxToken &t) {
  static const char *const ops[] = {"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>="};
  for (const char *op : ops)
    if (t.Is(op)) return true;
  return false;
}

// Counts nesting so that pathological input ends in an error, not a stack
// overflow.
class CNest {
 public:
  CNest(int &depth, int limit) : m_Depth(depth) { m_Over = ++m_Depth > limit; }
  ~CNest() { --m_Depth; }
  bool Over() const { return m_Over; }

 private:
  int &m_Depth;
  bool m_Over;
};
}  // namespace

bool CFxParser::StartsDecl() const {
  const FxToken &t = Peek();
  if (t.IsWord("const") || t.IsWord("static") || t.IsWord("uniform")) return true;
  return IsTypeName(t) && !Peek(1).Is("(");
}

FxStmtPtr CFxParser::Block() {
  auto b = std::make_unique<FxStmt>();
  b->kind = EFxStmt::Block;
  b->at = Peek().at;
  Expect("{");
  while (!Accept("}")) {
    if (Peek().kind == EFxTok::End) Fail("missing '}'");
    b->children.push_back(Statement());
  }
  return b;
}

FxStmtPtr CFxParser::LocalDecl() {
  auto s = std::make_unique<FxStmt>();
  s->kind = EFxStmt::Decl;
  s->at = Peek().at;
  FxVar q;
  Qualifiers(q);
  CFxType type = Type();
  do {
    auto v = std::make_unique<FxVar>();
    v->type = type;
    v->isConst = q.isConst;
    v->isStatic = q.isStatic;
    Declarator(*v, true);
    if (v->hasSamplerState) Fail("sampler_state is only allowed at file level");
    s->vars.push_back(std::move(v));
  } while (Accept(","));
  return s;
}

FxStmtPtr CFxParser::Statement() {
  CNest nest(m_Depth, MaxNesting);
  if (nest.Over()) Fail("statements nested too deeply");
  if (Peek().Is("{")) return Block();
  auto s = std::make_unique<FxStmt>();
  s->at = Peek().at;
  const FxToken &t = Peek();
  if (Accept(";")) {
    s->kind = EFxStmt::Empty;
  } else if (t.IsWord("if")) {
    Next();
    s->kind = EFxStmt::If;
    Expect("(");
    s->expr = Expression();
    Expect(")");
    s->children.push_back(Statement());
    if (Peek().IsWord("else")) {
      Next();
      s->children.push_back(Statement());
    }
  } else if (t.IsWord("for")) {
    Next();
    s->kind = EFxStmt::For;
    Expect("(");
    if (Accept(";")) {
      s->children.push_back(nullptr);
    } else {
      FxStmtPtr init;
      if (StartsDecl()) {
        init = LocalDecl();
      } else {
        init = std::make_unique<FxStmt>();
        init->kind = EFxStmt::Expr;
        init->at = Peek().at;
        init->expr = Expression();
      }
      s->children.push_back(std::move(init));
      Expect(";");
    }
    if (!Peek().Is(";")) s->expr = Expression();
    Expect(";");
    if (!Peek().Is(")")) s->step = Expression();
    Expect(")");
    s->children.push_back(Statement());
  } else if (t.IsWord("while")) {
    Next();
    s->kind = EFxStmt::While;
    Expect("(");
    s->expr = Expression();
    Expect(")");
    s->children.push_back(Statement());
  } else if (t.IsWord("do")) {
    Next();
    s->kind = EFxStmt::Do;
    s->children.push_back(Statement());
    if (!Peek().IsWord("while")) Fail("expected 'while' after the body of 'do'");
    Next();
    Expect("(");
    s->expr = Expression();
    Expect(")");
    Expect(";");
  } else if (t.IsWord("return")) {
    Next();
    s->kind = EFxStmt::Return;
    if (!Peek().Is(";")) s->expr = Expression();
    Expect(";");
  } else if (t.IsWord("break") || t.IsWord("continue") || t.IsWord("discard")) {
    s->kind = t.IsWord("break") ? EFxStmt::Break : t.IsWord("continue") ? EFxStmt::Continue : EFxStmt::Discard;
    Next();
    Expect(";");
  } else if (t.IsWord("switch")) {
    Next();
    s->kind = EFxStmt::Switch;
    Expect("(");
    s->expr = Expression();
    Expect(")");
    Expect("{");
    while (!Accept("}")) {
      if (Peek().kind == EFxTok::End) Fail("missing '}' at the end of switch");
      if (Peek().IsWord("case") || Peek().IsWord("default")) {
        // Consecutive labels share one group.
        auto group = std::make_unique<FxStmt>();
        group->kind = EFxStmt::Case;
        group->at = Peek().at;
        while (Peek().IsWord("case") || Peek().IsWord("default")) {
          if (Next().IsWord("case")) group->labels.push_back(Ternary());
          else group->isDefault = true;
          Expect(":");
        }
        s->children.push_back(std::move(group));
      } else {
        if (s->children.empty()) Fail("expected 'case' or 'default' in switch, found '" + Peek().text + "'");
        s->children.back()->children.push_back(Statement());
      }
    }
  } else if (StartsDecl()) {
    s = LocalDecl();
    Expect(";");
  } else {
    s->kind = EFxStmt::Expr;
    s->expr = Expression();
    Expect(";");
  }
  return s;
}

FxExprPtr CFxParser::Expression() {
  FxExprPtr e = Assignment();
  while (Peek().Is(",")) {
    FxLocation at = Next().at;
    auto seq = Make(EFxExpr::Binary, at, ",");
    seq->args.push_back(std::move(e));
    seq->args.push_back(Assignment());
    e = std::move(seq);
  }
  return e;
}

FxExprPtr CFxParser::Assignment() {
  CNest nest(m_Depth, MaxNesting);
  if (nest.Over()) Fail("expression nested too deeply");
  FxExprPtr lhs = Ternary();
  if (!IsAssignOp(Peek())) return lhs;
  const FxToken &op = Next();
  auto a = Make(EFxExpr::Assign, op.at, op.text);
  a->args.push_back(std::move(lhs));
  a->args.push_back(Assignment());
  return a;
}

FxExprPtr CFxParser::Ternary() {
  FxExprPtr c = Binary(0);
  if (!Peek().Is("?")) return c;
  auto t = Make(EFxExpr::Ternary, Next().at);
  t->args.push_back(std::move(c));
  t->args.push_back(Assignment());
  Expect(":");
  t->args.push_back(Assignment());
  return t;
}

FxExprPtr CFxParser::Binary(int level) {
  if (level == kLevelCount) return Unary();
  FxExprPtr lhs = Binary(level + 1);
  for (;;) {
    const FxToken &t = Peek();
    bool match = false;
    for (const char *op : kLevels[level]) match = match || (op && t.Is(op));
    if (!match) return lhs;
    auto b = Make(EFxExpr::Binary, t.at, Next().text);
    b->args.push_back(std::move(lhs));
    b->args.push_back(Binary(level + 1));
    lhs = std::move(b);
  }
}

FxExprPtr CFxParser::Unary() {
  CNest nest(m_Depth, MaxNesting);
  if (nest.Over()) Fail("expression nested too deeply");
  const FxToken &t = Peek();
  if (t.Is("-") || t.Is("+") || t.Is("!") || t.Is("~") || t.Is("++") || t.Is("--")) {
    auto u = Make(EFxExpr::Unary, t.at, Next().text);
    u->args.push_back(Unary());
    return u;
  }
  // (type)expr; `(float3)(v)` too, but `(a)` is a parenthesised name
  if (t.Is("(") && IsTypeName(Peek(1)) && (Peek(2).Is(")") || Peek(2).Is("["))) {
    FxLocation at = Next().at;
    auto c = Make(EFxExpr::Cast, at);
    c->typeArg = Type();
    if (Accept("[")) {
      const FxToken &n = Next();
      if (n.kind != EFxTok::Int) Fail("array size must be a whole number");
      c->typeArg.arraySize = std::stoi(n.text);
      Expect("]");
    }
    Expect(")");
    c->args.push_back(Unary());
    return c;
  }
  return Postfix(Primary());
}

FxExprPtr CFxParser::Postfix(FxExprPtr e) {
  for (;;) {
    const FxToken &t = Peek();
    if (t.Is(".")) {
      FxLocation at = Next().at;
      auto m = Make(EFxExpr::Member, at, ExpectIdentifier("member name"));
      m->args.push_back(std::move(e));
      if (Peek().Is("(")) {  // a method call: the object is the first argument
        m->kind = EFxExpr::Call;
        m->method = true;
        Arguments(*m);
      }
      e = std::move(m);
    } else if (t.Is("[")) {
      auto i = Make(EFxExpr::Index, Next().at);
      i->args.push_back(std::move(e));
      i->args.push_back(Expression());
      Expect("]");
      e = std::move(i);
    } else if (t.Is("++") || t.Is("--")) {
      auto p = Make(EFxExpr::Postfix, t.at, Next().text);
      p->args.push_back(std::move(e));
      e = std::move(p);
    } else {
      return e;
    }
  }
}

FxExprPtr CFxParser::Primary() {
  const FxToken &t = Peek();
  FxLocation at = t.at;
  if (t.kind == EFxTok::Int || t.kind == EFxTok::Float) {
    auto e = Make(EFxExpr::Literal, at, Next().text);
    e->type = CFxType::Scalar(t.kind == EFxTok::Int ? EFxBase::Int : EFxBase::Float);
    return e;
  }
  if (t.kind == EFxTok::String) {
    auto e = Make(EFxExpr::Literal, at, Next().text);
    e->type = CFxType::Scalar(EFxBase::String);
    return e;
  }
  if (t.IsWord("true") || t.IsWord("false")) {
    auto e = Make(EFxExpr::Literal, at, Next().text);
    e->type = CFxType::Scalar(EFxBase::Bool);
    return e;
  }
  if (Accept("(")) {
    FxExprPtr e = Expression();
    Expect(")");
    return e;
  }
  if (t.IsWord("compile")) return CompileProgram();  // a vertexshader variable's value
  if (IsTypeName(t) && Peek(1).Is("(")) {
    auto c = Make(EFxExpr::Construct, at);
    c->typeArg = Type();
    Arguments(*c);
    return c;
  }
  if (t.kind == EFxTok::Identifier) {
    std::string name = Next().text;
    if (Peek().Is("(")) {
      auto c = Make(EFxExpr::Call, at, name);
      Arguments(*c);
      return c;
    }
    return Make(EFxExpr::Name, at, name);
  }
  Fail(t.kind == EFxTok::End ? "unexpected end of text" : "unexpected '" + t.text + "'");
}

void CFxParser::Arguments(FxExpr &call) {
  Expect("(");
  if (Accept(")")) return;
  do call.args.push_back(Assignment());
  while (Accept(","));
  Expect(")");
}

// An initialiser: an expression, or `{a, b, {c, d}}`.
FxExprPtr CFxParser::Initializer() {
  if (!Peek().Is("{")) return Assignment();
  CNest nest(m_Depth, MaxNesting);
  if (nest.Over()) Fail("initialiser nested too deeply");
  auto list = Make(EFxExpr::InitList, Next().at);
  while (!Accept("}")) {
    list->args.push_back(Initializer());
    if (!Accept(",")) {
      Expect("}");
      break;
    }
  }
  return list;
}
