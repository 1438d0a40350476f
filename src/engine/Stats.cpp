#include "engine/Stats.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <tinyxml.h>

#include "core/Clock.h"
#include "core/Log.h"
#include "core/Paths.h"
#include "platform/HttpPost.h"
#include "platform/SystemInfo.h"
#include "scene/Scene.h"

#ifndef VELMOR_STATS_URL
#define VELMOR_STATS_URL ""
#endif

namespace {
// The host blocks in file order, with the kinds of host they count.
struct BlockSlot {
  const char *element;
  StatsBlock CStats::*block;
  int appType;
};
constexpr BlockSlot kBlocks[] = {{"screensaver", &CStats::m_Screensaver, 1},
                                 {"winampvis", &CStats::m_WinampVis, 7},
                                 {"wmpvis", &CStats::m_WmpVis, 8},
                                 {"editor", &CStats::m_Editor, 5},
                                 {"config", &CStats::m_Config, 6}};
constexpr int kUncountedAppType = 9;  // writes the file, counted nowhere

StatsDate Now() { return SceneDateNow(); }

std::string Format(const char *format, ...) VELMOR_PRINTF(1, 2);
std::string Format(const char *format, ...) {
  char text[64];
  va_list args;
  va_start(args, format);
  vsnprintf(text, sizeof(text), format, args);
  va_end(args);
  return text;
}

int32_t IntAttribute(const TiXmlElement *e, const char *name) {
  const char *v = e->Attribute(name);
  if (!v) return 0;
  const long long n = strtoll(v, nullptr, 10);
  return static_cast<int32_t>(n < INT32_MIN ? INT32_MIN : n > INT32_MAX ? INT32_MAX : n);
}

std::string TextAttribute(const TiXmlElement *e, const char *name) {
  const char *v = e->Attribute(name);
  return v ? v : "";
}

// Counts and seconds in the file are 32-bit; a long run saturates.
int32_t AddSaturated(int32_t a, int64_t b) {
  const int64_t sum = a + b;
  return static_cast<int32_t>(sum > INT32_MAX ? INT32_MAX : sum < INT32_MIN ? INT32_MIN : sum);
}

// A new measure weighs three quarters; an average under 0.01 is no value.
void Blend(double &average, double fps) { average = average >= 0.01 ? average * 0.25 + fps * 0.75 : fps; }

void SetCounts(TiXmlElement &e, int32_t runCount, int32_t runTime) {
  e.SetAttribute("runcount", runCount);
  e.SetAttribute("runtime", runTime);
}

std::string ReadFile(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  return in ? std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()) : std::string();
}
}  // namespace

int64_t StatsDate::Seconds() const {
  if (!IsSet()) return 0;
  // Days from a civil date (proleptic Gregorian), then the time of day.
  const int64_t y = year - (month <= 2);
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const int64_t yoe = y - era * 400;
  const int64_t doy = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const int64_t days = era * 146097 + yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return days * 86400 + hour * 3600 + minute * 60 + second;
}

std::string StatsDate::Day() const {
  return Format("%04ld-%02ld-%02ld", static_cast<long>(year), static_cast<long>(month), static_cast<long>(day));
}

uint32_t Crc32(const std::string &bytes) {
  uint32_t crc = 0xFFFFFFFFu;
  for (unsigned char b : bytes) {
    crc ^= b;
    for (int i = 0; i < 8; ++i) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
  }
  return ~crc;
}

std::string StatsEndpoint(const std::string &configured) {
  if (const char *env = getenv("VELMOR_STATS_URL"); env && *env) return env;
  return configured.empty() ? VELMOR_STATS_URL : configured;
}

CStats &GetStats() {
  static CCurlPoster poster;
  static CStats stats(poster);
  return stats;
}

CStats::CStats(IHttpPoster &poster) : m_Poster(poster) {}

CStats::~CStats() = default;

std::string CStats::FilePath() const { return JoinPath(m_Host.userPath, "stats.dat"); }

void CStats::Fail(const char *format, const char *what) {
  LogError(format, what);
  m_Enabled = false;
}

void CStats::Init() {
  m_StartTime = Now();
  m_Host = m_DescribeHost ? m_DescribeHost() : StatsHost{};
  if (!m_Host.sendUsageInfo) m_Enabled = false;
  if (!m_Enabled) return;
  try {
    m_Frames = 0;
    m_SceneFrames = 0;
    if (!Load(ReadFile(FilePath()))) NewIdentity();
    CheckUpload();
  } catch (const std::exception &e) {
    Fail("Failed to init stats: %s", e.what());
  }
}

void CStats::NewIdentity() {
  m_InstallDate = m_StartTime.Day();
  // The run that creates the file sends nothing.
  m_SkipUpload = true;
  unsigned char g[16];
  RandomBytes(g, sizeof(g));
  char id[41];
  snprintf(id, 33, "%08x%04x%04x%02x%02x%02x%02x%02x%02x%02x%02x",
           static_cast<unsigned>(g[0] | g[1] << 8 | g[2] << 16 | static_cast<unsigned>(g[3]) << 24),
           static_cast<unsigned>(g[4] | g[5] << 8), static_cast<unsigned>(g[6] | g[7] << 8), g[8], g[9], g[10], g[11],
           g[12], g[13], g[14], g[15]);
  snprintf(id + 32, 9, "%08x", static_cast<unsigned>(Crc32(std::string(id, 32))));
  m_InstallId = id;
}

