// velmor-tool expr: evaluate one expression, for scene authors and tests.

#include "expr/ExprCommand.h"
#include "tool/ToolCommand.h"

namespace {
int RunExpr(int argc, char **argv) { return RunExprCommand(argc, argv, stdout, stderr); }
}  // namespace

VELMOR_TOOL_COMMAND(expr, "expr", 1, kExprCommandUsage,
                    "evaluate TEXT once with all functions and no music; print the result and each --print variable",
                    RunExpr);
