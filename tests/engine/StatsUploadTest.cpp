// The weekly upload as a server on this machine sees it: only when due,
// never when off or with no service named, and a dead service costs the
// program nothing.
#include "engine/Stats.h"

#include <gtest/gtest.h>

#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "core/FakeClock.h"
#include "platform/HttpPost.h"
#include "support/LogCapture.h"
#include "support/TempDir.h"

namespace {
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// One connection on 127.0.0.1: the request is kept; a dead service never answers.
class LocalServer {
 public:
  explicit LocalServer(bool answers) : m_Answers(answers) {
    m_Socket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(a);
    bind(m_Socket, reinterpret_cast<sockaddr *>(&a), size);
    listen(m_Socket, 4);
    getsockname(m_Socket, reinterpret_cast<sockaddr *>(&a), &size);
    m_Url = "http://127.0.0.1:" + std::to_string(ntohs(a.sin_port));
    m_Thread = std::thread([this] { Serve(); });
  }
  ~LocalServer() {
    m_Stop = true;
    m_Thread.join();
    close(m_Socket);
  }
  const std::string &Url() const { return m_Url; }
  bool Connected() const { return m_Connected; }
  // The whole request once it has come, empty if none came in time.
  std::string Request(std::chrono::milliseconds wait) {
    for (auto until = Clock::now() + wait; !m_Done && Clock::now() < until;) std::this_thread::sleep_for(10ms);
    return m_Done ? m_Request : std::string();
  }

 private:
  bool Wait(int fd) {
    pollfd p{fd, POLLIN, 0};
    while (!m_Stop)
      if (poll(&p, 1, 20) > 0) return true;
    return false;
  }
  void Serve() {
    if (!Wait(m_Socket)) return;
    const int c = accept(m_Socket, nullptr, nullptr);
    m_Connected = true;
    char buffer[4096];
    while (!m_Done && Wait(c)) {
      const ssize_t n = read(c, buffer, sizeof(buffer));
      if (n <= 0) break;
      m_Request.append(buffer, static_cast<size_t>(n));
      const size_t head = m_Request.find("\r\n\r\n"), field = m_Request.find("Content-Length: ");
      if (head == std::string::npos || field == std::string::npos) continue;
      if (m_Request.size() >= head + 4 + strtoul(m_Request.c_str() + field + 16, nullptr, 10) && m_Answers) {
        static const char ok[] = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";
        (void)!write(c, ok, sizeof(ok) - 1);
        m_Done = true;
      }
    }
    Wait(-1);  // a dead service holds the connection until the test ends
    close(c);
  }

  bool m_Answers;
  int m_Socket = -1;
  std::string m_Url, m_Request;
  std::atomic<bool> m_Stop{false}, m_Done{false}, m_Connected{false};
  std::thread m_Thread;
};

// The real poster, on a machine whose network is as the case says.
class TestPoster : public IHttpPoster {
 public:
  bool IsConnected(const std::string &) override { return connected; }
  bool PostAsync(const std::string &url, const std::string &body) override { return real.PostAsync(url, body); }
  bool connected = true;
  CCurlPoster real;
};

constexpr const char *kStats = "<vmstats installdate=\"2024-01-02\" installid=\"ab\" lastupload=\"%s\"/>";

std::string StatsFile(const char *lastUpload) {
  char text[256];
  snprintf(text, sizeof(text), kStats, lastUpload);
  return text;
}
}  // namespace

TEST(StatsUpload, TheServiceSeesTheFileOnlyWhenItIsDue) {
  struct Case {
    const char *what;
    const char *lastUpload;  // null: no stats.dat yet
    bool send, named, preview, connected, expected;
  };
  const Case cases[] = {
      {"never uploaded", "", true, true, false, true, true},
      {"eight days ago", "20240509 11:45", true, true, false, true, true},
      {"six days ago", "20240511 11:45", true, true, false, true, false},
      {"first run", nullptr, true, true, false, true, false},
      {"statistics off", "", false, true, false, true, false},
      {"no service named", "", true, false, false, true, false},
      {"preview", "", true, true, true, true, false},
      {"no network", "", true, true, false, false, false},
  };
  for (const Case &c : cases) {
    CScopedFakeClock fake;
    fake.clock.utc = {2024, 5, 17, 11, 45, 30, 0, 5};
    TempDir dir;
    if (c.lastUpload) dir.Write("stats.dat", StatsFile(c.lastUpload));
    LocalServer server(true);
    TestPoster poster;
    poster.connected = c.connected;
    CStats stats(poster);
    StatsHost host;
    host.application = true;
    host.appType = 1;
    host.userPath = dir.Path();
    host.sendUsageInfo = c.send;
    host.preview = c.preview;
    host.endpoint = c.named ? server.Url() : "";
    stats.SetHostDescription([&] { return host; });
    LogCapture log;
    stats.Init();
    stats.Exit();

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
    EXPECT_NE(TempDir::Read(dir / "stats.dat").find("lastupload=\"20240517 11:45\""), std::string::npos) << c.what;
  }
}

TEST(StatsUpload, ADeadServiceDelaysNeitherTheRunNorTheExit) {
  LocalServer dead(false);
  TempDir dir;
  dir.Write("stats.dat", StatsFile(""));
  const auto start = Clock::now();
  const pid_t child = fork();
  if (child == 0) {
    // A process of its own, so that its exit with the upload under way is
    // seen; it reports how long the run took in tens of milliseconds.
    CCurlPoster poster;
    CStats stats(poster);
    StatsHost host;
    host.application = true;
    host.appType = 1;
    host.userPath = dir.Path();
    host.endpoint = dead.Url();
    stats.SetHostDescription([&] { return host; });
    stats.Init();
    stats.Exit();
    exit(static_cast<int>(std::min<int64_t>(250, (Clock::now() - start) / 10ms)));
  }
  ASSERT_GT(child, 0);
  int status = -1;
  const auto limit = std::chrono::milliseconds(CCurlPoster::TotalTimeoutMs);
  while (waitpid(child, &status, WNOHANG) == 0 && Clock::now() - start < limit) std::this_thread::sleep_for(5ms);
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
  // The dead service would hold the upload for its whole time-out.
  EXPECT_LT(took, limit / 2) << "the exit waited for the upload";
  ASSERT_TRUE(WIFEXITED(status)) << status;
  EXPECT_LT(WEXITSTATUS(status) * 10, 1000) << "start and end of the run took " << WEXITSTATUS(status) * 10 << " ms";
  EXPECT_TRUE(dead.Connected()) << "the upload never started";
  if (took >= limit) kill(child, SIGKILL), waitpid(child, nullptr, 0);
}
