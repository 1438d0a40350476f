#pragma once
// The expression that CloneExpression and CloneMeshExpression run once per
// copy of a grid: the variables the text sees (grid index, counts, inputs,
// and the placement it writes) and the walk over the grid.

#include <algorithm>

#include "expr/ExprEvaluator.h"
#include "render/Matrix.h"

class CPortFloat;
class CPortInt;

// Where the text put one copy. Angles in radians; color clamped to 0..1.
struct CClonePlacement {
  CVector3 pos, rot, scale;
  float color[4];
};

class CCloneGrid {
 public:
  enum Variable {
    X, Y, Z, NumObjectsX, NumObjectsY, NumObjectsZ, Aspect, In1, In2, In3, In4, In5, Time,
    PosX, PosY, PosZ, RotX, RotY, RotZ, ScaleX, ScaleY, ScaleZ, ColR, ColG, ColB, ColA, VariableCount
  };

  // Registers the variables in the order the node types list them; `aspect`
  // and `time` only for a type that runs in the frame (`withFrame`).
  void Register(CExprEvaluator &evaluator, bool withFrame);
  // In1..In5 from the ports, and the three counts.
  void SetInputs(CPortFloat *const in[5]);
  void SetCounts(int nx, int ny, int nz);
  int Cells() const;

  // Runs the text for each cell, x innermost, with 1-based indices, and
  // hands `place(index, placement)` the result; stops after `limit` cells.
  // `resetRotation`: rot starts at 0 for every copy, else it carries over.
  template <typename Place>
  void Run(CExprEvaluator &evaluator, int limit, bool resetRotation, Place &&place) {
    int c = 0;
    const int nx = Count(NumObjectsX), ny = Count(NumObjectsY), nz = Count(NumObjectsZ);
    for (int z = 1; z <= nz && c < limit; ++z)
      for (int y = 1; y <= ny && c < limit; ++y)
        for (int x = 1; x <= nx && c < limit; ++x, ++c) {
          StartCell(x, y, z, resetRotation);
          evaluator.Evaluate();
          place(c, Placement());
        }
  }

  double m_Vars[VariableCount] = {};

 private:
  int Count(Variable v) const { return static_cast<int>(m_Vars[v]); }
  void StartCell(int x, int y, int z, bool resetRotation);
  CClonePlacement Placement() const;
};

// Rotation of `rot` (radians), rows scaled by `scale`, translation `pos`:
// how every copy and transform of an object is placed.
CMatrix PlacementMatrix(const CVector3 &pos, const CVector3 &rot, const CVector3 &scale);
