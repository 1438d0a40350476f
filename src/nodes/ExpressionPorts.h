#pragma once

class CNodeInfo;

// The inputs In1..In5 and the RandomSeed that expression-driven node types
// offer, in that order. Some types describe all five as "Input value 1".
void AddExpressionInputPorts(CNodeInfo &info, bool allDescribedAsFirst);
