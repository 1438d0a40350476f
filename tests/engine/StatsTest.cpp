// Usage statistics: what stats.dat keeps, how runs and scenes are credited, and the upload
// as a server on this machine sees it: only when due; a dead service costs the program nothing.
#include "engine/Stats.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <chrono>
#include <ctime>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <tinyxml.h>
#include <unistd.h>

#include "core/FakeClock.h"
#include "platform/HttpPost.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// On 127.0.0.1: a live service answers one request; a dead one never accepts (yet connects).
class LocalServer {
 public:
  std::string url;
  std::atomic<bool> done{false};  // the request was answered
  explicit LocalServer(bool answers) : m_Socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in a{AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
    socklen_t size = sizeof(a);
    bind(m_Socket, reinterpret_cast<sockaddr *>(&a), size);
    listen(m_Socket, 4);
    getsockname(m_Socket, reinterpret_cast<sockaddr *>(&a), &size);
    url = "http://127.0.0.1:" + std::to_string(ntohs(a.sin_port));
    if (answers) m_Thread = std::thread([this] {
      if ((m_Client = accept(m_Socket, nullptr, nullptr)) < 0) return;
      char buffer[4096];
      for (ssize_t n; !Complete() && (n = read(m_Client, buffer, sizeof(buffer))) > 0;)
        m_Request.append(buffer, static_cast<size_t>(n));
      static const char ok[] = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";
      done = write(m_Client, ok, sizeof(ok) - 1) > 0;
    });
  }
  ~LocalServer() {
    shutdown(m_Socket, SHUT_RDWR);  // ends a wait in accept
    if (m_Thread.joinable()) m_Thread.join();
    close(m_Client), close(m_Socket);
  }
  bool Pending() const { return poll(std::array<pollfd, 1>{{{m_Socket, POLLIN, 0}}}.data(), 1, 0) > 0; }
  // The whole request once answered, empty if none came in time.
  std::string Request(std::chrono::milliseconds wait) const {
    for (auto until = Clock::now() + wait; !done && Clock::now() < until;) std::this_thread::sleep_for(10ms);
    return done ? m_Request : std::string();
  }

 private:
  bool Complete() const {
    const size_t head = m_Request.find("\r\n\r\n"), field = m_Request.find("Content-Length: ");
    return head != std::string::npos && field != std::string::npos &&
           m_Request.size() >= head + 4 + strtoul(m_Request.c_str() + field + 16, nullptr, 10);
  }
  int m_Socket, m_Client = -1;
  std::string m_Request;
  std::thread m_Thread;
};

// Counts the posts; with `send` the real poster makes them. The network is as the test says.
class TestPoster : public IHttpPoster {
 public:
  bool IsConnected(const std::string &) override { return connected; }
  bool PostAsync(const std::string &url, const std::string &body) override {
    return ++posts, !send || real.PostAsync(url, body);
  }
  bool connected = true, send = false;
  int posts = 0;
  CCurlPoster real;
};

class Stats : public testing::Test {
 protected:
  Stats() {
    SetNow(1715946330);  // 2024-05-17 11:45:30 UTC
    host.application = true;
    host.appType = 1;
    host.userPath = dir.Path();
    host.endpoint = "http://stats.invalid";
  }
  void SetNow(int64_t unixSeconds) {
    const time_t t = now = unixSeconds;
    tm u;
    gmtime_r(&t, &u);
    fake.clock.utc = {u.tm_year + 1900, u.tm_mon + 1, u.tm_mday, u.tm_hour, u.tm_min, u.tm_sec, 0, u.tm_wday};
  }
  // A new process's statistics.
  std::unique_ptr<CStats> Process() {
    auto s = std::make_unique<CStats>(poster);
    s->SetHostDescription([this] { return host; });
    return s;
  }
  void Play(CStats &s, const std::string &file, int64_t seconds, int frames) {
    s.SceneBegin("", file);
    for (int i = 0; i < frames; ++i) s.FrameFinished();
    SetNow(now + seconds);
    s.SceneEnd();
  }
  void RunOnce() {
    auto s = Process();
    s->Init();
    s->Exit();
  }
  static std::string StatsFile(const std::string &lastUpload) {
    return "<vmstats installdate=\"2024-01-02\" installid=\"ab\" lastupload=\"" + lastUpload + "\"/>";
  }
  TiXmlElement *Saved() {
    file = TiXmlDocument();
    file.Parse(TempDir::Read(dir / "stats.dat").c_str());
    return file.RootElement();
  }

  CScopedFakeClock fake;
  int64_t now = 0;
  TempDir dir;
  StatsHost host;
  TestPoster poster;
  TiXmlDocument file;
};
}  // namespace

