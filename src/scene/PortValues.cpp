#include "scene/PortValues.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <strings.h>

#include "core/Numeric.h"
#include "scene/Serialize.h"

namespace {
std::string FormatFloats(const float *v, int n) {
  char buf[160];
  int len = 0;
  for (int i = 0; i < n; ++i) len += snprintf(buf + len, sizeof(buf) - len, i ? " %g" : "%g", v[i]);
  return buf;
}

// Reads exactly n floats with "%f"; false (and out untouched) otherwise.
bool ParseFloats(const char *text, float *out, int n) {
  float v[4];
  int got = sscanf(text, n == 3 ? "%f %f %f" : "%f %f %f %f", &v[0], &v[1], &v[2], &v[3]);
  if (got != n) return false;
  for (int i = 0; i < n; ++i) out[i] = v[i];
  return true;
}

// A Bool, Int or Float source read as a number.
double NumericValue(const CPort *p) {
  switch (p->m_Type) {
    case PT_Float: return static_cast<const CPortFloat *>(p)->m_Value;
    case PT_Int: return static_cast<const CPortInt *>(p)->m_Value;
    case PT_Bool: return static_cast<const CPortBool *>(p)->m_Value ? 1.0 : 0.0;
    default: return 0.0;
  }
}

// Text of a whole-valued field written through the string form, as an Int
// port does so that loading accepts names as well as numbers.
std::string IntText(int v) {
  char buf[32];
  snprintf(buf, sizeof(buf), "%ld", static_cast<long>(v));
  return buf;
}
}  // namespace

float ApplyRange(float v, float min, float max) { return v <= min ? min : (v >= max ? max : v); }
int ApplyRange(int v, int min, int max) { return v <= min ? min : (v >= max ? max : v); }

// ---- Bool

CPortBool::CPortBool(const char *name, const char *desc, bool def) : CPort(PT_Bool, name, desc), m_Value(def) {}
std::string CPortBool::GetText() { return m_Value ? "On" : "Off"; }
void CPortBool::SetText(const char *text) {
  m_Value = !strcmp(text, "1") || !strcasecmp(text, "true") || !strcasecmp(text, "on");
}
void CPortBool::Serialize(CSerialize &s) {
  CPort::Serialize(s);
  m_Value = s.Serialize(m_Name.c_str(), m_Value);
}
void CPortBool::Update(float time) {
  if (!PullSource(time)) return;
  if (m_Source->m_Type == PT_Bool)
    m_Value = static_cast<CPortBool *>(m_Source)->m_Value;
  else if (m_Source->m_Type == PT_Float)
    m_Value = static_cast<CPortFloat *>(m_Source)->m_Value >= 0.5f;
  else if (m_Source->m_Type == PT_Int)
    m_Value = static_cast<CPortInt *>(m_Source)->m_Value != 0;
}
CPort *CPortBool::CloneTyped() const { return new CPortBool(m_Name.c_str(), m_Desc.c_str(), m_Value); }

// ---- Int

CPortInt::CPortInt(const char *name, const char *desc, int def, int min, int max)
    : CPort(PT_Int, name, desc), m_Value(def), m_Min(min), m_Max(max) {}
