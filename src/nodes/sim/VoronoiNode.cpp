#include "nodes/sim/VoronoiNode.h"

#include <algorithm>
#include <cmath>

#include "expr/ExprEvaluator.h"
#include "nodes/object/SimRandom.h"
#include "render/DeviceCheck.h"
#include "scene/BatchDrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
// Far beyond any box a scene shows, near enough for single precision.
constexpr float kMaxPosition = 1.0e5f;

float Sane(double v) { return std::isfinite(v) ? static_cast<float>(std::clamp(v, -1.0e5, 1.0e5)) : 0.0f; }

void CopyColor(const CPortColor *port, float out[4]) {
  const Color4f &c = port->m_Value;
  out[0] = c.r, out[1] = c.g, out[2] = c.b, out[3] = c.a;
}
}  // namespace

CNodeInfo *CVoronoiNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "Voronoi", [] { return static_cast<CNode *>(new CVoronoiNode); },
                             "Calculates a 2d voronoi diagram. Ports marked as 'local' are locally evaluated with a "
                             "time value going from 0.0 to 1.0 depeding on the index of the point");
  const Color4f black{0, 0, 0, 0}, white{1, 1, 1, 1};
  info->AddInPort(new CPortInt("NumPoints", "Number of points/sites", 20, 2, MaxPoints));
  info->AddInPort(new CPortFloat("LineWidth", "Width of the lines", 0.0f, 0.001f, 0.0f, 10.0f));
  info->AddInPort(new CPortFloat("PointSize", "Size of points", 0.0f, 0.001f, 0.0f, 100.0f));
  info->AddInPort(new CPortColor("LineColor", "Line color (Local)", {0.5f, 0.6f, 0.7f, 1}, black, white));
  info->AddInPort(new CPortColor("PointColor", "Point/site color (Local)", {0.8f, 0.9f, 1, 1}, black, white));
  info->AddInPort(new CPortColor("CellColor", "Color of the cell (Local)", {0.6f, 0.7f, 0.8f, 1}, black, white));
  info->AddInPort(new CPortInt("RandomSeed", "Random seed to be used by the rand() and srand() functions", 1, 1, 100000));
  info->AddInPort(new CPortString(
      "Expression",
      "Evaluates points using an expression. Inputs are time,pointnr,numpoints. Inputs & outputs are "
      "vel.x,vel.y,pos.x,pos.y. Please see the website for detailed description of this port. Some of the allowed "
      "values are abs, mod, min, max, sqrt, sin, cos, tan, atan, log, lb, exp, ceil, floor, deg, rad, if, select, "
      "equal, above, below, clip, clamp, and, or, not.",
      "r1 = rand(pointnr)*95;\r\npos.x=sin(pointnr+time*0.2)*r1;\r\npos.y=cos(pointnr+time*0.1)*r1;"));
  info->AddInPort(new CPortEffect("PointEffect", "Effect applied to the points (also known as sites)"));
  info->AddInPort(new CPortEffect("LineEffect", "Effect applied to the lines"));
  info->AddInPort(new CPortEffect("CellEffect", "Effect applied to the inside of the cells"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

CVoronoiNode::CVoronoiNode() : m_Evaluator(std::make_unique<CExprEvaluator>()) {}
CVoronoiNode::~CVoronoiNode() = default;

bool CVoronoiNode::Init() {
  m_NumPoints = InPort<CPortInt>("NumPoints");
  m_LineWidth = InPort<CPortFloat>("LineWidth");
  m_PointSize = InPort<CPortFloat>("PointSize");
  m_LineColor = InPort<CPortColor>("LineColor");
  m_PointColor = InPort<CPortColor>("PointColor");
  m_CellColor = InPort<CPortColor>("CellColor");
  m_RandomSeed = InPort<CPortInt>("RandomSeed");
  m_Expression = InPort<CPortString>("Expression");
  m_PointEffect = InPort<CPortEffect>("PointEffect");
  m_LineEffect = InPort<CPortEffect>("LineEffect");
  m_CellEffect = InPort<CPortEffect>("CellEffect");
  m_Out = OutPort<CPortObject>("Object");
  CExprEvaluator &e = *m_Evaluator;
  e.AddAddress("pointnr", &m_PointNr, 0.0);
  e.AddAddress("numpoints", &m_NumPointsVar, 0.0);
  e.AddAddress("time", &m_Time, 0.0);
  e.AddAddress("pos.x", &m_Pos[0], 0.0);
  e.AddAddress("pos.y", &m_Pos[1], 0.0);
  e.AddAddress("vel.x", &m_Vel[0], 0.0);
  e.AddAddress("vel.y", &m_Vel[1], 0.0);
  const char *colors[4] = {"col.r", "col.g", "col.b", "col.a"};
  for (int c = 0; c < 4; ++c) e.AddAddress(colors[c], &m_Col[c], 0.0);
  e.Attach();
  m_Cells.m_Edges = &m_Voronoi.Edges();
  return true;
}

void CVoronoiNode::Update(float time, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  if (m_Expression->m_Changed) m_Evaluator->Compile(m_Expression->m_Value);
  if (!m_Evaluator->m_Compiled) return;

  const int n = std::clamp(m_NumPoints->m_Value, 2, MaxPoints);
  if (n > static_cast<int>(m_Points.size())) {
    Point fresh{};
    for (int i = static_cast<int>(m_Points.size()); i < n; ++i) {
      fresh.x = DrawSigned();
      fresh.y = DrawSigned();
      m_Points.push_back(fresh);
    }
    m_Sites.resize(m_Points.size());
    m_Cells.m_Sites.resize(m_Points.size());
    m_Sprites.SetSize(n, PRIM_Texture);
    m_DirtyUnits = ALL_UNITS;
  }
  m_Count = n;
  if (!EvaluatePoints(time, frame->DeltaTime)) return;
  m_Voronoi.GenerateVoronoi(m_Sites.data(), n, -1, 1, -1, 1, 0.001f);
  for (int i = 0; i < n; ++i)
    m_Cells.m_Sites[i] = {m_Points[i].x, m_Points[i].y, PackColorRounded(m_Points[i].cellColor)};
  if (m_LineEffect->IsConnected()) BuildBorders();
  const float size = m_PointSize->m_Value;
  if (m_PointEffect->IsConnected() && size != 0.0f) {
    m_Sprites.SetCount(n);
    CRenderPoints::Sprite *s = m_Sprites.Sprites();
    for (int i = 0; i < n; ++i) {
      const Point &p = m_Points[i];
      s[i] = {p.x, p.y, -0.001f, PackColorRounded(p.pointColor), size, size, size};
    }
  }
  m_Out->m_Value = this;
}

bool CVoronoiNode::EvaluatePoints(float time, float dt) {
  m_Time = time;
  m_NumPointsVar = m_Count;
  m_Evaluator->SeedRandom(static_cast<uint32_t>(m_RandomSeed->m_Value));
  const bool evaluate = !m_Expression->m_Value.empty();
  const float last = static_cast<float>(m_Count - 1);
  for (int i = 0; i < m_Count; ++i) {
    Point &p = m_Points[i];
    const float t = static_cast<float>(i) / last;
    m_LineColor->Update(t);
    m_PointColor->Update(t);
    m_CellColor->Update(t);
    if (evaluate) {
      m_PointNr = i;
      m_Pos[0] = p.x, m_Pos[1] = p.y, m_Vel[0] = p.vx, m_Vel[1] = p.vy;
      m_Evaluator->Evaluate();
      if (!m_Evaluator->m_Compiled) return false;  // logged; the last picture stays
      p.x = Sane(m_Pos[0]), p.y = Sane(m_Pos[1]), p.vx = Sane(m_Vel[0]), p.vy = Sane(m_Vel[1]);
    }
    p.x = std::clamp(p.x + p.vx * dt, -kMaxPosition, kMaxPosition);
    p.y = std::clamp(p.y + p.vy * dt, -kMaxPosition, kMaxPosition);
    CopyColor(m_LineColor, p.lineColor);
    CopyColor(m_PointColor, p.pointColor);
    CopyColor(m_CellColor, p.cellColor);
    m_Sites[i] = {p.x, p.y};
  }
  return true;
}

void CVoronoiNode::BuildBorders() {
  const std::vector<CVoronoi::Edge> &edges = m_Voronoi.Edges();
  const int count = static_cast<int>(edges.size());
  const float width = m_LineWidth->m_Value;
  if (std::fabs(width) > 1e-05f) {
    m_Quads.SetSize(count);
    CQuadBatch::Quad *q = m_Quads.Quads();
    // Wound like every other band of quads, so that culling keeps them.
    for (const CVoronoi::Edge &e : edges) {
      const CVector3 o = FastSide({e.x2 - e.x1, e.y2 - e.y1, 0.0f}) * (width * 0.5f);
      const uint32_t c = PackColorRounded(m_Points[e.site].lineColor);
      *q++ = {{{e.x1 - o.x, e.y1 - o.y, -0.001f, 0, 0, c},
               {e.x2 - o.x, e.y2 - o.y, -0.001f, 0, 1, c},
               {e.x1 + o.x, e.y1 + o.y, -0.001f, 1, 0, c},
               {e.x2 + o.x, e.y2 + o.y, -0.001f, 1, 1, c}}};
    }
  } else {
    m_Lines.SetSize(count);
    for (const CVoronoi::Edge &e : edges) m_Lines.AddLine(e.x1, e.y1, 0, e.x2, e.y2, 0, m_Points[e.site].lineColor);
  }
}

bool CVoronoiNode::RestoreDevice(CRender *render) {
  return m_Cells.RestoreDevice(render) && m_Sprites.RestoreDevice(render) && m_Lines.RestoreDevice(render) &&
         m_Quads.RestoreDevice(render);
}

void CVoronoiNode::InvalidateDevice(CRender *render) {
  m_Cells.InvalidateDevice(render);
  m_Sprites.InvalidateDevice(render);
  m_Lines.InvalidateDevice(render);
  m_Quads.InvalidateDevice(render);
}

void CVoronoiNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  AddBatchToDrawList(list, parents, camera, m_CellEffect->m_Value, m_Cells);
  if (m_LineEffect->IsConnected()) {
    CBatchRender &borders = m_LineWidth->m_Value != 0.0f ? static_cast<CBatchRender &>(m_Quads) : m_Lines;
    AddBatchToDrawList(list, parents, camera, m_LineEffect->m_Value, borders);
  }
  if (m_PointEffect->IsConnected() && m_PointSize->m_Value != 0.0f)
    AddBatchToDrawList(list, parents, camera, m_PointEffect->m_Value, m_Sprites, m_Count);
}

bool CVoronoiCells::RestoreDevice(CRender *render) {
  InvalidateDevice(render);
  return CreateTriangleRing(render, kBatchTriangles, VBF_PCT);
}

void CVoronoiCells::Draw(CRender *render) {
  if (!m_Edges || !HasRing(render, true)) return;
  const int total = static_cast<int>(m_Edges->size());
  for (int done = 0; done < total;) {
    const int n = std::min(total - done, kBatchTriangles);
    CVertexBuffer *vb = RingBuffer(render);
    auto *out = static_cast<VertexPCT *>(vb->Lock());
    for (int i = 0; i < n; ++i) {
      const CVoronoi::Edge &e = (*m_Edges)[done + i];
      const Site &s = m_Sites[e.site];
      *out++ = {s.x, s.y, 0.0f, 0.5f, 0.0f, s.color};
      *out++ = {e.x1, e.y1, 0.0f, 0.0f, 1.0f, s.color};
      *out++ = {e.x2, e.y2, 0.0f, 1.0f, 1.0f, s.color};
    }
    vb->Unlock();
    DrawTriangleChunk(render, n);
    done += n;
  }
}