void CStats::CheckUpload() {
  if (m_SkipUpload || m_Host.preview || !m_Host.countsScenes || m_Host.endpoint.empty()) return;
  const StatsDate now = Now();
  if (now.Seconds() - m_LastUpload.Seconds() <= UploadInterval) return;
  if (!m_Poster.IsConnected(m_Host.endpoint)) {
    Log("No internet connection found. Postponing upload of anonymous usage statistics");
    return;
  }
  Log("Uploading anonymous usage statistics");
  // The file as the last run left it.
  const std::string url = m_Host.endpoint + (m_Host.endpoint.back() == '/' ? "" : "/") + UploadPath;
  if (m_Poster.PostAsync(url, ReadFile(FilePath()))) {
    m_SkipUpload = true;  // once per process at most
    m_LastUpload = now;
  } else {
    Log("No internet connection found. Postponing upload of anonymous usage statistics.");
  }
}

void CStats::SceneBegin(const std::string & /*name*/, const std::string &file) {
  if (!m_Host.application || !m_Host.countsScenes || !m_Enabled) return;
  m_SceneFile = file;
  m_SceneStart = Now();
  m_SceneFrames = 0;
}

void CStats::SceneEnd() {
  if (m_SceneFile.empty() || !m_SceneStart.IsSet() || !m_Enabled) return;
  try {
    const int64_t seconds = Now().Seconds() - m_SceneStart.Seconds();
    if (seconds < MaxSceneSeconds) {
      // A layered scene credits its three files, each with the full time.
      const size_t first = m_SceneFile.find(';');
      if (first == std::string::npos) {
        Credit(m_SceneFile, seconds);
      } else {
        const size_t second = m_SceneFile.find(';', first + 1);
        Credit(m_SceneFile.substr(0, first), seconds);
        Credit(m_SceneFile.substr(first + 1, second == std::string::npos ? std::string::npos : second - first - 1),
               seconds);
        if (second != std::string::npos) Credit(m_SceneFile.substr(second + 1), seconds);
      }
    }
  } catch (const std::exception &e) {
    Fail("Stats failed during scene end: %s", e.what());
  }
  m_SceneFile.clear();
  m_SceneStart = StatsDate{};
  m_SceneFrames = 0;
}

void CStats::Credit(const std::string &path, int64_t elapsed) {
  std::string file = path;
  for (char &c : file)
    if (c == '/') c = '\\';
  if (file.size() <= 3) return;  // also an empty layer
  // Scenes the user made stay out of the counts, unless imported.
  const size_t slash = file.rfind('\\');
  const std::string folder = slash == std::string::npos ? std::string() : file.substr(0, slash);
  if (folder.find("[userpath]") != std::string::npos && folder.find("Imported") == std::string::npos) return;
  StatsScene *record = nullptr;
  for (auto &s : m_SceneStats)
    if (s->m_File == file) record = s.get();
  if (!record) {
    m_SceneStats.push_back(std::make_unique<StatsScene>());
    record = m_SceneStats.back().get();
    record->m_File = file;
  }
  record->m_RunCount = AddSaturated(record->m_RunCount, 1);
  if (elapsed > 5) Blend(record->m_AvgFps, static_cast<double>(m_SceneFrames) / static_cast<double>(elapsed));
  record->m_RunTime = AddSaturated(record->m_RunTime, elapsed);
}

void CStats::FrameFinished() {
  ++m_Frames;
  if (m_Host.application && m_Host.countsScenes && m_Enabled && !m_SceneFile.empty()) ++m_SceneFrames;
}

StatsBlock *CStats::BlockOf(int appType) {
  for (const BlockSlot &slot : kBlocks)
    if (slot.appType == appType) return &(this->*slot.block);
  return nullptr;
}

void CStats::Exit() {
  if (!m_StartTime.IsSet()) return;
  const StatsDate start = m_StartTime;
  m_StartTime = StatsDate{};  // a run ends once
  const int64_t seconds = Now().Seconds() - start.Seconds();
  const double fps = seconds > 0 ? m_Frames / static_cast<double>(seconds) : 0.0;
  Log("Runtime: %lld Frames: %ld Fps: %f", static_cast<long long>(seconds), static_cast<long>(m_Frames), fps);
  if (!m_Host.application || !m_Enabled) return;
  try {
    SceneEnd();
    const StatsHost host = m_DescribeHost ? m_DescribeHost() : m_Host;
    if (!host.openGLInfo.empty()) m_OpenGLInfo = host.openGLInfo;
    if (!host.desktopSize.empty()) m_DesktopSize = host.desktopSize;
    if (host.numMonitors) m_NumMonitors = host.numMonitors;
    m_Host.virtualSize = host.virtualSize;
    StatsBlock *block = BlockOf(m_Host.appType);
    if (!block && m_Host.appType != kUncountedAppType) return;
    if (block) {
      block->m_RunCount = AddSaturated(block->m_RunCount, 1);
      block->m_RunTime = AddSaturated(block->m_RunTime, seconds);
      if (m_Frames > 0 && seconds > 10) Blend(block->m_AvgFps, fps);
      block->m_LastRun = start.Day();
    }
    // A file that can't be opened for writing stays as it was.
    if (FILE *f = fopen(FilePath().c_str(), "wb")) {
      const std::string text = Document();
      fwrite(text.data(), 1, text.size(), f);
      fclose(f);
    }
    m_SceneStats.clear();
  } catch (const std::exception &e) {
    Fail("Stats failed during exit: %s", e.what());
  }
}

