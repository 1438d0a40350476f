#include "scene/Port.h"

#include "core/Log.h"
#include "scene/Node.h"
#include "scene/Serialize.h"

namespace {
const char *const kTypeNames[PT_Count] = {"None", "Bool", "Int", "Float", "Color", "String", "Rect",
                                          "Render", "Vector", "Object", "Effect", "Texture", "Mesh"};

bool IsNumeric(int type) { return type == PT_Bool || type == PT_Int || type == PT_Float; }
}  // namespace

const char *PortTypeName(int type) { return (type >= 0 && type < PT_Count) ? kTypeNames[type] : "None"; }

CPort::CPort(int type, const char *name, const char *desc) : m_Type(type), m_Name(name), m_Desc(desc) {}

CPort *CPort::FindSubPort(const char *) { return nullptr; }
CPort *CPort::GetSubPort(int) { return nullptr; }
std::string CPort::GetText(const char *) { return GetText(); }
std::string CPort::GetText() { return "<Missing>"; }
void CPort::SetText(const char *, const char *text) { SetText(text); }
void CPort::SetText(const char *) {}

void CPort::Serialize(CSerialize &s) {
  if (s.m_Mode != SM_Catalogue) return;
  s.Serialize("Type", PortTypeName(m_Type));
  s.Serialize("Name", m_Name);
  s.Serialize("Desc", m_Desc);
  s.Serialize("Input", m_IsInput);
}

bool CPort::PullSource(float time) {
  if (!IsConnected() || !m_Source) return false;
  CNode *source = m_Source->m_Node;
  if (source) {
    source->m_Frame = m_Node ? m_Node->m_Frame : source->m_Frame;
    source->Pull(time);
  }
  if (m_Source->m_Changed) m_Changed = true;
  return true;
}

void CPort::Update(float time) { PullSource(time); }

CPort *CPort::Clone() const {
  if (m_Type <= PT_None || m_Type >= PT_Count) return nullptr;
  CPort *p = CloneTyped();
  p->m_Source = m_Source;
  p->m_Node = m_Node;
  p->m_IsInput = m_IsInput;
  p->m_NumSubPorts = m_NumSubPorts;
  p->m_Changed = true;
  p->m_Connected = false;
  p->SetOwner(m_Node);
  return p;
}

bool PortTypesCompatible(int from, int to) { return from == to || (IsNumeric(from) && IsNumeric(to)); }

bool ConnectPorts(CPort *source, CPort *target) {
  if (!PortTypesCompatible(source->m_Type, target->m_Type))
    return LogError("Unable to created a connection between nodes of different type %ld -> %ld",
                    static_cast<long>(source->m_Type), static_cast<long>(target->m_Type));
  target->m_Source = source;
  target->m_Connected = true;
  source->m_Connected = true;
  if (target->m_Type == PT_Mesh) target->m_Changed = true;
  return true;
}

void DisconnectPort(CPort *target) {
  target->m_Source = nullptr;
  if (target->m_Type == PT_Mesh) target->m_Changed = true;
}
