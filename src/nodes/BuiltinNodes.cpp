#include "nodes/BuiltinNodes.h"

#include <memory>
#include <vector>

#include "nodes/effect/ShaderNode.h"
#include "nodes/mesh/CloneMeshExpressionNode.h"
#include "nodes/mesh/CloneMeshNode.h"
#include "nodes/mesh/ConeNode.h"
#include "nodes/mesh/CubeNode.h"
#include "nodes/mesh/CylinderNode.h"
#include "nodes/mesh/DiscNode.h"
#include "nodes/mesh/PlaneNode.h"
#include "nodes/mesh/SphereNode.h"
#include "nodes/mesh/TorusNode.h"
#include "nodes/mesh/TransformMeshNode.h"
#include "nodes/object/CloneExpressionNode.h"
#include "nodes/object/CloneNode.h"
#include "nodes/object/DelayedTransformNode.h"
#include "nodes/object/GalaxyNode.h"
#include "nodes/object/LineBounceNode.h"
#include "nodes/object/LinesNode.h"
#include "nodes/object/ParticlesNode.h"
#include "nodes/object/PingPongNode.h"
#include "nodes/object/PlanestateNode.h"
#include "nodes/object/StarfieldNode.h"
#include "nodes/object/TransformNode.h"
#include "nodes/render/ClearNode.h"
#include "nodes/render/MeshObjectNode.h"
#include "nodes/render/RenderObjectNode.h"
#include "nodes/render/RenderRectNode.h"
#include "nodes/render/RenderToTextureNode.h"
#include "nodes/render/ScreenNode.h"
#include "nodes/sim/AsteroidsNode.h"
#include "nodes/sim/Fluid2dNode.h"
#include "nodes/sim/GrassNode.h"
#include "nodes/sim/LightningNode.h"
#include "nodes/sim/MetaballsNode.h"
#include "nodes/sim/RibbonsNode.h"
#include "nodes/sim/ShatterNode.h"
#include "nodes/sim/TuringPatternNode.h"
#include "nodes/sim/VoronoiNode.h"
#include "nodes/sound/BarsNode.h"
#include "nodes/sound/BeatNode.h"
#include "nodes/sound/OscilloscopeNode.h"
#include "nodes/sound/SoundTextureNode.h"
#include "nodes/sound/SpectrumNode.h"
#include "nodes/sound/WaveformNode.h"
#include "nodes/text/ClockNode.h"
#include "nodes/text/MatrixTrailsNode.h"
#include "nodes/text/TextWriterNode.h"
#include "nodes/texture/BlurNode.h"
#include "nodes/texture/CopyTextureNode.h"
#include "nodes/texture/ExpressionTextureNode.h"
#include "nodes/texture/FileTextureNode.h"
#include "nodes/texture/GradientNode.h"
#include "nodes/texture/NoiseTextureNode.h"
#include "nodes/texture/PreviousLayerNode.h"
#include "nodes/texture/RandomTextureNode.h"
#include "nodes/value/ExpressionNode.h"
#include "nodes/value/HSLAToColorNode.h"
#include "nodes/value/HSVAToColorNode.h"
#include "nodes/value/MinMaxNode.h"
#include "nodes/value/RGBAToColorNode.h"
#include "nodes/value/RotatorNode.h"
#include "nodes/value/SignalGeneratorNode.h"
#include "nodes/value/SinNode.h"
#include "nodes/value/VectorNode.h"
#include "scene/NodeFactory.h"
#include "scene/NodeInfo.h"

namespace {
// Catalogue order: scene files and editors list types in this order.
CNodeInfo *(*const kBuiltinTypes[])() = {
    &CSignalGeneratorNode::CreateInfo,
    &CSinNode::CreateInfo,
    &CScreenNode::CreateInfo,
    &CClearNode::CreateInfo,
    &CRGBAToColor::CreateInfo,
    &CVectorNode::CreateInfo,
    &CMinMaxNode::CreateInfo,
    &CRenderObjectNode::CreateInfo,
    &CPingPongNode::CreateInfo,
    &CPlanestateNode::CreateInfo,
    &CStarfieldNode::CreateInfo,
    &CNTFile::CreateInfo,
    &CMeshObjectNode::CreateInfo,
    &CCubeNode::CreateInfo,
    &CCloneMeshNode::CreateInfo,
    &CNTBlur::CreateInfo,
    &CRenderToTextureNode::CreateInfo,
    &CRenderRectNode::CreateInfo,
    &CMatrixTrailsNode::CreateInfo,
    &CLineBounceNode::CreateInfo,
    &CDelayedTransformNode::CreateInfo,
    &CParticlesNode::CreateInfo,
    &CCloneNode::CreateInfo,
    &CTransformNode::CreateInfo,
    &CBeatNode::CreateInfo,
    &CSpectrumNode::CreateInfo,
    &CWaveformNode::CreateInfo,
    &COscilloscopeNode::CreateInfo,
    &CBarsNode::CreateInfo,
    &CLinesNode::CreateInfo,
    &CHSVAToColor::CreateInfo,
    &CHSLAToColor::CreateInfo,
    &CPlaneNode::CreateInfo,
    &CGrassNode::CreateInfo,
    &CMetaballsNode::CreateInfo,
    &CExpressionNode::CreateInfo,
    &CCloneExpressionNode::CreateInfo,
    &CSphereNode::CreateInfo,
    &CCylinderNode::CreateInfo,
    &CDiscNode::CreateInfo,
    &CTorusNode::CreateInfo,
    &CConeNode::CreateInfo,
    &CAsteroidsNode::CreateInfo,
    &CVoronoiNode::CreateInfo,
    &CRotatorNode::CreateInfo,
    &CCloneMeshExpressionNode::CreateInfo,
    &CClockNode::CreateInfo,
    &CTextWriterNode::CreateInfo,
    &CGalaxyNode::CreateInfo,
    &CTransformMeshNode::CreateInfo,
    &CLightningNode::CreateInfo,
    &CNoiseTextureNode::CreateInfo,
    &CRandomTextureNode::CreateInfo,
    &CExpressionTextureNode::CreateInfo,
    &CRibbonsNode::CreateInfo,
    &CFluid2dNode::CreateInfo,
    &CGradientNode::CreateInfo,
    &CTuringPatternNode::CreateInfo,
    &CSoundTextureNode::CreateInfo,
    &CCopyTextureNode::CreateInfo,
    &CPreviousLayerNode::CreateInfo,
    &CShatterNode::CreateInfo,
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
