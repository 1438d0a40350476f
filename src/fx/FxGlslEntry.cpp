// The generated main() of each stage: entry inputs from attributes or
// varyings, the call, outputs to GL's built-ins or varyings. Every varying is
// a vec4 named by its semantic, so the two stages link whatever sizes each
// side declares.
#include "fx/FxGlslEmitter.h"

#include <cctype>
#include <cstring>

namespace {
std::string Normalise(const std::string &semantic) {
  std::string s;
  for (char c : semantic) s += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  if (s == "COLOR" || s == "COL0" || s == "COL") return "COLOR0";
  if (s == "COL1") return "COLOR1";
  if (s == "TEXCOORD") return "TEXCOORD0";
  if (s == "HPOS") return "POSITION";
  if (s == "FOGC") return "FOG";
  // POSITION0, NORMAL0, ...: index 0 of a semantic that has no other
  static const char *const single[] = {"POSITION0", "NORMAL0", "TANGENT0", "BINORMAL0", "BLENDWEIGHT0",
                                       "BLENDINDICES0", "PSIZE0", "FOG0", "FOGCOORD0", "DEPTH0", "TESSFACTOR0",
                                       "WPOS0", "VPOS0", "FACE0", "VFACE0"};
  for (const char *name : single)
    if (s == name) return s.substr(0, s.size() - 1);
  if (s == "DIFFUSE0") return "DIFFUSE";
  if (s == "SPECULAR0") return "SPECULAR";
  return s;
}

// -1 unless `s` is `prefix` followed by a number below `limit`.
int Numbered(const std::string &s, const char *prefix, int limit) {
  size_t n = strlen(prefix);
  if (s.compare(0, n, prefix) != 0 || s.size() == n || s.size() > n + 2) return -1;
  int v = 0;
  for (size_t i = n; i < s.size(); ++i) {
    if (!std::isdigit(static_cast<unsigned char>(s[i]))) return -1;
    v = v * 10 + (s[i] - '0');
  }
  return v < limit ? v : -1;
}

// The fixed generic attribute of each vertex input semantic.
int AttributeIndex(const std::string &s) {
  static const std::pair<const char *, int> named[] = {
      {"POSITION", 0}, {"BLENDWEIGHT", 1}, {"NORMAL", 2},   {"COLOR0", 3},       {"DIFFUSE", 3},
      {"COLOR1", 4},   {"SPECULAR", 4},    {"FOGCOORD", 5}, {"TESSFACTOR", 5},   {"PSIZE", 6},
      {"BLENDINDICES", 7}, {"TANGENT", 14}, {"BINORMAL", 15}};
  for (const auto &n : named)
    if (s == n.first) return n.second;
  if (int a = Numbered(s, "ATTR", 16); a >= 0) return a;
  if (int t = Numbered(s, "TEXCOORD", 8); t >= 0) return 8 + t;
  return -1;
}

std::string Pad4(const std::string &v, int size) {
  static const char *const tails[] = {"", ", 0.0, 0.0, 1.0", ", 0.0, 1.0", ", 1.0", ""};
  return size == 4 ? v : "vec4(" + v + tails[size] + ")";
}
}  // namespace

void CFxGlslEmitter::DeclareOnce(const std::string &line, std::string &globals) {
  if (m_Declared.insert(line).second) globals += line;
}

std::string CFxGlslEmitter::Main(const FxExpr &compile, std::string &globals, CFxPassProgram &out) {
  const FxExpr &call = *compile.args[0];
  const FxFunction &f = *call.func;
  std::string body, args;
  std::vector<Leaf> outputs;
  size_t uniform = 0;
  for (size_t i = 0; i < f.params.size(); ++i) {
    const FxVar &p = *f.params[i];
    args += i ? ", " : "";
    if (p.isUniform) {
      args += Expr(*call.args[uniform++]);
      continue;
    }
    std::string local = "cg_in" + std::to_string(i);
    body += "  " + TypeText(p.type) + " " + local + ";\n";
    if (p.dir != EFxDir::Out) {
      std::vector<Leaf> inputs;
      Leaves(p.type, local, p.semantic, p.at, inputs);
      for (const Leaf &leaf : inputs) body += "  " + leaf.path + " = " + ReadInput(leaf, globals, out) + ";\n";
    }
    if (p.dir != EFxDir::In) Leaves(p.type, local, p.semantic, p.at, outputs);
    args += local;
  }
  std::string entryCall = Name(f.name) + "(" + args + ")";
  if (f.ret.base == EFxBase::Void) {
    body += "  " + entryCall + ";\n";
  } else {
    body += "  " + TypeText(f.ret) + " cg_ret = " + entryCall + ";\n";
    Leaves(f.ret, "cg_ret", f.semantic, f.at, outputs);
  }
  bool fragData = false;
  for (const Leaf &leaf : outputs) fragData = fragData || Numbered(Normalise(leaf.semantic), "COLOR", 4) > 0;
  for (const Leaf &leaf : outputs) {
    std::string line = WriteOutput(leaf, fragData, globals);
    if (!line.empty()) body += "  " + line + ";\n";
  }
  if (m_Stage == EStage::Vertex) {
    // A varying the fragment stage reads but the entry never writes.
    for (const std::string &v : m_FragmentVaryings)
      if (!m_VertexVaryings.count(v)) {
        DeclareOnce("varying vec4 " + v + ";\n", globals);
        body += "  " + v + " = vec4(0.0, 0.0, 0.0, 1.0);\n";
      }
  }
  return "void main()\n{\n" + body + "}\n";
}