uint32_t CStats::Checksum() const {
  std::string items = m_InstallDate + m_InstallId;
  for (const BlockSlot &slot : kBlocks) {
    const StatsBlock &b = this->*slot.block;
    items += Format("%ld", static_cast<long>(b.m_RunCount) + b.m_RunTime);
  }
  long runs = 0, time = 0;
  for (const auto &s : m_SceneStats) runs += s->m_RunCount, time += s->m_RunTime;
  return Crc32(items + Format("%ld%ld", runs, time));
}

std::string CStats::Document() const {
  const SystemFacts facts = GetSystemFacts();
  TiXmlElement root("vmstats");
  root.SetAttribute("installdate", m_InstallDate);
  root.SetAttribute("opengl", m_OpenGLInfo);
  root.SetAttribute("desktopsize", m_DesktopSize);
  root.SetAttribute("virtualsize", m_Host.virtualSize);
  root.SetAttribute("nummonitors", m_NumMonitors);
  root.SetAttribute("installid", m_InstallId);
  const StatsDate &u = m_LastUpload;
  root.SetAttribute("lastupload", u.IsSet() ? FormatSceneDate(u) : std::string());
  root.SetAttribute("cores", static_cast<int>(facts.processors));
  root.SetAttribute("mem", static_cast<int>(facts.memoryBytes >> 20));
  root.SetAttribute("memfree", static_cast<int>(facts.availableBytes >> 20));
  root.SetAttribute("c", Format("%lu", static_cast<unsigned long>(Checksum())));
  for (const BlockSlot &slot : kBlocks) {
    const StatsBlock &b = this->*slot.block;
    TiXmlElement e(slot.element);
    SetCounts(e, b.m_RunCount, b.m_RunTime);
    e.SetAttribute("lastrun", b.m_LastRun);
    e.SetAttribute("avgfps", static_cast<int>(b.m_AvgFps));
    root.InsertEndChild(e);
  }
  TiXmlElement scenes("scenes");
  for (const auto &s : m_SceneStats) {
    TiXmlElement e("scene");
    e.SetAttribute("file", s->m_File);
    SetCounts(e, s->m_RunCount, s->m_RunTime);
    e.SetAttribute("avgfps", static_cast<int>(s->m_AvgFps));
    scenes.InsertEndChild(e);
  }
  root.InsertEndChild(scenes);
  TiXmlPrinter printer;
  root.Accept(&printer);
  return printer.Str();
}

bool CStats::Load(const std::string &text) {
  m_SceneStats.clear();
  for (const BlockSlot &slot : kBlocks) this->*slot.block = StatsBlock{};
  m_LastUpload = StatsDate{};
  TiXmlDocument doc;
  doc.Parse(text.c_str());
  const TiXmlElement *root = doc.Error() ? nullptr : doc.RootElement();
  // Anything else under the name is no statistics file of ours.
  if (!root || root->ValueStr() != "vmstats") return false;
  m_InstallDate = TextAttribute(root, "installdate");
  m_InstallId = TextAttribute(root, "installid");
  m_LastUpload = ParseSceneDate(TextAttribute(root, "lastupload"));  // seconds stay 0
  for (const BlockSlot &slot : kBlocks) {
    const TiXmlElement *e = root->FirstChildElement(slot.element);
    if (!e) continue;
    StatsBlock &b = this->*slot.block;
    b.m_RunCount = IntAttribute(e, "runcount");
    b.m_RunTime = IntAttribute(e, "runtime");
    b.m_LastRun = TextAttribute(e, "lastrun");
    b.m_AvgFps = IntAttribute(e, "avgfps");
  }
  if (const TiXmlElement *scenes = root->FirstChildElement("scenes"))
    for (const TiXmlElement *e = scenes->FirstChildElement("scene"); e; e = e->NextSiblingElement("scene")) {
      auto s = std::make_unique<StatsScene>();
      s->m_File = TextAttribute(e, "file");
      s->m_RunCount = IntAttribute(e, "runcount");
      s->m_RunTime = IntAttribute(e, "runtime");
      s->m_AvgFps = IntAttribute(e, "avgfps");
      m_SceneStats.push_back(std::move(s));
    }
  return true;
}