std::string CPortInt::GetText() { return IntText(m_Value); }
void CPortInt::SetText(const char *text) {
  if (m_Values) {
    for (const auto &[number, name] : *m_Values)
      if (!strcasecmp(name.c_str(), text)) {
        m_Value = ApplyRange(number, m_Min, m_Max);
        return;
      }
  }
  m_Value = ApplyRange(atoi(text), m_Min, m_Max);
}
void CPortInt::Serialize(CSerialize &s) {
  CPort::Serialize(s);
  std::string text = s.Serialize(m_Name.c_str(), GetText());
  if (!s.m_Storing) SetText(text.c_str());
  if (s.m_Mode != SM_Catalogue || !s.m_Storing) return;
  s.Serialize("Min", m_Min);
  s.Serialize("Max", m_Max);
  if (!m_Values) return;
  s.EnterElement("Values");
  for (const auto &[number, name] : *m_Values) {
    s.EnterElement("Value");
    s.Serialize("Name", name);
    s.Serialize("Value", number);
    s.LeaveElement();
  }
  s.LeaveElement();
}
void CPortInt::Update(float time) {
  if (!PullSource(time)) return;
  m_Value = SatInt(NumericValue(m_Source));
}
CPortInt *CPortInt::AddValue(int number, const char *name) {
  if (!m_Values) m_Values = std::make_unique<std::map<int, std::string>>();
  m_Values->emplace(number, name);
  return this;
}
CPort *CPortInt::CloneTyped() const {
  auto *p = new CPortInt(m_Name.c_str(), m_Desc.c_str(), m_Value, m_Min, m_Max);
  if (m_Values) p->m_Values = std::make_unique<std::map<int, std::string>>(*m_Values);
  return p;
}

// ---- Float

CPortFloat::CPortFloat(const char *name, const char *desc, float def, float step, float min, float max)
    : CPort(PT_Float, name, desc), m_Value(def), m_Min(min), m_Max(max), m_Step(step) {}
std::string CPortFloat::GetText() { return FormatFloats(&m_Value, 1); }
void CPortFloat::SetText(const char *text) { m_Value = ApplyRange(static_cast<float>(atof(text)), m_Min, m_Max); }
void CPortFloat::Serialize(CSerialize &s) {
  CPort::Serialize(s);
  m_Value = ApplyRange(s.Serialize(m_Name.c_str(), m_Value), m_Min, m_Max);
  if (s.m_Mode != SM_Catalogue || !s.m_Storing) return;
  s.Serialize("Min", m_Min);
  s.Serialize("Max", m_Max);
  s.Serialize("Step", m_Step);
}
void CPortFloat::Update(float time) {
  if (!PullSource(time)) return;
  m_Value = static_cast<float>(NumericValue(m_Source));
  m_Changed = m_Source->m_Changed;
}
CPort *CPortFloat::CloneTyped() const {
  return new CPortFloat(m_Name.c_str(), m_Desc.c_str(), m_Value, m_Step, m_Min, m_Max);
}

// ---- Vector

CPortVector::CPortVector(const char *name, const char *desc, Vec3f def, Vec3f step, Vec3f min, Vec3f max)
    : CPort(PT_Vector, name, desc), m_Value(def), m_Step(step), m_Min(min), m_Max(max) {}

static int VectorComponent(const char *c) {
  if (!c || !c[0] || c[1]) return -1;
  switch (c[0]) {
    case 'x': case 'X': return 0;
    case 'y': case 'Y': return 1;
    case 'z': case 'Z': return 2;
    default: return -1;
  }
}
std::string CPortVector::GetText(const char *component) {
  int i = VectorComponent(component);
  return i < 0 ? std::string() : FormatFloats(&m_Value.x + i, 1);
}
std::string CPortVector::GetText() { return FormatFloats(&m_Value.x, 3); }
void CPortVector::SetText(const char *component, const char *text) {
  int i = VectorComponent(component);
  float v;
  if (i < 0 || sscanf(text, "%f", &v) != 1) return;
  (&m_Value.x)[i] = ApplyRange(v, (&m_Min.x)[i], (&m_Max.x)[i]);
}
void CPortVector::SetText(const char *text) {
  float v[3];
  if (!ParseFloats(text, v, 3)) return;
  for (int i = 0; i < 3; ++i) (&m_Value.x)[i] = ApplyRange(v[i], (&m_Min.x)[i], (&m_Max.x)[i]);
}
void CPortVector::Serialize(CSerialize &s) {
  CPort::Serialize(s);
  if (s.m_Mode == SM_Catalogue && s.m_Storing) {
    s.Serialize("Value", GetText());
    s.Serialize("Step", FormatFloats(&m_Step.x, 3));
    s.Serialize("Min", FormatFloats(&m_Min.x, 3));
    s.Serialize("Max", FormatFloats(&m_Max.x, 3));
    return;
  }
  SetText(s.Serialize(m_Name.c_str(), GetText()).c_str());
}
void CPortVector::Update(float time) {
  if (PullSource(time) && m_Source->m_Type == PT_Vector) m_Value = static_cast<CPortVector *>(m_Source)->m_Value;
}
CPort *CPortVector::CloneTyped() const {
  return new CPortVector(m_Name.c_str(), m_Desc.c_str(), m_Value, m_Step, m_Min, m_Max);
}

