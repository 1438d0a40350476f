#pragma once
// Scenes and projects loaded the way the program loads them, for the
// commands that work on scene files.

#include <string>
#include <vector>

#include "engine/Velmor.h"

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

// Finds the installation (the current folder, or the one the tool is
// installed with), registers every node type, effect files included, and
// loads a scene (.vms) or project (.vmp) into an engine.
class CToolEngine {
  // Runs before the engine exists: the engine's factory registers the
  // built-in types when it is made.
  struct Setup {
    Setup();
    std::string installation;
  } m_Setup;

 public:
  CToolEngine();
  // `file` as the user wrote it; relative to the current folder.
  bool Load(const std::string &file);
  // Every scene the engine holds: play list entries and pool scenes.
  std::vector<CScene *> Scenes() const;

  CVelmor engine;
};

// Splits "--name value" options; anything else is positional.
bool TakeOption(std::vector<std::string> &args, const char *name, std::string &value);
