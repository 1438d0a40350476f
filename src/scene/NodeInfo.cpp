#include "scene/NodeInfo.h"

#include "core/Log.h"
#include "scene/Node.h"
#include "scene/Port.h"

CNodeInfo::CNodeInfo(int group, const char *typeName, Creator creator, const char *desc)
    : m_Creator(creator), m_Group(group), m_TypeName(typeName), m_Desc(desc) {}

CNodeInfo::~CNodeInfo() {
  for (CPort *p : m_InPorts) delete p;
  for (CPort *p : m_OutPorts) delete p;
}

void CNodeInfo::AddPort(CPort *port, bool input) {
  port->m_IsInput = input;
  (input ? m_InPorts : m_OutPorts).push_back(port);
}

CNode *CNodeInfo::Instantiate() const {
  CNode *node = m_Creator();
  node->m_Info = this;
  for (const CPort *p : m_InPorts) node->m_InPorts.push_back(p->Clone());
  for (const CPort *p : m_OutPorts) node->m_OutPorts.push_back(p->Clone());
  for (CPort *p : node->m_InPorts) p->SetOwner(node);
  for (CPort *p : node->m_OutPorts) p->SetOwner(node);
  if (!node->Init() || !node->PortsFound()) {
    LogError("Unable to initialise a node of type \"%s\"", m_TypeName.c_str());
    delete node;
    return nullptr;
  }
  return node;
}
