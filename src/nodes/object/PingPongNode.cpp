#include "nodes/object/PingPongNode.h"

#include "nodes/object/ObjectCopies.h"
#include "render/Color.h"
#include "scene/BatchDrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"

namespace {
CPortVector *SizePort(const char *name, const char *desc) {
  return new CPortVector(name, desc, {0.01f, 0.01f, 0.01f}, {0.001f, 0.001f, 0.01f}, {-10000, -10000, -10000},
                         {10000, 10000, 10000});
}
}  // namespace

CNodeInfo *CPingPongNode::CreateInfo() {
  auto *info = new CNodeInfo(8, "PingPong", [] { return static_cast<CNode *>(new CPingPongNode); },
                             "A autoplaying ping pong game");
  info->AddInPort(new CPortEffect("Effect", "Effect"));
  info->AddInPort(new CPortFloat("Width", "Width of playing field", 1, 0.01f, 0.0001f, 100000));
  info->AddInPort(new CPortFloat("Height", "Height of playing field", 1, 0.01f, 0.0001f, 100000));
  info->AddInPort(ObjectColorPort("BallCol", "Color of the ball"));
  info->AddInPort(ObjectColorPort("Paddle1Col", "Color of paddle 1"));
  info->AddInPort(ObjectColorPort("Paddle2Col", "Color of paddle 2"));
  info->AddInPort(SizePort("BallSize", "Size of the ball"));
  info->AddInPort(SizePort("Paddle1Size", "Size of paddle 1"));
  info->AddInPort(SizePort("Paddle2Size", "Size of paddle 2"));
  info->AddInPort(
      new CPortBool("AdjustForAspect", "Adjust the width and height depending on the screen aspect", true));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

CPingPongNode::CPingPongNode() {
  m_Quads.m_RenderBufferQuads = 3;
  m_Quads.SetSize(3);
}

bool CPingPongNode::Init() {
  m_Effect = InPort<CPortEffect>("Effect");
  m_Width = InPort<CPortFloat>("Width");
  m_Height = InPort<CPortFloat>("Height");
  m_BallCol = InPort<CPortColor>("BallCol");
  m_PaddleCol[0] = InPort<CPortColor>("Paddle1Col");
  m_PaddleCol[1] = InPort<CPortColor>("Paddle2Col");
  m_BallSize = InPort<CPortVector>("BallSize");
  m_PaddleSize[0] = InPort<CPortVector>("Paddle1Size");
  m_PaddleSize[1] = InPort<CPortVector>("Paddle2Size");
  m_AdjustForAspect = InPort<CPortBool>("AdjustForAspect");
  m_Out = OutPort<CPortObject>("Object");
  return true;
}

void CPingPongNode::Restart(float w, float, float aspect) {
  m_Paddles[0].x = -w * 0.5f;
  m_Paddles[1].x = w * 0.5f;
  m_Paddles[0].y = m_Paddles[1].y = 0;
  m_VelX = m_VelY = 0.2f;
  if (m_AdjustForAspect->m_Changed) {
    if (aspect <= 1)
      m_VelY = (1 / aspect) * 0.2f;
    else
      m_VelX = 0.2f * aspect;
  }
  m_Ball.x = m_Ball.y = 0;
}

void CPingPongNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  const float dt = frame->DeltaTime, a = frame->Aspect > 0 ? frame->Aspect : 1.0f;
  m_Ball.sx = m_BallSize->m_Value.x;
  m_Ball.sy = m_BallSize->m_Value.y;
  for (int i = 0; i < 2; ++i) {
    m_Paddles[i].sx = m_PaddleSize[i]->m_Value.x;
    m_Paddles[i].sy = m_PaddleSize[i]->m_Value.y;
  }
  float w = m_Width->m_Value, h = m_Height->m_Value;
  if (m_AdjustForAspect->m_Value) {
    if (a <= 1)
      h = (1 / a) * h;
    else
      w = a * w;
  }
  if (frame->Aspect != frame->PrevAspect || m_Width->m_Changed || m_Height->m_Changed ||
      m_AdjustForAspect->m_Changed)
    Restart(w, h, a);

  // A paddle hunts the ball at full speed while it comes its way, at half
  // speed while it leaves, and never overshoots.
  for (Piece &p : m_Paddles) {
    const float factor = m_VelX * p.x + m_VelY * p.y > 0 ? 1.0f : 0.5f;
    const float step = dt * m_PaddleSpeed * factor;
    if (m_Ball.y <= p.y) {
      p.y -= step;
      if (p.y < m_Ball.y) p.y = m_Ball.y;
    } else {
      p.y += step;
      if (p.y > m_Ball.y) p.y = m_Ball.y;
    }
  }
  if ((m_Ball.y > h * 0.5f && m_VelY > 0) || (m_Ball.y < -h * 0.5f && m_VelY < 0)) m_VelY = -m_VelY;
  // Only x is compared: a paddle can't miss.
  if (m_Ball.x - m_Ball.sx < m_Paddles[0].x + m_Paddles[0].sx && m_VelX < 0) m_VelX = -m_VelX;
  if (m_Paddles[1].x - m_Paddles[1].sx < m_Ball.sx + m_Ball.x && m_VelX > 0) m_VelX = -m_VelX;
  m_Ball.x += m_VelX * dt;
  m_Ball.y += m_VelY * dt;

  CQuadBatch::Quad *q = m_Quads.Quads();
  const Piece *pieces[3] = {&m_Ball, &m_Paddles[0], &m_Paddles[1]};
  const CPortColor *colors[3] = {m_BallCol, m_PaddleCol[0], m_PaddleCol[1]};
  for (int i = 0; i < 3; ++i) {
    const Piece &p = *pieces[i];
    const Color4f &c = colors[i]->m_Value;
    const uint32_t packed = PackColor(c.r, c.g, c.b, c.a);
    q[i] = {{{p.x - p.sx, p.y + p.sy, 0, 0, 0, packed},
             {p.x - p.sx, p.y - p.sy, 0, 0, 1, packed},
             {p.x + p.sx, p.y + p.sy, 0, 1, 0, packed},
             {p.x + p.sx, p.y - p.sy, 0, 1, 1, packed}}};
  }
  m_Out->m_Value = this;
}

void CPingPongNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  if (m_Effect->IsConnected()) AddBatchToDrawList(list, parents, camera, m_Effect->m_Value, m_Quads);
}
