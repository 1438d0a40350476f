#pragma once

#include "portdata/PDObject.h"
#include "portdata/RenderQuads.h"
#include "scene/Node.h"

class CNodeInfo;
class CPortBool;
class CPortColor;
class CPortEffect;
class CPortFloat;
class CPortObject;
class CPortVector;

// A game of ping pong that plays itself: two paddles hunt the ball, which
// bounces off the walls and never gets past them. Ball and paddles are
// three quads of one batch.
class CPingPongNode : public CNode, public CPDObject {
 public:
  static CNodeInfo *CreateInfo();
  CPingPongNode();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;
  bool RestoreDevice(CRender *render) override { return m_Quads.RestoreDevice(render); }
  void InvalidateDevice(CRender *render) override { m_Quads.InvalidateDevice(render); }
  void AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) override;

  struct Piece {
    float x = 0, y = 0, sx = 0, sy = 0;
  };
  const Piece &Ball() const { return m_Ball; }
  const Piece &Paddle(int i) const { return m_Paddles[i]; }
  const CRenderQuads &Quads() const { return m_Quads; }

 private:
  void Restart(float w, float h, float aspect);

  CPortEffect *m_Effect = nullptr;
  CPortFloat *m_Width = nullptr, *m_Height = nullptr;
  CPortColor *m_BallCol = nullptr, *m_PaddleCol[2] = {};
  CPortVector *m_BallSize = nullptr, *m_PaddleSize[2] = {};
  CPortBool *m_AdjustForAspect = nullptr;
  CPortObject *m_Out = nullptr;

  CRenderQuads m_Quads;
  float m_PaddleSpeed = 0.2f;
  Piece m_Ball, m_Paddles[2];
  float m_VelX = 0.2f, m_VelY = 0.2f;
};
