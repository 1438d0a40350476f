// Usage statistics: what stats.dat holds and keeps between runs, how runs
// and scenes are credited, and when the file is sent to the service.
#include "engine/Stats.h"

#include <gtest/gtest.h>

#include <ctime>
#include <tinyxml.h>

#include "core/FakeClock.h"
#include "platform/HttpPost.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {
constexpr int64_t kNow = 1715946330;  // 2024-05-17 11:45:30 UTC

void SetUtc(CFakeClock &clock, int64_t unixSeconds) {
  const time_t t = unixSeconds;
  tm u;
  gmtime_r(&t, &u);
  clock.utc = {u.tm_year + 1900, u.tm_mon + 1, u.tm_mday, u.tm_hour, u.tm_min, u.tm_sec, 0, u.tm_wday};
}

class NoPoster : public IHttpPoster {
 public:
  bool IsConnected(const std::string &) override { return true; }
  bool PostAsync(const std::string &, const std::string &) override { return ++posts, true; }
  int posts = 0;
};

class Stats : public testing::Test {
 protected:
  Stats() {
    SetUtc(fake.clock, now);
    host.application = true;
    host.appType = 1;
    host.userPath = dir.Path();
    stats.SetHostDescription([this] { return host; });
  }
  void Advance(int64_t seconds, int frames = 0) {
    for (int i = 0; i < frames; ++i) stats.FrameFinished();
    SetUtc(fake.clock, now += seconds);
  }
  void Play(const std::string &file, int64_t seconds, int frames) {
    stats.SceneBegin("", file);
    Advance(seconds, frames);
    stats.SceneEnd();
  }
  TiXmlElement *Saved() {
    file = TiXmlDocument();
    file.Parse(TempDir::Read(dir / "stats.dat").c_str());
    return file.RootElement();
  }

  CScopedFakeClock fake;
  int64_t now = kNow;
  TempDir dir;
  StatsHost host;
  NoPoster poster;
  CStats stats{poster};
  TiXmlDocument file;
};
}  // namespace

TEST_F(Stats, TheFileKeepsIdentityAndCountsInItsOrderWithTheirChecksum) {
  EXPECT_EQ(Crc32("123456789"), 0xCBF43926u);  // the standard check value
  stats.Init();
  Play("[apppath]scenes/a.vms", 20, 600);
  Advance(20);
  stats.Exit();

  TiXmlElement *root = Saved();
  ASSERT_NE(root, nullptr);
  std::string attributes, children;
  for (TiXmlAttribute *a = root->FirstAttribute(); a; a = a->Next()) attributes += a->NameTStr() + " ";
  for (TiXmlElement *e = root->FirstChildElement(); e; e = e->NextSiblingElement()) children += e->ValueStr() + " ";
  EXPECT_EQ(attributes,
            "installdate opengl desktopsize virtualsize nummonitors installid lastupload cores mem memfree c ");
  EXPECT_EQ(children, "screensaver winampvis wmpvis editor config scenes ");
  const std::string id = root->Attribute("installid");
  ASSERT_EQ(id.size(), 40u);
  char tail[9];
  snprintf(tail, sizeof(tail), "%08x", Crc32(id.substr(0, 32)));
  EXPECT_EQ(id.substr(32), tail);
  EXPECT_STREQ(root->Attribute("installdate"), "2024-05-17");
  // Date, id, each block's runs plus seconds, then all scenes' runs and seconds.
  const std::string items = std::string("2024-05-17") + id + "41" + "0000" + "120";
  EXPECT_EQ(std::to_string(Crc32(items)), root->Attribute("c"));
  const TiXmlElement *saver = root->FirstChildElement("screensaver");
  EXPECT_STREQ(saver->Attribute("lastrun"), "2024-05-17");
  EXPECT_STREQ(root->FirstChildElement("scenes")->FirstChildElement("scene")->Attribute("file"),
               "[apppath]scenes\\a.vms");

  // The next run reads it back and adds to it.
  host.endpoint = "http://stats.invalid";
  NoPoster poster2;
  CStats next(poster2);
  next.SetHostDescription([this] { return host; });
  next.Init();
  EXPECT_EQ(next.m_InstallId, id);
  EXPECT_EQ(next.m_Screensaver.m_RunCount, 1);
  EXPECT_EQ(next.m_Screensaver.m_RunTime, 40);
  ASSERT_EQ(next.m_SceneStats.size(), 1u);
  EXPECT_EQ(next.m_SceneStats[0]->m_AvgFps, 30.0);
  EXPECT_EQ(poster2.posts, 1) << "the second run sends: it has never uploaded";

  // Something that is no statistics file starts a new identity and sends nothing.
  dir.Write("stats.dat", "<other installid=\"" + id + "\"/>");
  CStats fresh(poster2);
  fresh.SetHostDescription([this] { return host; });
  fresh.Init();
  EXPECT_NE(fresh.m_InstallId, id);
  EXPECT_EQ(poster2.posts, 1);
}

