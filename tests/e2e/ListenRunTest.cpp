// The running program as a host drives it through --listen: an owner-only
// socket that answers each command line with one reply line, keeps going
// after bad input, and is gone when the program ends.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include "e2e/VelmorProcess.h"

namespace {
using namespace std::chrono_literals;

int Connect(const std::string &path) {
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  if (fd >= 0 && connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof(address)) == 0) return fd;
  if (fd >= 0) close(fd);
  return -1;
}

// Sends one line and reads one back; empty after 20 s without an answer.
std::string Ask(int fd, const std::string &line) {
  const std::string out = line + "\n";
  if (send(fd, out.data(), out.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(out.size())) return "";
  std::string in;
  for (char c = 0; c != '\n';) {
    pollfd p{fd, POLLIN, 0};
    if (poll(&p, 1, 20000) <= 0 || recv(fd, &c, 1, 0) != 1) return "";
    in += c;
  }
  return in;
}
}  // namespace

TEST(ListenRun, CommandsOnTheSocketAreAnsweredLineByLine) {
  if (!getenv("DISPLAY")) GTEST_SKIP() << "DISPLAY is not set: the program needs an X server";
  TempDir dir;
  const std::string path = dir / "velmor.sock";
  VelmorProcess velmor;
  ASSERT_TRUE(velmor.Start({"/t", "scenes/plasma.vms", "--listen", path}));
  struct stat st {};
  velmor.PollWhileRunning(20s, 50ms, [&] { return stat(path.c_str(), &st) == 0; });
  ASSERT_EQ(stat(path.c_str(), &st), 0) << velmor.Output();
  EXPECT_TRUE(S_ISSOCK(st.st_mode));
  EXPECT_EQ(st.st_mode & 0777, 0600u);

  const int fd = Connect(path);
  ASSERT_GE(fd, 0);
  EXPECT_NE(Ask(fd, "<c><SceneActive/></c>").find("<SceneActivated File=\""), std::string::npos);
  EXPECT_NE(Ask(fd, "<c><Oops").find("<Request Error=\"Malformed XML\" />"), std::string::npos);
  EXPECT_NE(Ask(fd, std::string(size_t{1} << 21, 'x')).find("Error=\"Line too long\""), std::string::npos);
  EXPECT_NE(Ask(fd, "<c><NodeCreate Type=\"Nope\"/><NodeGet Name=\"Screen1\"/></c>")
                .find("<NodeCreate Type=\"Nope\" Error=\"Unknown node type\" /><Node Name=\"Screen1\""),
            std::string::npos);
  // A second program can't take the socket of one that runs.
  VelmorProcess second;
  ASSERT_TRUE(second.Start({"/t", "scenes/plasma.vms", "--listen", path}));
  ASSERT_TRUE(second.WaitForExit(20s));
  EXPECT_EQ(WEXITSTATUS(second.ExitStatus()), 1) << second.Output();
  EXPECT_NE(Ask(fd, "<c><SceneActive/></c>").find("<SceneActivated"), std::string::npos);
  close(fd);

  velmor.Signal(SIGTERM);
  ASSERT_TRUE(velmor.WaitForExit(20s)) << velmor.Output();
  EXPECT_TRUE(velmor.ExitedCleanly()) << velmor.Output();
  EXPECT_NE(stat(path.c_str(), &st), 0) << "the socket outlived the program";
}