TEST_F(Stats, TheFileKeepsIdentityAndCountsInItsOrderWithTheirChecksum) {
  EXPECT_EQ(Crc32("123456789"), 0xCBF43926u);  // the standard check value
  auto first = Process();
  first->Init();
  Play(*first, "[apppath]scenes/a.vms", 20, 600);
  SetNow(now + 20);
  first->Exit();

  TiXmlElement *root = Saved();
  ASSERT_NE(root, nullptr);
  std::string names;
  for (TiXmlAttribute *a = root->FirstAttribute(); a; a = a->Next()) names += a->NameTStr() + " ";
  for (TiXmlElement *e = root->FirstChildElement(); e; e = e->NextSiblingElement()) names += e->ValueStr() + " ";
  EXPECT_EQ(names, "installdate opengl desktopsize virtualsize nummonitors installid lastupload cores mem memfree c "
                   "screensaver winampvis wmpvis editor config scenes ");
  const std::string id = root->Attribute("installid");
  ASSERT_EQ(id.size(), 40u);
  EXPECT_EQ(strtoul(id.substr(32).c_str(), nullptr, 16), Crc32(id.substr(0, 32)));
  EXPECT_STREQ(root->FirstChildElement("screensaver")->Attribute("lastrun"), "2024-05-17");
  EXPECT_STREQ(root->FirstChildElement("scenes")->FirstChildElement("scene")->Attribute("file"),
               "[apppath]scenes\\a.vms");
  // Date, id, each block's runs plus seconds, then all scenes' runs and seconds.
  EXPECT_EQ(std::to_string(Crc32("2024-05-17" + id + "41" + "0000" + "120")), root->Attribute("c"));
  EXPECT_EQ(poster.posts, 0) << "the run that makes the file sends nothing";

  // The next run reads it back, and sends: it has never uploaded.
  auto next = Process();
  next->Init();
  EXPECT_EQ(next->m_InstallId, id);
  EXPECT_EQ(next->m_Screensaver.m_RunCount, 1);
  EXPECT_EQ(next->m_Screensaver.m_RunTime, 40);
  ASSERT_EQ(next->m_SceneStats.size(), 1u);
  EXPECT_EQ(next->m_SceneStats[0]->m_AvgFps, 30.0);
  EXPECT_EQ(poster.posts, 1);

  // Something that is no statistics file starts a new identity and sends nothing.
  dir.Write("stats.dat", "<other installid=\"" + id + "\"/>");
  auto fresh = Process();
  fresh->Init();
  EXPECT_NE(fresh->m_InstallId, id);
  EXPECT_EQ(poster.posts, 1);
}

