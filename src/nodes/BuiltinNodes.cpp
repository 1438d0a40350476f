#include "nodes/BuiltinNodes.h"

#include <memory>
#include <vector>

#include "nodes/effect/ShaderNode.h"
#include "nodes/render/ClearNode.h"
#include "nodes/render/MeshObjectNode.h"
#include "nodes/render/RenderObjectNode.h"
#include "nodes/render/RenderRectNode.h"
#include "nodes/render/RenderToTextureNode.h"
#include "nodes/render/ScreenNode.h"
#include "nodes/value/SinNode.h"
#include "scene/NodeFactory.h"
#include "scene/NodeInfo.h"

namespace {
// Catalogue order: scene files and editors list types in this order.
CNodeInfo *(*const kBuiltinTypes[])() = {
    &CSinNode::CreateInfo,
    &CScreenNode::CreateInfo,
    &CClearNode::CreateInfo,
    &CRenderObjectNode::CreateInfo,
    &CMeshObjectNode::CreateInfo,
    &CRenderToTextureNode::CreateInfo,
    &CRenderRectNode::CreateInfo,
    &CShaderNode::CreateInfo,
};

// Built-in records live for the whole run, shared by every factory.
const std::vector<std::unique_ptr<CNodeInfo>> &BuiltinRecords() {
  static const std::vector<std::unique_ptr<CNodeInfo>> records = [] {
    std::vector<std::unique_ptr<CNodeInfo>> r;
    for (auto create : kBuiltinTypes) {
      r.emplace_back(create());
      r.back()->m_BuiltIn = true;
    }
    return r;
  }();
  return records;
}
}  // namespace

void RegisterBuiltinNodes(CNodeFactory &factory) {
  for (const auto &info : BuiltinRecords()) factory.AddNodeType(info.get());
}

void InstallBuiltinNodes() { CNodeFactory::SetBuiltinRegistrar(&RegisterBuiltinNodes); }
