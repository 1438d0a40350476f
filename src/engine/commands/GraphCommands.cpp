// Node, connection and port commands on the active scene, and the node
// type catalogue.
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "engine/Velmor.h"
#include "engine/commands/Commands.h"
#include "scene/Node.h"
#include "scene/Port.h"
#include "scene/PortValues.h"
#include "scene/Scene.h"

namespace {
constexpr const char *kNoNode = "A node with that name doesn't exists";

// The node, port and connection commands work on the active scene, which
// must be a plain scene.
using GraphHandler = CommandResult (*)(CScriptEngine &engine, XmlElement &request, CScene &scene);

template <GraphHandler handler>
CommandResult OnActiveScene(CScriptEngine &engine, XmlElement &request, CVelmor *velmor) {
  CScene *scene = ActiveGraph(*velmor);
  if (!scene) return CommandFailed("No active scene set");
  return handler(engine, request, *scene);
}

std::string PortText(CPort &port, const std::string &component) {
  return component.empty() ? port.GetText() : port.GetText(component.c_str());
}

bool IsNumber(const std::string &token) {
  char *end = nullptr;
  strtod(token.c_str(), &end);
  return !token.empty() && end && *end == 0;
}

// Whether the text is a value of the port: numbers for the numeric types
// (or a listed name for an Int), a truth word for a Bool, anything for a
// String. Ports that carry objects take no text.
bool ValueFits(const CPort &port, const std::string &text) {
  std::istringstream in(text);
  std::vector<std::string> tokens;
  for (std::string t; in >> t;) tokens.push_back(t);
  switch (port.m_Type) {
    case PT_String: return true;
    case PT_Bool:
      for (const char *word : {"0", "1", "true", "false", "on", "off"})
        if (!strcasecmp(text.c_str(), word)) return true;
      return false;
    case PT_Int:
      if (const auto *p = dynamic_cast<const CPortInt *>(&port); p && p->m_Values)
        for (const auto &entry : *p->m_Values)
          if (!strcasecmp(entry.second.c_str(), text.c_str())) return true;
      [[fallthrough]];
    case PT_Float:
    case PT_Vector:
    case PT_Color:
    case PT_Rect:
      if (tokens.empty()) return false;
      for (const std::string &t : tokens)
        if (!IsNumber(t)) return false;
      return true;
    default: return false;
  }
}

CommandResult NodeCreate(CScriptEngine &e, XmlElement &r, CScene &scene) {
  const std::string name = r.Get("Name");
  if (!name.empty() && scene.FindNode(name.c_str())) return CommandFailed("A node with that name already exists");
  CNode *node = scene.AddNode(r.Get("Type").c_str());
  if (!node) return CommandFailed("Unknown node type");
  if (!name.empty()) node->m_Name = name;
  return Answer(e, Reply("NodeCreated", r, {"Type"}).Set("Name", node->m_Name));
}

CommandResult NodeRemove(CScriptEngine &e, XmlElement &r, CScene &scene) {
  if (!scene.RemoveNode(r.Get("Name").c_str())) return CommandFailed(kNoNode);
  return Answer(e, Reply("NodeRemoved", r, {"Name"}));
}

CommandResult NodeGet(CScriptEngine &e, XmlElement &r, CScene &scene) {
  const CNode *node = scene.FindNode(r.Get("Name").c_str());
  if (!node) return CommandFailed(kNoNode);
  XmlElement reply = Reply("Node", r, {"Name"}).Set("SceneFile", scene.m_File);
  for (CPort *port : node->m_InPorts) reply.Add(XmlElement("Port").Set("Name", port->m_Name).Set("Value", port->GetText()));
  return Answer(e, reply);
}

CommandResult NodeSet(CScriptEngine &e, XmlElement &r, CScene &) { return Answer(e, Reply("Node", r, {"Name"})); }

CommandResult ConnectionCreate(CScriptEngine &e, XmlElement &r, CScene &scene) {
  if (!scene.CreateConnection(r.Get("From").c_str(), r.Get("To").c_str()))
    return CommandFailed("Unable to create connection");
  return Answer(e, Reply("ConnectionCreated", r, {"From", "To"}));
}

CommandResult ConnectionRemove(CScriptEngine &e, XmlElement &r, CScene &scene) {
  if (!scene.RemoveConnection(r.Get("From").c_str(), r.Get("To").c_str()))
    return CommandFailed("Unable to remove connection");
  return Answer(e, Reply("ConnectionRemoved", r, {"From", "To"}));
}

CommandResult ConnectionsBreak(CScriptEngine &e, XmlElement &r, CScene &scene) {
  CNode *first = scene.FindNode(r.Get("Node1").c_str());
  CNode *second = scene.FindNode(r.Get("Node2").c_str());
  if (!first || !second) return CommandFailed("Unable to find one of the nodes");
  first->Disconnect(second);
  return Answer(e, Reply("ConnectionsBroken", r, {"Node1", "Node2"}));
}

CommandResult PortSet(CScriptEngine &e, XmlElement &r, CScene &scene) {
  std::string component;
  CPort *port = scene.FindInPort(r.Get("Name").c_str(), &component);
  if (!port) return CommandFailed("A node,port or component with that name doesn't exists");
  const std::string value = r.Get("Value");
  if (!ValueFits(*port, value)) return CommandFailed("Bad value for that port");
  if (component.empty())
    port->SetText(value.c_str());
  else
    port->SetText(component.c_str(), value.c_str());
  port->m_Changed = true;
  return Answer(e, Reply("Port", r, {"Name"}).Set("Value", PortText(*port, component)));
}

CommandResult PortGet(CScriptEngine &e, XmlElement &r, CScene &scene) {
  std::string component;
  CPort *port = scene.FindInPort(r.Get("Name").c_str(), &component);
  if (!port) return CommandFailed("A node,attribute or component with that name doesn't exists");
  return Answer(e, Reply("Port", r, {"Name"}).Set("Value", PortText(*port, component)));
}

CommandResult NodeTypesGet(CScriptEngine &e, XmlElement &, CVelmor *v) {
  return Answer(e, CatalogueElement(*v->m_NodeFactory));
}

const CommandEntry kCommands[] = {
    {"NodeCreate", OnActiveScene<NodeCreate>},
    {"NodeRemove", OnActiveScene<NodeRemove>},
    {"NodeGet", OnActiveScene<NodeGet>},
    {"NodeSet", OnActiveScene<NodeSet>},
    {"ConnectionCreate", OnActiveScene<ConnectionCreate>},
    {"ConnectionRemove", OnActiveScene<ConnectionRemove>},
    {"ConnectionsBreak", OnActiveScene<ConnectionsBreak>},
    {"PortSet", OnActiveScene<PortSet>},
    {"PortGet", OnActiveScene<PortGet>},
    {"NodeTypesGet", NodeTypesGet},
};
}  // namespace

std::span<const CommandEntry> GraphCommands() { return kCommands; }
