#pragma once
// What the application object asks of the engine each frame, and the preset
// operations a visualizer host drives.

#include <string>

#include "core/RunMode.h"
#include "platform/WindowMessage.h"

class CRender;
class CSceneBase;
class CSerialize;

// What the program was asked to play, from the command line and config.
struct StartRequest {
  RunSettings settings;       // what the host's mode means for playing
  std::string file;           // a file named on the command line
  std::string projectFile;    // the project configured
  bool isScreensaver = true;  // false selects the visualizer defaults
  // A file that can't be loaded gives way to the default project; without
  // the fall-back it is an error naming that file.
  bool fallBack = true;
};

class IVelmorEngine {
 public:
  virtual ~IVelmorEngine() = default;
  // Loads what to play; false when nothing could be loaded at all.
  virtual bool Start(const StartRequest &request) = 0;
  virtual bool Update(float dt) = 0;
  virtual bool Draw(CRender *render) = 0;
  virtual bool FrameFinished() = 0;
  virtual bool RestoreDevice(CRender *render) = 0;
  virtual void InvalidateDevice(CRender *render) = 0;
  // Empty when no scene is active.
  virtual std::string ActiveSceneName() const = 0;
  // The entry that plays now; null when none does.
  virtual const CSceneBase *ActiveScene() const { return nullptr; }
  // The play settings of config.xml, read or written at the current element;
  // visualizer defaults apply first when `isScreensaver` is false.
  virtual void SerializeSettings(CSerialize &, bool /*isScreensaver*/) {}
  // The renderer device objects live on, once it exists.
  virtual void SetRender(CRender *) {}

  virtual void GetPresetName(int, char *out) { out[0] = 0; }
  virtual int GetPresetCount() { return 0; }
  virtual void SelectPreset(int) {}
  virtual int GetCurrentPreset() { return 0; }
  virtual void NextPreset() {}
  virtual void PreviousPreset() {}
  virtual void SetAutoChange(bool, bool) {}
  virtual void ShowMenu(int, int, WindowHandle) {}
  virtual void MenuSelected(int) {}
  virtual void ReactivateScene() {}
  virtual void OpenConfiguration() {}
};
