#include "nodes/ExpressionPorts.h"

#include <string>

#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

void AddExpressionInputPorts(CNodeInfo &info, bool allDescribedAsFirst) {
  for (int i = 1; i <= 5; ++i) {
    const std::string name = "In" + std::to_string(i);
    const std::string desc = "Input value " + std::to_string(allDescribedAsFirst ? 1 : i);
    info.AddInPort(new CPortFloat(name.c_str(), desc.c_str(), 0.0f, 0.01f, -10000.0f, 10000.0f));
  }
  info.AddInPort(
      new CPortInt("RandomSeed", "Random seed to be used by the rand() and srand() functions", 1, 1, 100000));
}
