#include "fx/FxParser.h"

#include <cstring>

const FxStructDef *FxTranslationUnit::FindStruct(const std::string &name) const {
  for (const auto &s : structs)
    if (s->name == name) return s.get();
  return nullptr;
}

CFxParser::CFxParser(const std::vector<FxToken> &tokens, CFxDiagnostics &diag) : m_Tokens(tokens), m_Diag(diag) {
  FxToken end;
  end.kind = EFxTok::End;
  end.at = m_Tokens.empty() ? FxLocation{} : m_Tokens.back().at;
  m_Tokens.push_back(end);
}

void CFxParser::Parse(FxTranslationUnit &unit) {
  m_Unit = &unit;
  while (Peek().kind != EFxTok::End) {
    size_t start = m_Pos;
    try {
      TopLevel();
    } catch (const Error &) {
      m_Depth = 0;
      if (m_Pos == start) Next();
      Synchronize();
    }
  }
}

// Skips to just after the end of the broken declaration: a ';' or a '}'
// that closes back to the top level.
void CFxParser::Synchronize() {
  int level = 0;
  while (Peek().kind != EFxTok::End) {
    const FxToken &t = Next();
    if (t.Is("{")) ++level;
    if (t.Is("}") && --level <= 0) {
      Accept(";");
      return;
    }
    if (t.Is(";") && level <= 0) return;
  }
}

void CFxParser::TopLevel() {
  if (Accept(";")) return;
  if (Peek().IsWord("struct") || Peek().IsWord("interface")) return StructDecl();
  if (Peek().IsWord("technique")) return TechniqueDecl();
  if (Peek().IsWord("typedef")) Fail("typedef is not supported");
  if (Peek().IsWord("cbuffer") || Peek().IsWord("tbuffer"))
    Fail("constant buffers ('" + Peek().text + "') cannot be translated to GLSL 1.20");
  auto v = std::make_unique<FxVar>();
  Qualifiers(*v);
  v->type = Type();
  if (Peek(1).Is("(")) {
    FxToken name = Next();
    if (name.kind != EFxTok::Identifier) Fail("expected a name, found '" + name.text + "'");
    return FunctionRest(v->type, name);
  }
  // Qualifiers and type are shared by every declarator of the line.
  const CFxType type = v->type;
  const bool isStatic = v->isStatic, isConst = v->isConst, isUniform = v->isUniform, isExtern = v->isExtern;
  for (;;) {
    Declarator(*v, true);
    v->isGlobal = true;
    m_Unit->globals.push_back(std::move(v));
    if (!Accept(",")) break;
    v = std::make_unique<FxVar>();
    v->type = type;
    v->isStatic = isStatic;
    v->isConst = isConst;
    v->isUniform = isUniform;
    v->isExtern = isExtern;
  }
  Expect(";");
}

// `struct S [: Interface] { members and methods };` or `interface I { prototypes };`
void CFxParser::StructDecl() {
  auto s = std::make_unique<FxStructDef>();
  s->isInterface = Peek().IsWord("interface");
  s->at = Next().at;
  s->name = ExpectIdentifier("struct name");
  if (m_Unit->FindStruct(s->name)) Fail("struct " + s->name + " is defined twice");
  if (Accept(":")) {
    std::string base = ExpectIdentifier("interface name");
    s->implements = m_Unit->FindStruct(base);
    if (!s->implements || !s->implements->isInterface) Fail("'" + base + "' is not an interface");
  }
  Expect("{");
  while (!Accept("}")) {
    if (Peek().kind == EFxTok::End) Fail("missing '}' at the end of struct " + s->name);
    auto m = std::make_unique<FxVar>();
    Qualifiers(*m);
    m->type = Type();
    if (Peek(1).Is("(")) {
      FxToken name = Next();
      if (name.kind != EFxTok::Identifier) Fail("expected a method name, found '" + name.text + "'");
      FunctionRest(m->type, name, s.get());
      continue;
    }
    if (s->isInterface) Fail("an interface holds only methods");
    CFxType type = m->type;
    for (;;) {
      Declarator(*m, false);
      s->members.push_back(std::move(m));
      if (!Accept(",")) break;
      m = std::make_unique<FxVar>();
      m->type = type;
    }
    Expect(";");
  }
  Accept(";");
  m_Unit->structs.push_back(std::move(s));
}

void CFxParser::TechniqueDecl() {
  FxTechniqueDecl t;
  t.at = Next().at;
  if (Peek().kind == EFxTok::Identifier) t.name = Next().text;
  Annotations(t.annotations);
  Expect("{");
  while (!Accept("}")) {
    if (!Peek().IsWord("pass")) Fail("expected 'pass' in technique " + t.name + ", found '" + Peek().text + "'");
    t.passes.push_back(PassDecl());
  }
  Accept(";");
  m_Unit->techniques.push_back(std::move(t));
}