TEST_F(Stats, ScenesAreCreditedByFileTimeAndFrameRate) {
  struct PlayedScene {
    std::string file;
    int64_t seconds;
    int frames;
  };
  struct Case {
    const char *what;
    bool countsScenes;
    std::vector<PlayedScene> plays;
    std::vector<StatsScene> expected;
  };
  const std::vector<Case> cases = {
      {"one scene", true, {{"[apppath]a.vms", 20, 600}}, {{"[apppath]a.vms", 1, 20, 30.0}}},
      {"the measure blends in", true, {{"x/a.vms", 20, 600}, {"x/a.vms", 10, 100}}, {{"x\\a.vms", 2, 30, 15.0}}},
      {"5 s or less: no rate", true, {{"x/a.vms", 5, 150}}, {{"x\\a.vms", 1, 5, 0.0}}},
      {"an hour is credited nowhere", true, {{"x/a.vms", 3540, 100}}, {}},
      {"each layer gets it all, empty ones nothing",
       true,
       {{"x/b.vms;;x/p.vms", 10, 100}},
       {{"x\\b.vms", 1, 10, 10.0}, {"x\\p.vms", 1, 10, 10.0}}},
      {"the user's own scenes stay out",
       true,
       {{"[userpath]projects/mine.vms", 10, 0}, {"[userpath]Imported/x.vms", 10, 0}},
       {{"[userpath]Imported\\x.vms", 1, 10, 0.0}}},
      {"an editor counts no scene", false, {{"x/a.vms", 10, 100}}, {}},
  };
  for (const Case &c : cases) {
    host.countsScenes = c.countsScenes;
    stats.Init();
    for (const PlayedScene &p : c.plays) Play(p.file, p.seconds, p.frames);
    ASSERT_EQ(stats.m_SceneStats.size(), c.expected.size()) << c.what;
    for (size_t i = 0; i < c.expected.size(); ++i) {
      const StatsScene &got = *stats.m_SceneStats[i], &want = c.expected[i];
      EXPECT_EQ(got.m_File, want.m_File) << c.what;
      EXPECT_EQ(got.m_RunCount, want.m_RunCount) << c.what;
      EXPECT_EQ(got.m_RunTime, want.m_RunTime) << c.what;
      EXPECT_DOUBLE_EQ(got.m_AvgFps, want.m_AvgFps) << c.what;
    }
    stats.m_SceneStats.clear();
  }
}

TEST_F(Stats, ARunIsCreditedToItsHostsBlockAndAlwaysLogged) {
  struct Case {
    int appType;
    bool send;
    int64_t seconds;
    int frames;
    const char *block;       // null: no block counts it
    bool written;
    const char *avgfps;
    const char *line;
  };
  const Case cases[] = {
      {1, true, 20, 400, "screensaver", true, "20", "Runtime: 20 Frames: 400 Fps: 20.000000"},
      {1, true, 10, 400, "screensaver", true, "0", "Runtime: 10 Frames: 400 Fps: 40.000000"},
      {5, true, 20, 400, "editor", true, "20", "Runtime: 20 Frames: 400 Fps: 20.000000"},
      {8, true, 20, 400, "wmpvis", true, "20", "Runtime: 20 Frames: 400 Fps: 20.000000"},
      {9, true, 20, 400, nullptr, true, "", "Runtime: 20 Frames: 400 Fps: 20.000000"},
      {3, true, 20, 400, nullptr, false, "", "Runtime: 20 Frames: 400 Fps: 20.000000"},
      {1, false, 20, 400, nullptr, false, "", "Runtime: 20 Frames: 400 Fps: 20.000000"},
  };
  for (const Case &c : cases) {
    std::remove((dir / "stats.dat").c_str());
    host.appType = c.appType;
    host.sendUsageInfo = c.send;
    LogCapture log;
    CStats run(poster);
    run.SetHostDescription([this] { return host; });
    SetUtc(fake.clock, now);
    run.Init();
    for (int i = 0; i < c.frames; ++i) run.FrameFinished();
    SetUtc(fake.clock, now + c.seconds);
    run.Exit();
    EXPECT_TRUE(log.Has(c.line)) << c.appType;
    TiXmlElement *root = Saved();
    EXPECT_EQ(root != nullptr, c.written) << c.appType;
    if (!root || !c.block) continue;
    const TiXmlElement *block = root->FirstChildElement(c.block);
    EXPECT_STREQ(block->Attribute("runcount"), "1") << c.appType;
    EXPECT_STREQ(block->Attribute("avgfps"), c.avgfps) << c.appType;
  }
}
