#pragma once
// `velmor-tool expr [--var NAME=VALUE]... [--print NAME]... [--seed N] TEXT`:
// evaluates TEXT once through a CExprEvaluator with every function and no
// music. Prints the result as %.17g, then NAME=%.17g per --print, and gives
// 0; on a parse or evaluation error prints the logged message on err and
// gives 1; on bad arguments prints the usage and gives 2.

#include <cstdio>

extern const char *const kExprCommandUsage;

int RunExprCommand(int argc, char **argv, FILE *out, FILE *err);
