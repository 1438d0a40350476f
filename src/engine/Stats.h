#pragma once
// Anonymous usage statistics: how often and how long the program runs, per
// kind of host and per scene, and at which frame rate. The counts live in
// stats.dat in the user's folder; about once a week that file is sent to
// the statistics service, when one is configured. SendAnonymousUsageInfo
// turns all of it off.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "engine/EngineServices.h"
#include "scene/Dag.h"

class IHttpPoster;

// A date in UTC, as scene files keep theirs; all zero is unset.
struct StatsDate : SceneDate {
  StatsDate() = default;
  StatsDate(const SceneDate &d) : SceneDate(d) {}  // implicit: the same six fields
  bool IsSet() const { return year || month || day || hour || minute || second; }
  // Whole seconds from a fixed epoch; 0 when unset. Only differences count.
  int64_t Seconds() const;
  std::string Day() const;  // "YYYY-MM-DD"
};

struct StatsBlock {
  int32_t m_RunCount = 0;
  int32_t m_RunTime = 0;  // seconds
  double m_AvgFps = 0.0;
  std::string m_LastRun;
};

struct StatsScene {
  std::string m_File;  // with its path macros, "\" as separator
  int32_t m_RunCount = 0;
  int32_t m_RunTime = 0;
  double m_AvgFps = 0.0;
};

// What the host says about this run, asked at Init and at Exit.
struct StatsHost {
  bool application = false;   // an application object runs the engine
  int appType = 0;            // chooses the block that counts the run
  bool sendUsageInfo = true;  // the configuration's SendAnonymousUsageInfo
  bool countsScenes = true;   // scenes are counted (not in an editor or the configuration)
  bool preview = false;       // a preview never uploads
  std::string userPath;       // where stats.dat lives
  std::string endpoint;       // the statistics service; empty: nothing is ever sent
  // The renderer's facts, written into the file.
  std::string openGLInfo, desktopSize, virtualSize;
  int numMonitors = 0;
};

class CStats final : public IStats {
 public:
  explicit CStats(IHttpPoster &poster);
  ~CStats() override;

  void SetHostDescription(std::function<StatsHost()> describe) { m_DescribeHost = std::move(describe); }

  void Init() override;
  void Exit() override;
  void SceneBegin(const std::string &name, const std::string &file) override;
  void SceneEnd() override;
  void FrameFinished() override;

  // The file's text as Exit writes it, and reading it back (false: not a
  // statistics file).
  std::string Document() const;
  bool Load(const std::string &text);
  uint32_t Checksum() const;

  std::string m_InstallDate;
  std::string m_InstallId;
  std::string m_OpenGLInfo;
  std::string m_DesktopSize;
  int32_t m_NumMonitors = 0;
  StatsBlock m_Screensaver, m_WinampVis, m_WmpVis, m_Editor, m_Config;
  std::vector<std::unique_ptr<StatsScene>> m_SceneStats;
  StatsDate m_LastUpload;
  StatsDate m_StartTime;
  int32_t m_Frames = 0;
  StatsDate m_SceneStart;
  int32_t m_SceneFrames = 0;
  std::string m_SceneFile;
  bool m_Enabled = true;
  bool m_SkipUpload = false;

  static constexpr int64_t UploadInterval = 604800;   // a week
  static constexpr int64_t MaxSceneSeconds = 3540;    // a scene left running for an hour is no choice of a viewer
  static constexpr const char *UploadPath = "vmstats";

 private:
  std::string FilePath() const;
  void NewIdentity();
  void CheckUpload();
  void Credit(const std::string &file, int64_t elapsed);
  StatsBlock *BlockOf(int appType);
  void Fail(const char *format, const char *what);

  IHttpPoster &m_Poster;
  std::function<StatsHost()> m_DescribeHost;
  StatsHost m_Host;
};

// The standard CRC-32 (reflected 0xEDB88320, start and result inverted).
uint32_t Crc32(const std::string &bytes);

// The statistics service: VELMOR_STATS_URL from the environment, else the
// configured one, else the one the build names; empty when none does.
std::string StatsEndpoint(const std::string &configured);

// The process's statistics, uploading through libcurl.
CStats &GetStats();
