#include "scene/NodeFactory.h"

#include <atomic>
#include <tinyxml.h>

#include "core/Log.h"
#include "scene/Node.h"
#include "scene/NodeInfo.h"
#include "scene/Port.h"
#include "scene/SerializeXML.h"

namespace {
CNodeFactory *g_Instance = nullptr;
std::atomic<int> g_Count{0};
CNodeFactory::Registrar g_Registrar = nullptr;
}  // namespace

CNodeFactory &CNodeFactory::GetInstance() {
  if (g_Count.fetch_add(1) == 0 || !g_Instance) g_Instance = new CNodeFactory;
  return *g_Instance;
}

void CNodeFactory::Release() {
  if (g_Count.load() <= 0) return;
  if (g_Count.fetch_sub(1) == 1) {
    delete g_Instance;
    g_Instance = nullptr;
  }
}

int CNodeFactory::RefCount() { return g_Count.load(); }

void CNodeFactory::SetBuiltinRegistrar(Registrar registrar) { g_Registrar = registrar; }

CNodeFactory::~CNodeFactory() {
  for (CNodeInfo *info : m_Types)
    if (!info->m_BuiltIn) delete info;
  m_Types.clear();
  m_Initialized = false;
}

void CNodeFactory::Init() {
  if (m_Initialized) return;
  m_Initialized = true;
  if (g_Registrar) g_Registrar(*this);
}

void CNodeFactory::AddNodeType(CNodeInfo *info) {
  if (!info) return;
  if (FindType(info->m_TypeName.c_str())) {
    LogError("Node name isn't unique (%s)", info->m_TypeName.c_str());
    if (!info->m_BuiltIn) delete info;
    return;
  }
  m_Types.push_back(info);
}

const CNodeInfo *CNodeFactory::FindType(const char *typeName) const {
  for (const CNodeInfo *info : m_Types)
    if (info->m_TypeName == typeName) return info;
  return nullptr;
}

CNode *CNodeFactory::CreateNode(const char *typeName) const {
  if (const CNodeInfo *info = FindType(typeName)) return info->Instantiate();
  LogError("Unknown node: \"%s\"", typeName);
  return nullptr;
}

void CNodeFactory::WriteCatalogue(TiXmlElement &root) const {
  for (const CNodeInfo *info : m_Types) {
    TiXmlElement nodeInfo("NodeInfo");
    nodeInfo.SetAttribute("Type", info->m_TypeName.c_str());
    nodeInfo.SetAttribute("Desc", info->m_Desc.c_str());
    nodeInfo.SetAttribute("Group", info->m_Group);
    TiXmlNode *added = root.InsertEndChild(nodeInfo);
    for (int list = 0; list < 2; ++list) {
      TiXmlNode *ports = added->InsertEndChild(TiXmlElement(list == 0 ? "InPorts" : "OutPorts"));
      for (CPort *proto : list == 0 ? info->m_InPorts : info->m_OutPorts) {
        TiXmlNode *port = ports->InsertEndChild(TiXmlElement("Port"));
        CSerializeXMLStore store(port->ToElement());
        store.m_Mode = SM_Catalogue;
        proto->Serialize(store);
      }
    }
  }
}

std::string CNodeFactory::CatalogueText() const {
  TiXmlDocument doc;
  TiXmlElement root("NodeTypes");
  WriteCatalogue(root);
  doc.InsertEndChild(root);
  TiXmlPrinter printer;
  doc.Accept(&printer);
  return printer.CStr();
}
