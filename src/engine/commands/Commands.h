#pragma once
// The engine's host commands, one group per file. Each group is a table of
// names and handlers that the engine registers when it is made.

#include <initializer_list>
#include <span>

#include "engine/ScriptEngine.h"

class CScene;

struct CommandEntry {
  const char *name;
  CommandHandler handler;
};

std::span<const CommandEntry> ProjectCommands();
std::span<const CommandEntry> GraphCommands();
std::span<const CommandEntry> HostCommands();

// Every group, in the order a lookup meets them.
void RegisterEngineCommands(CScriptEngine &engine, CVelmor *velmor);

// A reply element that repeats the request's text of the named attributes;
// with `onlyGiven`, an attribute the request lacks is left out.
XmlElement Reply(const char *tag, const XmlElement &request, std::initializer_list<const char *> names,
                 bool onlyGiven = false);
// Posts the reply and reports success.
CommandResult Answer(CScriptEngine &engine, const XmlElement &reply);
// The active scene when it is a plain scene, else null.
CScene *ActiveGraph(CVelmor &velmor);
