#include "engine/commands/Commands.h"

#include "engine/Velmor.h"
#include "scene/Scene.h"

void RegisterEngineCommands(CScriptEngine &engine, CVelmor *velmor) {
  for (auto group : {ProjectCommands(), GraphCommands(), HostCommands()})
    for (const CommandEntry &c : group) engine.Register(c.name, c.handler, velmor);
}

XmlElement Reply(const char *tag, const XmlElement &request, std::initializer_list<const char *> names, bool onlyGiven) {
  XmlElement reply(tag);
  for (const char *name : names)
    if (!onlyGiven || request.Has(name)) reply.Set(name, request.Get(name));
  return reply;
}

CommandResult Answer(CScriptEngine &engine, const XmlElement &reply) {
  engine.PostReply(reply);
  return {};
}

CScene *ActiveGraph(CVelmor &velmor) { return dynamic_cast<CScene *>(velmor.m_ActiveScene); }
