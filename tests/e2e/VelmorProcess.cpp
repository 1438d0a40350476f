#include "e2e/VelmorProcess.h"

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char **environ;

VelmorProcess::~VelmorProcess() {
  if (m_Pid > 0 && m_Status == -1) {
    kill(m_Pid, SIGKILL);
    waitpid(m_Pid, nullptr, 0);
  }
}

bool VelmorProcess::Start(const std::vector<std::string> &args, const std::vector<std::string> &extraEnv) {
  std::vector<std::string> env;
  for (char **e = environ; *e; ++e)
    if (strncmp(*e, "XDG_CONFIG_HOME=", 16) && strncmp(*e, "XSCREENSAVER_WINDOW=", 20) && strncmp(*e, "ASAN_OPTIONS=", 13))
      env.push_back(*e);
  env.push_back("XDG_CONFIG_HOME=" + m_Home.Path());
  // The ASan build reports Mesa's own driver allocations as leaks at exit;
  // they are not ours, and the program's leaks are checked by the unit tests.
  const char *asan = getenv("ASAN_OPTIONS");
  env.push_back(std::string("ASAN_OPTIONS=") + (asan ? std::string(asan) + ":" : "") + "detect_leaks=0");
  for (const std::string &e : extraEnv) env.push_back(e);

  std::vector<std::string> argv{VELMOR_BINARY};
  argv.insert(argv.end(), args.begin(), args.end());
  std::vector<char *> argp, envp;
  for (std::string &a : argv) argp.push_back(a.data());
  argp.push_back(nullptr);
  for (std::string &e : env) envp.push_back(e.data());
  envp.push_back(nullptr);
  const std::string output = m_Home / "output.txt";
  // Run from a folder of the user's: the program finds its data wherever it
  // is started.
  const std::string cwd = m_Home.Path();

  m_Pid = fork();
  if (m_Pid == 0) {
    int fd = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (fd >= 0) {
      dup2(fd, 1);
      dup2(fd, 2);
      close(fd);
    }
    if (chdir(cwd.c_str()) == 0) execve(argp[0], argp.data(), envp.data());
    _exit(127);
  }
  m_Status = -1;
  return m_Pid > 0;
}

bool VelmorProcess::Running() {
  if (m_Pid <= 0 || m_Status != -1) return false;
  int status = 0;
  if (waitpid(m_Pid, &status, WNOHANG) == m_Pid) {
    m_Status = status;
    return false;
  }
  return true;
}

bool VelmorProcess::WaitForExit(std::chrono::milliseconds timeout) {
  const auto until = std::chrono::steady_clock::now() + timeout;
  while (Running()) {
    if (std::chrono::steady_clock::now() >= until) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return m_Status != -1;
}

void VelmorProcess::Signal(int signal) {
  if (m_Pid > 0 && m_Status == -1) kill(m_Pid, signal);
}

bool VelmorProcess::ExitedCleanly() const { return m_Status != -1 && WIFEXITED(m_Status) && WEXITSTATUS(m_Status) == 0; }

std::vector<std::string> VelmorProcess::LogLines() const {
  std::vector<std::string> lines;
  std::ifstream in(m_Home / "velmor/log.txt");
  // "2024-01-31 12:34:56.789: " comes first on every line.
  constexpr size_t kStamp = 25;
  for (std::string line; std::getline(in, line);) lines.push_back(line.size() >= kStamp ? line.substr(kStamp) : line);
  return lines;
}

std::string VelmorProcess::Output() const { return TempDir::Read(m_Home / "output.txt"); }

bool InOrder(const std::vector<std::string> &lines, const std::vector<std::string> &wanted) {
  size_t next = 0;
  for (const std::string &line : lines)
    if (next < wanted.size() && line == wanted[next]) ++next;
  return next == wanted.size();
}

std::string Joined(const std::vector<std::string> &lines) {
  std::string text;
  for (const std::string &l : lines) text += l + "\n";
  return text;
}
