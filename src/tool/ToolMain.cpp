// velmor-tool: the command line for scene authors and for tests.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/Random.h"
#include "tool/ToolCommand.h"

#ifndef VELMOR_VERSION
#define VELMOR_VERSION "0.0.0"
#endif

namespace {
std::vector<ToolCommand> &Registry() {
  static std::vector<ToolCommand> commands;
  return commands;
}

void PrintHelp(FILE *out) {
  fprintf(out, "usage: velmor-tool <command> [arguments]\n       velmor-tool --help | --version\n\ncommands:\n");
  for (const ToolCommand &c : ToolCommands()) fprintf(out, "  %s %s\n      %s\n", c.name, c.usage, c.summary);
}
}  // namespace

ToolCommandRegistrar::ToolCommandRegistrar(const ToolCommand &command) {
  auto &r = Registry();
  r.push_back(command);
  std::sort(r.begin(), r.end(), [](const ToolCommand &a, const ToolCommand &b) { return a.order < b.order; });
}

const std::vector<ToolCommand> &ToolCommands() { return Registry(); }

int main(int argc, char **argv) {
  // Scripts read our output through pipes: keep it in step with stderr and
  // complete even when a sanitizer ends the process at exit.
  setvbuf(stdout, nullptr, _IOLBF, 0);
  // Reproducible by default: seed 1 unless VELMOR_SEED says otherwise (a
  // command's --seed overrides both). An unseeded generator draws only zeros.
  SeedSharedRandom(getenv("VELMOR_SEED") ? StartSeed() : 1u);
  if (argc < 2) {
    PrintHelp(stderr);
    return 2;
  }
  const char *cmd = argv[1];
  if (!strcmp(cmd, "--help") || !strcmp(cmd, "-h") || !strcmp(cmd, "help")) {
    PrintHelp(stdout);
    return 0;
  }
  if (!strcmp(cmd, "--version")) {
    printf("velmor-tool %s\n", VELMOR_VERSION);
    return 0;
  }
  for (const ToolCommand &c : ToolCommands())
    if (!strcmp(c.name, cmd)) return c.run(argc - 1, argv + 1);
  fprintf(stderr, "velmor-tool: unknown command '%s' (see velmor-tool --help)\n", cmd);
  return 2;
}
