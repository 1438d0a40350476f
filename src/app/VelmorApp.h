#pragma once
// The application object: what Velmor does each frame, forwarded to the
// engine it owns.

#include <functional>
#include <memory>
#include <string>

#include "app/FrameTimer.h"
#include "app/UserApp3d.h"

class CHostChannel;
class IVelmorEngine;

class CVelmorApp : public CUserApp3d {
 public:
  using EngineMaker = std::function<std::unique_ptr<IVelmorEngine>()>;
  explicit CVelmorApp(EngineMaker makeEngine);
  ~CVelmorApp() override;

  bool Init() override;
  void Free() override;
  void Configure() override;
  bool Render() override;
  bool Update(float dt) override;
  bool RestoreDeviceObjects() override;
  bool InvalidateDeviceObjects() override;
  std::string GetAppName() override { return "Velmor"; }
  bool FrameFinished() override;
  void GetPresetName(int index, char *out) override;
  int GetPresetCount() override;
  void SelectPreset(int index) override;
  int GetCurrentPreset() override;
  void NextPreset() override;
  void PreviousPreset() override;
  void SetAutoChange(bool enabled, bool changeNow) override;
  void ShowMenu(int x, int y, WindowHandle window) override;
  void MenuSelected(int id) override;
  void ReactivateScene() override;
  void OpenConfiguration() override;
  std::string GetScreenshotName() override;
  void Serialize(CSerialize &serializer) override;

  IVelmorEngine *GetEngine() const { return m_Engine.get(); }

  // The engine wired to this process's sound analysis and host.
  static std::unique_ptr<IVelmorEngine> MakeVelmorEngine();

  std::string m_ProjectFile;
  bool m_IsScreensaver = true;
  // Host commands arriving while the program runs (--listen); may be null.
  std::unique_ptr<CHostChannel> m_HostChannel;
  // Closed unless the command line asks for frame times.
  CFrameTimeLog m_FrameTimes;

 private:
  EngineMaker m_MakeEngine;
  std::unique_ptr<IVelmorEngine> m_Engine;
};