// ---- Color

CPortColor::CPortColor(const char *name, const char *desc, Color4f def, Color4f min, Color4f max)
    : CPort(PT_Color, name, desc), m_Value(def), m_Min(min), m_Max(max) {}
std::string CPortColor::GetText() { return FormatFloats(&m_Value.r, 4); }
void CPortColor::SetText(const char *text) {
  float v[4];
  if (!ParseFloats(text, v, 4)) return;
  for (int i = 0; i < 4; ++i) (&m_Value.r)[i] = ApplyRange(v[i], (&m_Min.r)[i], (&m_Max.r)[i]);
}
void CPortColor::Serialize(CSerialize &s) {
  CPort::Serialize(s);
  if (s.m_Mode == SM_Catalogue && s.m_Storing) {
    s.Serialize("Value", GetText());
    s.Serialize("Min", FormatFloats(&m_Min.r, 4));
    s.Serialize("Max", FormatFloats(&m_Max.r, 4));
    return;
  }
  SetText(s.Serialize(m_Name.c_str(), GetText()).c_str());
}
void CPortColor::Update(float time) {
  if (PullSource(time) && m_Source->m_Type == PT_Color) m_Value = static_cast<CPortColor *>(m_Source)->m_Value;
}
CPort *CPortColor::CloneTyped() const { return new CPortColor(m_Name.c_str(), m_Desc.c_str(), m_Value, m_Min, m_Max); }

// ---- String

CPortString::CPortString(const char *name, const char *desc, const char *def)
    : CPort(PT_String, name, desc), m_Value(def) {}
std::string CPortString::GetText() { return m_Value; }
void CPortString::SetText(const char *text) { m_Value = text; }
void CPortString::Serialize(CSerialize &s) {
  CPort::Serialize(s);
  m_Value = s.Serialize(m_Name.c_str(), m_Value);
}
void CPortString::Update(float time) {
  if (PullSource(time) && m_Source->m_Type == PT_String) m_Value = static_cast<CPortString *>(m_Source)->m_Value;
}
CPort *CPortString::CloneTyped() const { return new CPortString(m_Name.c_str(), m_Desc.c_str(), m_Value.c_str()); }

// ---- Rect

namespace {
std::string SubName(const std::string &base, const char *suffix) { return base + suffix; }
}  // namespace

CPortRect::CPortRect(const char *name, const char *desc, Rect4f d, Rect4f st, Rect4f mn, Rect4f mx)
    : CPort(PT_Rect, name, desc),
      x(SubName(name, ".x").c_str(), SubName(desc, "(x)").c_str(), d.l, st.l, mn.l, mx.l),
      y(SubName(name, ".y").c_str(), SubName(desc, "(y)").c_str(), d.t, st.t, mn.t, mx.t),
      w(SubName(name, ".w").c_str(), SubName(desc, "(width)").c_str(), d.r - d.l, st.r - st.l, mn.r - mn.l,
        mx.r - mx.l),
      h(SubName(name, ".h").c_str(), SubName(desc, "(height)").c_str(), d.b - d.t, st.b - st.t, mn.b - mn.t,
        mx.b - mx.t) {
  m_NumSubPorts = 4;
}