FxPassDecl CFxParser::PassDecl() {
  FxPassDecl p;
  p.at = Next().at;
  if (Peek().kind == EFxTok::Identifier) p.name = Next().text;
  Annotations(p.annotations);
  StateBlock(p.states);
  Accept(";");
  return p;
}

// `{ Name = value; Name[i] = value; ... }`
void CFxParser::StateBlock(std::vector<FxStateAssignment> &out) {
  Expect("{");
  while (!Accept("}")) {
    FxStateAssignment s;
    s.at = Peek().at;
    s.name = ExpectIdentifier("state name");
    if (Accept("[")) {
      const FxToken &i = Next();
      if (i.kind != EFxTok::Int) Fail("expected a state index");
      s.index = std::stoi(i.text);
      Expect("]");
    }
    Expect("=");
    s.value = StateValue();
    Expect(";");
    out.push_back(std::move(s));
  }
}

// `compile profile Entry(args)`
FxExprPtr CFxParser::CompileProgram() {
  FxLocation at = Next().at;
  auto c = Make(EFxExpr::Compile, at, ExpectIdentifier("profile"));
  auto call = Make(EFxExpr::Call, Peek().at, ExpectIdentifier("entry function"));
  Arguments(*call);
  c->args.push_back(std::move(call));
  return c;
}

FxExprPtr CFxParser::StateValue() {
  if (Peek().IsWord("compile")) return CompileProgram();
  if (Accept("<")) {
    auto e = Make(EFxExpr::Name, Peek().at, ExpectIdentifier("texture name"));
    ExpectCloseAngle();
    return e;
  }
  if (Peek().Is("{")) return Initializer();
  return Ternary();  // no assignment: `=` never appears in a state value
}

void CFxParser::Annotations(std::vector<FxAnnotation> &out) {
  if (!Accept("<")) return;
  while (!Peek().Is(">") && !Peek().Is(">>")) {
    FxAnnotation a;
    a.at = Peek().at;
    a.type = Type();
    a.name = ExpectIdentifier("annotation name");
    if (Accept(";")) {  // no value: the type's empty value
      out.push_back(std::move(a));
      continue;
    }
    Expect("=");
    a.value = Peek().Is("{") ? Initializer() : Unary();
    Expect(";");
    out.push_back(std::move(a));
  }
  ExpectCloseAngle();
}

void CFxParser::Qualifiers(FxVar &v) {
  for (;;) {
    const FxToken &t = Peek();
    if (t.IsWord("static")) v.isStatic = true;
    else if (t.IsWord("const")) v.isConst = true;
    else if (t.IsWord("uniform")) v.isUniform = true;
    else if (t.IsWord("extern")) v.isExtern = true;
    else if (t.IsWord("in")) v.dir = EFxDir::In;
    else if (t.IsWord("out")) v.dir = EFxDir::Out;
    else if (t.IsWord("inout")) v.dir = EFxDir::InOut;
    else if (!t.IsWord("shared") && !t.IsWord("volatile") && !t.IsWord("inline") && !t.IsWord("varying")) return;
    Next();
  }
}

bool CFxParser::IsTypeName(const FxToken &t) const {
  CFxType type;
  return t.kind == EFxTok::Identifier && (ParseTypeName(t.text, type) || m_Unit->FindStruct(t.text));
}

namespace {
// Types of later profiles that GLSL 1.20 has no counterpart for.
bool IsTextureArrayType(const std::string &name) {
  static const char *const kinds[] = {"ARRAY", "Array", "BUF", "Buffer"};
  if (name.compare(0, 7, "sampler") != 0 && name.compare(0, 7, "texture") != 0) return false;
  for (const char *k : kinds)
    if (name.size() > strlen(k) && name.compare(name.size() - strlen(k), strlen(k), k) == 0) return true;
  return false;
}
}  // namespace

CFxType CFxParser::Type() {
  const FxToken &t = Next();
  CFxType type;
  if (t.kind == EFxTok::Identifier && ParseTypeName(t.text, type)) return type;
  if (t.kind == EFxTok::Identifier && IsTextureArrayType(t.text)) {
    --m_Pos;
    Fail("texture arrays and buffers ('" + t.text + "') cannot be translated to GLSL 1.20");
  }
  if (t.kind == EFxTok::Identifier)
    if (const FxStructDef *s = m_Unit->FindStruct(t.text)) {
      type.base = EFxBase::Struct;
      type.structDef = s;
      return type;
    }
  --m_Pos;
  Fail(t.kind == EFxTok::End ? "unexpected end of text" : "unknown type '" + t.text + "'");
}

