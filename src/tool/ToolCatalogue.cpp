// velmor-tool catalogue: the node type catalogue an editor reads.

#include <cstdio>
#include <cstring>
#include <string>

#include "app/Folders.h"
#include "core/Paths.h"
#include "nodes/BuiltinNodes.h"
#include "nodes/effect/FxNode.h"
#include "scene/NodeFactory.h"
#include "tool/ToolCommand.h"

namespace {
int RunCatalogue(int argc, char **argv) {
  // The installation's effect files, whatever the current folder.
  std::string folder = JoinPath(ThisInstallation(), "nodes/effect");
  if (argc == 3 && !strcmp(argv[1], "--effects")) {
    folder = argv[2];
  } else if (argc > 1) {
    fprintf(stderr, "usage: velmor-tool catalogue [--effects FOLDER]\n");
    return 2;
  }
  InstallBuiltinNodes();
  CNodeFactoryRef factory;
  factory->Init();
  // Effect files become node types as they do when the program starts.
  CNEFx::AddNodesToFactory(*factory, folder.c_str());
  fputs(factory->CatalogueText().c_str(), stdout);
  return 0;
}
}  // namespace

VELMOR_TOOL_COMMAND(catalogue, "catalogue", 7, "[--effects FOLDER]",
                    "print the node type catalogue (root NodeTypes) as XML; effect files from FOLDER (default: the installation's nodes/effect)",
                    RunCatalogue);
