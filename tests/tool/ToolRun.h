#pragma once
// Running the built velmor-tool from a test, and scenes written inline.

#include <cstdio>
#include <string>
#include <sys/wait.h>

struct Result {
  int status = -1;
  std::string out;
};

// Runs the tool in `dir` with stdout captured (stderr to `errFile`). Mesa's
// driver keeps allocations until exit: leak reports of a child that opened
// GL would only be about the driver.
inline Result Tool(const std::string &dir, const std::string &args, const std::string &errFile = "/dev/null") {
  const std::string cmd = "cd '" + dir + "' && ASAN_OPTIONS=detect_leaks=0 '" VELMOR_TOOL_BINARY "' " + args +
                          " 2>" + errFile;
  Result r;
  FILE *p = popen(cmd.c_str(), "r");
  if (!p) return r;
  char buf[4096];
  while (size_t n = fread(buf, 1, sizeof(buf), p)) r.out.append(buf, n);
  int status = pclose(p);
  r.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return r;
}

inline std::string Assets() { return std::string(VELMOR_SOURCE_ROOT) + "/assets"; }

inline std::string Scene(const std::string &nodes, const std::string &connections) {
  return "<Velmor><Transitions/><Scenes><Scene Name=\"T\"><Nodes>" + nodes + "</Nodes><Connections>" + connections +
         "</Connections><SceneCompatibility><GoodScenes/><BadScenes/></SceneCompatibility></Scene></Scenes></Velmor>";
}

