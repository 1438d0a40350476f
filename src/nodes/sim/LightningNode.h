#pragma once

#include <memory>
#include <vector>

#include "core/Random.h"
#include "nodes/ExpressionPorts.h"
#include "nodes/object/BatchObjectNode.h"
#include "portdata/RenderVolumeLines.h"
#include "render/Matrix.h"

class CExprEvaluator;
class CNodeInfo;
class CPortFloat;
class CPortInt;

// Bolts from a start to an end point that a text places, grown by midpoint
// displacement over `Detail` generations, each new midpoint a chance to
// fork a branch; drawn as flat strips of one width.
class CLightningNode : public CBatchObjectNode {
 public:
  // A frame's bolts hold at most this many points: the worst case of the
  // ports (3^16 points a bolt, 10000 bolts) is far beyond any memory, so the
  // growth stops where the budget ends.
  static constexpr int MaxPoints = 1 << 17;

  enum Variable {
    BoltNr, In1, In2, In3, In4, In5, Time, StartX, StartY, StartZ, EndX, EndY, EndZ,
    ColorR, ColorG, ColorB, ColorA, BoltRandSeed, VariableCount
  };
  struct BoltPoint {
    int next, previous;  // -1 at the ends
    CVector3 position;
  };
  struct Bolt {
    float color[4];
    int first, last, count;
  };

  static CNodeInfo *CreateInfo();
  CLightningNode();
  ~CLightningNode() override;
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

  const std::vector<Bolt> &Bolts() const { return m_Bolts; }
  const std::vector<BoltPoint> &BoltPoints() const { return m_BoltPoints; }
  const CRenderVolumeLines &Lines() const { return m_Lines; }

 private:
  int AddBolt(const CVector3 &from, const CVector3 &to, const float color[4]);
  void Grow(int first, int generations);
  void WriteStrips();
  void Reseed();

  CPortInt *m_NumBolts = nullptr, *m_Detail = nullptr;
  CPortFloat *m_Width = nullptr, *m_Jitter = nullptr, *m_BranchChance = nullptr, *m_BranchLengthScale = nullptr;
  ExpressionInputs m_Inputs;

  std::unique_ptr<CExprEvaluator> m_Evaluator;
  double m_Vars[VariableCount] = {};
  double m_Seed = 0.0;  // the boltrandseed that seeded boltState
  RandomState m_BoltState;
  std::vector<Bolt> m_Bolts;
  std::vector<BoltPoint> m_BoltPoints;
  CRenderVolumeLines m_Lines;
};
