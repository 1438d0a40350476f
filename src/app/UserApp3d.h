#pragma once
// What the program does, as the host sees it: initialise, update, render.
// The host (CAppTypeWin) decides when; this decides what.

#include <string>

#include "platform/WindowMessage.h"
#include "render/Render.h"

class CSerialize;

class CUserApp3d : public CRenderClient {
 public:
  virtual ~CUserApp3d() = default;
  virtual bool Init() = 0;
  virtual void Free() = 0;
  virtual void Configure() = 0;
  bool Render() override = 0;
  virtual bool Update(float dt) = 0;
  virtual bool RestoreDeviceObjects() = 0;
  bool InvalidateDeviceObjects() override = 0;
  virtual std::string GetAppName() = 0;
  bool FrameFinished() override = 0;
  // The interface a visualizer host drives.
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
  virtual std::string GetScreenshotName() { return std::string(); }
  virtual void Serialize(CSerialize &serializer) = 0;
};
