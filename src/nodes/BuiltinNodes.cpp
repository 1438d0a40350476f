#include "nodes/BuiltinNodes.h"

#include <vector>

#include "nodes/value/SinNode.h"
#include "scene/NodeFactory.h"
#include "scene/NodeInfo.h"

namespace {
// Catalogue order: scene files and editors list types in this order.
CNodeInfo *(*const kBuiltinTypes[])() = {
    &CSinNode::CreateInfo,
};

// Built-in records live for the whole run, shared by every factory.
const std::vector<CNodeInfo *> &BuiltinRecords() {
  static const std::vector<CNodeInfo *> records = [] {
    std::vector<CNodeInfo *> r;
    for (auto create : kBuiltinTypes) {
      CNodeInfo *info = create();
      info->m_BuiltIn = true;
      r.push_back(info);
    }
    return r;
  }();
  return records;
}
}  // namespace

void RegisterBuiltinNodes(CNodeFactory &factory) {
  for (CNodeInfo *info : BuiltinRecords()) factory.AddNodeType(info);
}

void InstallBuiltinNodes() { CNodeFactory::SetBuiltinRegistrar(&RegisterBuiltinNodes); }