TEST_F(Stats, ScenesAreCreditedByFileTimeAndFrameRate) {
  struct Played { std::string file; int64_t seconds; int frames; };
  struct Case {
    const char *what;
    bool countsScenes;
    std::vector<Played> plays;
    std::vector<StatsScene> expected;
  };
  const std::vector<Case> cases = {
      {"one scene", true, {{"[apppath]a.vms", 20, 600}}, {{"[apppath]a.vms", 1, 20, 30.0}}},
      {"the measure blends in", true, {{"x/a.vms", 20, 600}, {"x/a.vms", 10, 100}}, {{"x\\a.vms", 2, 30, 15.0}}},
      {"5 s or less: no rate", true, {{"x/a.vms", 5, 150}}, {{"x\\a.vms", 1, 5, 0.0}}},
      {"an hour is credited nowhere", true, {{"x/a.vms", 3540, 100}}, {}},
      {"each layer gets it all, an empty one nothing",
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
    auto stats = Process();
    stats->Init();
    for (const Played &p : c.plays) Play(*stats, p.file, p.seconds, p.frames);
    ASSERT_EQ(stats->m_SceneStats.size(), c.expected.size()) << c.what;
    for (size_t i = 0; i < c.expected.size(); ++i) {
      const StatsScene &got = *stats->m_SceneStats[i], &want = c.expected[i];
      EXPECT_EQ(got.m_File, want.m_File) << c.what;
      EXPECT_EQ(got.m_RunCount, want.m_RunCount) << c.what;
      EXPECT_EQ(got.m_RunTime, want.m_RunTime) << c.what;
      EXPECT_DOUBLE_EQ(got.m_AvgFps, want.m_AvgFps) << c.what;
    }
    std::remove((dir / "stats.dat").c_str());
  }
}

TEST_F(Stats, ARunIsCreditedToItsHostsBlockAndAlwaysLogged) {
  struct Case {
    int appType;
    bool send;
    int64_t seconds;
    const char *block;  // "": the file is written, no block counts it; null: no file
    const char *avgfps, *line;
  };
  const Case cases[] = {
      {1, true, 20, "screensaver", "20", "Runtime: 20 Frames: 400 Fps: 20.000000"},
      {1, true, 10, "screensaver", "0", "Runtime: 10 Frames: 400 Fps: 40.000000"},
      {5, true, 20, "editor", "20", "Runtime: 20 Frames: 400 Fps: 20.000000"},
      {8, true, 20, "wmpvis", "20", "Runtime: 20 Frames: 400 Fps: 20.000000"},
      {9, true, 20, "", "", "Runtime: 20 Frames: 400 Fps: 20.000000"},
      {3, true, 20, nullptr, "", "Runtime: 20 Frames: 400 Fps: 20.000000"},
      {1, false, 20, nullptr, "", "Runtime: 20 Frames: 400 Fps: 20.000000"},
  };
  for (const Case &c : cases) {
    std::remove((dir / "stats.dat").c_str());
    host.appType = c.appType;
    host.sendUsageInfo = c.send;
    LogCapture log;
    auto run = Process();
    run->Init();
    for (int i = 0; i < 400; ++i) run->FrameFinished();
    SetNow(now + c.seconds);
    run->Exit();
    EXPECT_TRUE(log.Has(c.line)) << c.appType;
    TiXmlElement *root = Saved();
    EXPECT_EQ(root != nullptr, c.block != nullptr) << c.appType;
    if (!root || !c.block || !*c.block) continue;
    EXPECT_STREQ(root->FirstChildElement(c.block)->Attribute("runcount"), "1") << c.appType;
    EXPECT_STREQ(root->FirstChildElement(c.block)->Attribute("avgfps"), c.avgfps) << c.appType;
  }
}

TEST_F(Stats, TheServiceSeesTheFileOnlyWhenItIsDue) {
  struct Case {
    const char *what;
    const char *lastUpload;
    bool send, named, preview, connected, expected;
  };
  const Case cases[] = {
      {"never uploaded", "", true, true, false, true, true},
      {"eight days ago", "20240509 11:45", true, true, false, true, true},
      {"six days ago", "20240511 11:45", true, true, false, true, false},
      {"statistics off", "", false, true, false, true, false},
      {"no service named", "", true, false, false, true, false},
      {"preview", "", true, true, true, true, false},
      {"no network", "", true, true, false, false, false},
  };
  for (const Case &c : cases) {
    dir.Write("stats.dat", StatsFile(c.lastUpload));
    LocalServer server(true);
    poster.send = true;
    poster.connected = c.connected;
    host.sendUsageInfo = c.send;
    host.preview = c.preview;
    host.endpoint = c.named ? server.url : "";
    LogCapture log;
    RunOnce();

    const std::string request = server.Request(c.expected ? 3000ms : 300ms);
    EXPECT_EQ(!request.empty(), c.expected) << c.what << "\n" << request;
    EXPECT_EQ(log.Has("Uploading anonymous usage statistics"), c.expected) << c.what;
    EXPECT_EQ(log.Has("No internet connection found. Postponing upload of anonymous usage statistics"), !c.connected)
        << c.what;
    if (!c.expected) continue;
    EXPECT_EQ(request.rfind("POST /vmstats HTTP/1.1\r\n", 0), 0u) << request;
    EXPECT_NE(request.find("\r\nContent-Type: text/xml\r\n"), std::string::npos) << request;
    EXPECT_NE(request.find("\r\nUser-Agent: Velmor 1.8\r\n"), std::string::npos) << request;
    EXPECT_EQ(request.substr(request.find("\r\n\r\n") + 4), StatsFile(c.lastUpload)) << "the file as it was";
    EXPECT_STREQ(Saved()->Attribute("lastupload"), "20240517 11:45") << c.what;
  }
}

TEST_F(Stats, ADeadServiceDelaysNeitherTheRunNorTheExit) {
  LocalServer dead(false);
  dir.Write("stats.dat", StatsFile(""));
  int go[2];
  ASSERT_EQ(pipe(go), 0);
  const auto start = Clock::now();
  const pid_t child = fork();
  if (child == 0) {
    // Reports how long the run took in tens of milliseconds, ends while the upload waits for its
    // answer. quick_exit: the leak check at exit can't stop a thread blocked in a socket here.
    poster.send = true;
    host.endpoint = dead.url;
    RunOnce();
    const auto took = (Clock::now() - start) / 10ms;
    char byte;
    (void)!read(go[0], &byte, 1);
    quick_exit(static_cast<int>(std::min<int64_t>(250, took)));
  }
  ASSERT_GT(child, 0);
  const auto limit = std::chrono::milliseconds(CCurlPoster::TotalTimeoutMs);
  while (!dead.Pending() && Clock::now() - start < limit) std::this_thread::sleep_for(5ms);
  EXPECT_TRUE(dead.Pending()) << "the upload never started";
  (void)!write(go[1], "x", 1);
  const auto released = Clock::now();
  int status = -1;
  while (waitpid(child, &status, WNOHANG) == 0 && Clock::now() - released < limit) std::this_thread::sleep_for(5ms);
  EXPECT_LT(Clock::now() - released, 1s) << "the exit waited for the upload, which the dead service holds";
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 100) << "the run took " << WEXITSTATUS(status) * 10 << " ms";
  if (Clock::now() - released >= limit) kill(child, SIGKILL), waitpid(child, nullptr, 0);
  close(go[0]), close(go[1]);
}