void CFxGlslEmitter::Leaves(const CFxType &type, const std::string &path, const std::string &semantic, FxLocation at,
                            std::vector<Leaf> &out) {
  if (type.base == EFxBase::Struct && type.arraySize == 0) {
    for (const auto &m : type.structDef->members) Leaves(m->type, path + "." + Name(m->name), m->semantic, m->at, out);
  } else if (!type.IsScalar() && !type.IsVector()) {
    Error(at, "an entry input or output of type " + TypeName(type) + " is not supported");
  } else if (semantic.empty()) {
    Error(at, "an entry input or output has no semantic");
  } else {
    out.push_back(Leaf{path, type, semantic, at});
  }
}

std::string CFxGlslEmitter::ReadInput(const Leaf &leaf, std::string &globals, CFxPassProgram &out) {
  std::string sem = Normalise(leaf.semantic), value;
  int fromSize = 4;
  if (m_Stage == EStage::Vertex) {
    int index = AttributeIndex(sem);
    if (index < 0) {
      Error(leaf.at, "unknown vertex input semantic '" + leaf.semantic + "'");
      return "0";
    }
    value = "cg_ATTR" + std::to_string(index);
    DeclareOnce("attribute vec4 " + value + ";\n", globals);
    bool known = false;
    for (const auto &a : out.attributes) known = known || a.first == index;
    if (!known) out.attributes.emplace_back(index, value);
  } else if (sem == "POSITION" || sem == "WPOS" || sem == "VPOS") {
    value = "gl_FragCoord";
  } else if (sem == "FACE" || sem == "VFACE") {
    value = "(gl_FrontFacing ? 1.0 : -1.0)";
    fromSize = 1;
  } else if (!m_HasVertex) {
    // Fixed-function vertex processing feeds the built-in varyings.
    int t = Numbered(sem, "TEXCOORD", 8);
    if (sem == "COLOR0") value = "gl_Color";
    else if (sem == "COLOR1") value = "gl_SecondaryColor";
    else if (t >= 0) value = "gl_TexCoord[" + std::to_string(t) + "]";
    else Error(leaf.at, "fragment input '" + leaf.semantic + "' needs a vertex program");
  } else {
    value = sem;
    DeclareOnce("varying vec4 " + sem + ";\n", globals);
    m_FragmentVaryings.insert(sem);
  }
  int size = leaf.type.cols;
  if (size < fromSize) value += "." + std::string("xyzw").substr(0, static_cast<size_t>(size));
  return leaf.type.IsFloatLike() ? value : TypeText(leaf.type) + "(" + value + ")";
}

std::string CFxGlslEmitter::WriteOutput(const Leaf &leaf, bool fragData, std::string &globals) {
  std::string sem = Normalise(leaf.semantic);
  int size = leaf.type.cols;
  std::string value = leaf.type.IsFloatLike() ? leaf.path : TypeText(leaf.type.WithBase(EFxBase::Float)) + "(" + leaf.path + ")";
  std::string first = size > 1 ? value + ".x" : value;
  std::string v4 = Pad4(value, size);
  int color = Numbered(sem, "COLOR", 4);
  int tex = Numbered(sem, "TEXCOORD", 8);
  if (m_Stage == EStage::Fragment) {
    if (color >= 0) return (fragData ? "gl_FragData[" + std::to_string(color) + "]" : std::string("gl_FragColor")) + " = " + v4;
    if (sem == "DEPTH") return "gl_FragDepth = " + first;
    Error(leaf.at, "unknown fragment output semantic '" + leaf.semantic + "'");
    return "";
  }
  if (sem == "POSITION") return "gl_Position = " + v4;
  if (sem == "PSIZE") return "gl_PointSize = " + first;
  if (!m_HasFragment) {
    if (color == 0) return "gl_FrontColor = " + v4;
    if (color == 1) return "gl_FrontSecondaryColor = " + v4;
    if (tex >= 0) return "gl_TexCoord[" + std::to_string(tex) + "] = " + v4;
    if (sem == "FOG") return "gl_FogFragCoord = " + first;
    return "";  // nothing would read it
  }
  DeclareOnce("varying vec4 " + sem + ";\n", globals);
  m_VertexVaryings.insert(sem);
  // Cg's GL profiles pass COLOR0/1 through the clamped colour varyings.
  if (color == 0 || color == 1) return sem + " = clamp(" + v4 + ", 0.0, 1.0)";
  return sem + " = " + v4;
}
