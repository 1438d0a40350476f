#pragma once
// Scenes and projects loaded the way the program loads them, for the
// commands that work on scene files.

#include <string>
#include <vector>

#include "engine/Velmor.h"

class CPort;

// The error lines the log gets while an instance lives; with `allLines`
// set, every line (expressions report their failures as plain lines).
class CToolErrors {
 public:
  CToolErrors();
  ~CToolErrors();
  CToolErrors(const CToolErrors &) = delete;
  CToolErrors &operator=(const CToolErrors &) = delete;
  std::vector<std::string> errors;
  bool allLines = false;
};

// Finds the installation as the program does, registers every node type,
// effect files included, and loads a scene (.vms), a layered list
// ("bg.vms;fg.vms;post.vms") or a project (.vmp) into an engine. File names
// are the user's, relative to the current folder; nothing is written.
class CToolEngine {
  // Runs before the engine exists: the engine's factory registers the
  // built-in types when it is made.
  struct Setup {
    Setup();
    std::string installation;
  } m_Setup;

 public:
  CToolEngine();
  // `file` as the user wrote it; false, with the error logged, when it
  // can't be loaded.
  bool Load(const std::string &file);
  // Every scene the engine holds: play list entries and pool scenes.
  std::vector<CScene *> Scenes() const;
  // The entry that plays, and its time (a layered entry: its first layer's).
  CSceneBase *Active() const;
  float ActiveTime() const;
  // "Node.Port" (an in-port may name a component) in any of the scenes.
  CPort *FindPort(const std::string &address, std::string &component) const;

  CVelmor engine;
};

// Splits "--name value" options; anything else is positional.
bool TakeOption(std::vector<std::string> &args, const char *name, std::string &value);
