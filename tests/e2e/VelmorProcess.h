#pragma once
// The built velmor program as a child process: started in a private user
// folder, so its log is the test's to read, and killed if a test leaves it
// running.

#include <chrono>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

#include "support/TempDir.h"

class VelmorProcess {
 public:
  VelmorProcess() = default;
  ~VelmorProcess();
  VelmorProcess(const VelmorProcess &) = delete;
  VelmorProcess &operator=(const VelmorProcess &) = delete;

  // Starts velmor with these arguments; extra environment entries are
  // "NAME=value". False when it could not be started.
  bool Start(const std::vector<std::string> &args, const std::vector<std::string> &extraEnv = {});
  bool Running();
  // Waits for the program to end; false (and the program still running)
  // when it outlives the timeout.
  bool WaitForExit(std::chrono::milliseconds timeout);
  // Asks `done` every `step` until it holds, the timeout passes or the
  // program ends.
  template <class Done>
  void PollWhileRunning(std::chrono::milliseconds timeout, std::chrono::milliseconds step, Done done) {
    for (auto until = std::chrono::steady_clock::now() + timeout;
         std::chrono::steady_clock::now() < until && Running() && !done(); std::this_thread::sleep_for(step)) {
    }
  }
  void Signal(int signal);
  // Exit status as waitpid reports it; -1 until the program has ended.
  int ExitStatus() const { return m_Status; }
  bool ExitedCleanly() const;

  // The log's messages in order, without their time stamps.
  std::vector<std::string> LogLines() const;
  // Everything the program wrote to stdout and stderr, for failure messages.
  std::string Output() const;
  // The program's user folder (config, log, Screenshots).
  std::string UserFolder() const { return m_Home / "velmor"; }

 private:
  TempDir m_Home;
  pid_t m_Pid = -1;
  int m_Status = -1;
};

// True when `wanted` occur in `lines` in this order (others may come between).
bool InOrder(const std::vector<std::string> &lines, const std::vector<std::string> &wanted);
std::string Joined(const std::vector<std::string> &lines);
// What the log says, in this order, when the program shuts down cleanly.
inline const std::vector<std::string> kShutdownLines = {"Received WM_CLOSE", "Received WM_DESTROY. Do postquit 1",
                                                        "** Exiting main message loop ** "};
