#include "nodes/ExpressionPorts.h"

#include <string>

#include "expr/ExprEvaluator.h"
#include "scene/Node.h"
#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

void AddExpressionInputPorts(CNodeInfo &info, bool allDescribedAsFirst, const char *seedDescription) {
  for (int i = 1; i <= 5; ++i) {
    const std::string name = "In" + std::to_string(i);
    const std::string desc = "Input value " + std::to_string(allDescribedAsFirst ? 1 : i);
    info.AddInPort(new CPortFloat(name.c_str(), desc.c_str(), 0.0f, 0.01f, -10000.0f, 10000.0f));
  }
  info.AddInPort(
      new CPortInt("RandomSeed",
                   seedDescription ? seedDescription : "Random seed to be used by the rand() and srand() functions", 1,
                   1, 100000));
}

void ExpressionInputs::Find(const CNode &node) {
  const char *names[] = {"In1", "In2", "In3", "In4", "In5"};
  for (int i = 0; i < 5; ++i) in[i] = node.InPort<CPortFloat>(names[i]);
  randomSeed = node.InPort<CPortInt>("RandomSeed");
  expression = node.InPort<CPortString>("Expression");
}

bool ExpressionInputs::Ready(CExprEvaluator &evaluator) const {
  if (expression->m_Changed) evaluator.Compile(expression->m_Value);
  return evaluator.m_Compiled;
}

void ExpressionInputs::Apply(CExprEvaluator &evaluator, double *in1) const {
  for (int i = 0; i < 5; ++i) in1[i] = in[i]->m_Value;
  evaluator.SeedRandom(static_cast<uint32_t>(randomSeed->m_Value));
}