// name [size] then `: SEMANTIC` and `<annotations>` in either order, then an
// optional initialiser.
void CFxParser::Declarator(FxVar &v, bool allowInit) {
  v.at = Peek().at;
  v.name = ExpectIdentifier("name");
  ArraySizes(v.type);
  for (;;) {
    if (Accept(":")) {
      if (Peek().IsWord("register")) {
        Next();
        Expect("(");
        ExpectIdentifier("register");
        Expect(")");
      } else {
        v.semantic = ExpectIdentifier("semantic");
        if (v.semantic == "BUFFER" || v.semantic == "buffer")
          Fail("constant buffers (semantic BUFFER of '" + v.name + "') cannot be translated to GLSL 1.20");
      }
    } else if (Peek().Is("<")) {
      Annotations(v.annotations);
    } else {
      break;
    }
  }
  if (!allowInit || !Accept("=")) return;
  if (Peek().IsWord("sampler_state")) {
    Next();
    v.hasSamplerState = true;
    StateBlock(v.samplerStates);
  } else {
    v.init = Initializer();
  }
}

// `[n]` or `[n][m]` (an array of arrays); at most 4096 elements in all.
void CFxParser::ArraySizes(CFxType &type) {
  for (int dimension = 0; dimension < 2 && Accept("["); ++dimension) {
    const FxToken &n = Next();
    long size = n.kind == EFxTok::Int ? std::strtol(n.text.c_str(), nullptr, 0) : 0;
    if (size <= 0 || size > 4096 || size * (dimension ? type.arraySize : 1) > 4096)
      Fail("array size must be a whole number from 1 to 4096");
    (dimension ? type.arrayInner : type.arraySize) = static_cast<int>(size);
    Expect("]");
  }
  if (Peek().Is("[")) Fail("arrays of more than two dimensions are not supported");
}

void CFxParser::FunctionRest(CFxType ret, const FxToken &name, const FxStructDef *owner) {
  auto f = std::make_unique<FxFunction>();
  f->name = name.text;
  f->at = name.at;
  f->ret = ret;
  f->owner = owner;
  if (owner) {  // the object a method is called on
    auto self = std::make_unique<FxVar>();
    self->name = "cg_this";
    self->at = name.at;
    self->type.base = EFxBase::Struct;
    self->type.structDef = owner;
    f->params.push_back(std::move(self));
  }
  Expect("(");
  if (Peek().IsWord("void") && Peek(1).Is(")")) Next();
  if (!Accept(")")) {
    do f->params.push_back(Parameter());
    while (Accept(","));
    Expect(")");
  }
  if (Accept(":")) f->semantic = ExpectIdentifier("semantic");
  if (!Accept(";")) f->body = Block();
  m_Unit->functions.push_back(std::move(f));
}

FxVarPtr CFxParser::Parameter() {
  auto p = std::make_unique<FxVar>();
  Qualifiers(*p);
  p->type = Type();
  p->at = Peek().at;
  p->name = ExpectIdentifier("parameter name");
  ArraySizes(p->type);
  if (Accept(":")) p->semantic = ExpectIdentifier("semantic");
  if (Accept("=")) p->init = Initializer();
  return p;
}

const FxToken &CFxParser::Peek(size_t ahead) const {
  size_t i = m_Pos + ahead;
  return i < m_Tokens.size() ? m_Tokens[i] : m_Tokens.back();
}

const FxToken &CFxParser::Next() {
  const FxToken &t = Peek();
  if (m_Pos + 1 < m_Tokens.size()) ++m_Pos;
  return t;
}

bool CFxParser::Accept(const char *punct) {
  if (!Peek().Is(punct)) return false;
  Next();
  return true;
}

void CFxParser::Expect(const char *punct) {
  if (Accept(punct)) return;
  const FxToken &t = Peek();
  Fail(std::string("expected '") + punct + "'" + (t.kind == EFxTok::End ? " at the end of the text" : ", found '" + t.text + "'"));
}

// Annotation blocks may close with `>>` or `>=` glued by the lexer.
void CFxParser::ExpectCloseAngle() {
  FxToken &t = m_Tokens[m_Pos];
  if (t.kind == EFxTok::Punct && t.text.size() == 2 && t.text[0] == '>') {
    t.text.erase(0, 1);
    return;
  }
  Expect(">");
}

std::string CFxParser::ExpectIdentifier(const char *what) {
  const FxToken &t = Peek();
  if (t.kind != EFxTok::Identifier)
    Fail(std::string("expected ") + what + (t.kind == EFxTok::End ? " at the end of the text" : ", found '" + t.text + "'"));
  return Next().text;
}

void CFxParser::Fail(const std::string &message) {
  m_Diag.Error(Peek().at, message);
  throw Error{};
}

FxExprPtr CFxParser::Make(EFxExpr kind, FxLocation at, std::string text) {
  auto e = std::make_unique<FxExpr>();
  e->kind = kind;
  e->at = at;
  e->text = std::move(text);
  return e;
}
