// velmor-tool catalogue: the node type catalogue an editor reads.

#include <cstdio>

#include "nodes/BuiltinNodes.h"
#include "scene/NodeFactory.h"
#include "tool/ToolCommand.h"

namespace {
int RunCatalogue(int argc, char **) {
  if (argc > 1) {
    fprintf(stderr, "usage: velmor-tool catalogue\n");
    return 2;
  }
  InstallBuiltinNodes();
  CNodeFactoryRef factory;
  factory->Init();
  fputs(factory->CatalogueText().c_str(), stdout);
  return 0;
}
}  // namespace

VELMOR_TOOL_COMMAND(catalogue, "catalogue", 7, "", "print the node type catalogue (root NodeTypes) as XML",
                    RunCatalogue);
