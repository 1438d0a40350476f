#pragma once

#include <memory>
#include <vector>

#include "nodes/ExpressionPorts.h"
#include "nodes/object/BatchObjectNode.h"
#include "portdata/RenderVolumeLines.h"

class CExprEvaluator;
class CNodeInfo;
class CPortFloat;
class CPortInt;

// Ribbons that trail behind points a text moves: each evaluation adds one
// point to every ribbon, and a ribbon keeps its last `NumPoints`.
class CRibbonsNode : public CBatchObjectNode {
 public:
  // Points of all ribbons together: 10000 ribbons of 10000 points would be
  // 10^8, so a ribbon's length gives way to the count of ribbons.
  static constexpr int MaxPoints = 1 << 20;

  enum Variable {
    DeltaTime, SceneTime, Perm, PermRand, RibbonNr, NumRibbons, In1, In2, In3, In4, In5, Time, Aspect,
    PosX, PosY, PosZ, Width, ColR, ColG, ColB, ColA, VariableCount
  };
  struct RibbonPoint {
    float x, y, z;
    float color[4];
    float width;
  };

  static CNodeInfo *CreateInfo();
  CRibbonsNode();
  ~CRibbonsNode() override;
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

  int Ribbons() const { return m_Ribbons; }
  int PointsPerRibbon() const { return m_Length; }
  const CRenderVolumeLines &Lines() const { return m_Lines; }

 private:
  void Restart(int ribbons, int length);
  void Evaluate(float time, const FrameInfo &frame);
  void WriteStrips();

  CPortInt *m_NumRibbons = nullptr, *m_NumPoints = nullptr;
  CPortFloat *m_PerSec = nullptr;
  ExpressionInputs m_Inputs;

  std::unique_ptr<CExprEvaluator> m_Evaluator;
  double m_Vars[VariableCount] = {};
  int m_Ribbons = 0, m_Length = 0;
  // Ribbon r's ring is m_Length slots from r * m_Length; head is the slot
  // the next point takes.
  std::vector<RibbonPoint> m_Points;
  std::vector<int> m_Count, m_Head;
  float m_Accumulator = 0.0f;
  CRenderVolumeLines m_Lines;
};