CPortRect::CPortRect(const CPortRect &o)
    : CPort(PT_Rect, o.m_Name.c_str(), o.m_Desc.c_str()),
      x(o.x.m_Name.c_str(), o.x.m_Desc.c_str(), o.x.m_Value, o.x.m_Step, o.x.m_Min, o.x.m_Max),
      y(o.y.m_Name.c_str(), o.y.m_Desc.c_str(), o.y.m_Value, o.y.m_Step, o.y.m_Min, o.y.m_Max),
      w(o.w.m_Name.c_str(), o.w.m_Desc.c_str(), o.w.m_Value, o.w.m_Step, o.w.m_Min, o.w.m_Max),
      h(o.h.m_Name.c_str(), o.h.m_Desc.c_str(), o.h.m_Value, o.h.m_Step, o.h.m_Min, o.h.m_Max) {
  m_NumSubPorts = 4;
  for (int i = 0; i < 4; ++i) {
    Sub(i)->m_Source = const_cast<CPortRect &>(o).Sub(i)->m_Source;
    Sub(i)->m_IsInput = o.m_IsInput;
  }
}

CPortFloat *CPortRect::Sub(int i) {
  switch (i) {
    case 0: return &x;
    case 1: return &y;
    case 2: return &w;
    case 3: return &h;
    default: return nullptr;
  }
}

CPort *CPortRect::FindSubPort(const char *name) {
  if (!name || !name[0] || name[1]) return nullptr;
  switch (name[0]) {
    case 'x': case 'X': return &x;
    case 'y': case 'Y': return &y;
    case 'w': case 'W': return &w;
    case 'h': case 'H': return &h;
    default: return nullptr;
  }
}
CPort *CPortRect::GetSubPort(int index) { return Sub(index); }
std::string CPortRect::GetText() {
  return x.GetText() + " " + y.GetText() + " " + w.GetText() + " " + h.GetText();
}
void CPortRect::SetText(const char *text) {
  float v[4];
  if (!ParseFloats(text, v, 4)) return;
  for (int i = 0; i < 4; ++i) Sub(i)->m_Value = ApplyRange(v[i], Sub(i)->m_Min, Sub(i)->m_Max);
}
void CPortRect::Serialize(CSerialize &s) {
  CPort::Serialize(s);
  if (s.m_Mode == SM_Catalogue && s.m_Storing) {
    float value[4] = {x.m_Value, y.m_Value, w.m_Value, h.m_Value};
    float min[4] = {x.m_Min, y.m_Min, w.m_Min, h.m_Min};
    float max[4] = {x.m_Max, y.m_Max, w.m_Max, h.m_Max};
    float step[4] = {x.m_Step, y.m_Step, w.m_Step, h.m_Step};
    s.Serialize("Value", FormatFloats(value, 4));
    s.Serialize("Min", FormatFloats(min, 4));
    s.Serialize("Max", FormatFloats(max, 4));
    s.Serialize("Step", FormatFloats(step, 4));
    return;
  }
  SetText(s.Serialize(m_Name.c_str(), GetText()).c_str());
}
void CPortRect::Update(float time) {
  for (int i = 0; i < 4; ++i) Sub(i)->Update(time);
}
void CPortRect::SetOwner(CNode *node) {
  m_Node = node;
  for (int i = 0; i < 4; ++i) Sub(i)->SetOwner(node);
}
CPort *CPortRect::CloneTyped() const { return new CPortRect(*this); }

CPortRect *MakeViewportPort(const char *name, const char *desc) {
  // x, y, w, h of 0, 0, 1, 1 with step 0.01 and range 0..1 on each.
  return new CPortRect(name, desc, Rect4f{0, 0, 1, 1}, Rect4f{0.01f, 0.01f, 0.02f, 0.02f}, Rect4f{0, 0, 0, 0},
                       Rect4f{1, 1, 2, 2});
}
