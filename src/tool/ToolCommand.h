#pragma once
// velmor-tool subcommands register themselves here; each lives in its own
// Tool<Name>.cpp. `order` fixes their place in --help.

#include <vector>

struct ToolCommand {
  const char *name;
  int order;
  const char *usage;    // one line: arguments after the command name
  const char *summary;  // one line: what it does
  int (*run)(int argc, char **argv);  // argv[0] is the command name
};

const std::vector<ToolCommand> &ToolCommands();

struct ToolCommandRegistrar {
  explicit ToolCommandRegistrar(const ToolCommand &command);
};

#define VELMOR_TOOL_COMMAND(ident, ...) \
  static const ToolCommandRegistrar g_ToolCommand_##ident{ToolCommand{__VA_ARGS__}}
