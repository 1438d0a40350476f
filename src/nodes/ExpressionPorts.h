#pragma once

class CExprEvaluator;
class CNode;
class CNodeInfo;
class CPortFloat;
class CPortInt;
class CPortString;

// The inputs In1..In5 and the RandomSeed that expression-driven node types
// offer, in that order. Some types describe all five as "Input value 1";
// a type whose seed shapes more than rand() says so in `seedDescription`.
void AddExpressionInputPorts(CNodeInfo &info, bool allDescribedAsFirst, const char *seedDescription = nullptr);

// Those ports and the Expression text port of a node, found once in Init.
struct ExpressionInputs {
  CPortFloat *in[5] = {};
  CPortInt *randomSeed = nullptr;
  CPortString *expression = nullptr;

  void Find(const CNode &node);
  // Compiles a changed text; false while the evaluator is off, when the
  // node keeps what it last made.
  bool Ready(CExprEvaluator &evaluator) const;
  // The inputs into in1..in5 (five consecutive variables) and the seed into
  // the evaluator's random state, before a pass of evaluations.
  void Apply(CExprEvaluator &evaluator, double *in1) const;
};
