#include "nodes/sim/RibbonsNode.h"

#include <algorithm>
#include <cmath>

#include "expr/ExprEvaluator.h"
#include "nodes/ExpressionPorts.h"
#include "nodes/object/SimRandom.h"
#include "nodes/sim/SimValues.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
const char *const kNames[CRibbonsNode::VariableCount] = {
    "deltatime", "scenetime", "perm", "permrand", "ribbonnr", "numribbons", "in1",   "in2",   "in3",   "in4",  "in5",
    "time",      "aspect",    "pos.x", "pos.y",   "pos.z",    "width",      "col.r", "col.g", "col.b", "col.a"};
}  // namespace

CNodeInfo *CRibbonsNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "Ribbons", [] { return static_cast<CNode *>(new CRibbonsNode); }, "Ribbons");
  info->AddInPort(new CPortInt("NumRibbons", "Number of ribbons", 3, 1, 10000));
  info->AddInPort(new CPortInt("NumPoints", "Number of points in each ribbon.", 20, 2, 10000));
  info->AddInPort(new CPortFloat("EvaluationsPerSec",
                                 "Number of expression evaluations that should be done per second. For each "
                                 "evaluation we calculate one new point in the ribbon",
                                 30.0f, 1.0f, 0.0f, 10000.0f));
  AddExpressionInputPorts(*info, false);
  info->AddInPort(new CPortString(
      "Expression",
      "Expression to be evaluated for each cloned object.\nribbonnr=The index of the current ribbon. 1 is the "
      "first\nnumribbons=Numer of ribbons to draw\ntime=Local or scene in seconds\nin1-5=Values from the input "
      "ports\naspect=Window aspect\nscenetime=Always scene runtime\ndeltatime=not correct when connected to local "
      "port\nperm=Not reset for the life of the node. Initial value 0\npermrand=Not reset for the life of the "
      "node\nOutput values are pos.x, pos.y, pos.z, width, col.r, col.g, col.b, col.a.\nPlease see the website for "
      "detailed description of this port.",
      "pos.x = sin(time+ribbonnr*1.12);\r\npos.y = cos(time+ribbonnr*1.12);\r\npos.z = 0;"));
  info->AddInPort(new CPortEffect("Effect", "Effect to apply to each ribbon"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

CRibbonsNode::CRibbonsNode() : CBatchObjectNode(m_Lines), m_Evaluator(std::make_unique<CExprEvaluator>()) {}
CRibbonsNode::~CRibbonsNode() = default;

bool CRibbonsNode::Init() {
  InitBatchPorts("Effect");
  m_NumRibbons = InPort<CPortInt>("NumRibbons");
  m_NumPoints = InPort<CPortInt>("NumPoints");
  m_PerSec = InPort<CPortFloat>("EvaluationsPerSec");
  m_Inputs.Find(*this);
  for (int v = 0; v < VariableCount; ++v) {
    const double value = v == DeltaTime || v == SceneTime ? 1.0 : (v == PermRand ? DrawUnsigned() : 0.0);
    m_Evaluator->AddAddress(kNames[v], &m_Vars[v], value);
  }
  m_Evaluator->Attach();
  return true;
}

void CRibbonsNode::Update(float time, FrameInfo *frame) {
  if (m_Updated || !frame) return;
  UpdateInPorts(frame->Time);
  const int ribbons = std::clamp(m_NumRibbons->m_Value, 1, 10000);
  if (ribbons != m_Ribbons || m_NumPoints->m_Changed || m_Length == 0)
    Restart(ribbons, std::clamp(m_NumPoints->m_Value, 2, std::max(2, std::min(10000, MaxPoints / ribbons))));
  if (!m_Inputs.Ready(*m_Evaluator)) return;

  // A rate of 0 (or none) never evaluates; above the frame rate it gives one
  // point a frame, and the time it is behind is held to a second.
  const float rate = m_PerSec->m_Value;
  if (!(rate > 0.0f) || !std::isfinite(rate)) return;
  const float period = 1.0f / rate;
  if (std::isfinite(frame->DeltaTime) && frame->DeltaTime > 0.0f)
    m_Accumulator = std::min(m_Accumulator + frame->DeltaTime, period + 1.0f);
  if (period > m_Accumulator) return;
  m_Accumulator -= period;
  Evaluate(time, *frame);
  WriteStrips();
}

void CRibbonsNode::Restart(int ribbons, int length) {
  m_Ribbons = ribbons;
  m_Length = length;
  m_Points.resize(static_cast<size_t>(ribbons) * length);
  m_Count.assign(ribbons, 0);
  m_Head.assign(ribbons, 0);
}

void CRibbonsNode::Evaluate(float time, const FrameInfo &frame) {
  m_Vars[Aspect] = frame.Aspect;
  m_Inputs.Apply(*m_Evaluator, &m_Vars[In1]);
  m_Vars[Time] = time;
  m_Vars[SceneTime] = frame.Time;
  m_Vars[DeltaTime] = frame.DeltaTime;
  m_Vars[NumRibbons] = m_Ribbons;
  for (int r = 0; r < m_Ribbons; ++r) {
    m_Vars[RibbonNr] = r + 1;
    m_Vars[PosX] = m_Vars[PosY] = m_Vars[PosZ] = 0.0;
    m_Vars[Width] = 0.1;
    m_Vars[ColR] = m_Vars[ColG] = m_Vars[ColB] = m_Vars[ColA] = 1.0;
    m_Evaluator->Evaluate();
    const CVector3 p = SafePosition(m_Vars[PosX], m_Vars[PosY], m_Vars[PosZ]);
    RibbonPoint &slot = m_Points[static_cast<size_t>(r) * m_Length + m_Head[r]];
    slot = {p.x, p.y, p.z, {}, SafeFloat(m_Vars[Width], -10000.0f, 10000.0f)};
    for (int c = 0; c < 4; ++c) slot.color[c] = static_cast<float>(m_Vars[ColR + c]);
    m_Head[r] = (m_Head[r] + 1) % m_Length;
    m_Count[r] = std::min(m_Count[r] + 1, m_Length);
  }
}

void CRibbonsNode::WriteStrips() {
  m_Lines.Clear();
  if (m_Count.empty() || m_Count[0] < 2) return;  // every ribbon has as many points
  for (int r = 0; r < m_Ribbons; ++r) {
    const int count = m_Count[r], head = m_Head[r];
    CRenderVolumeLines::StripPoint *out = m_Lines.AddStrip(count, 1.0f);
    const RibbonPoint *ring = &m_Points[static_cast<size_t>(r) * m_Length];
    // Oldest first: from the head to the end of the used slots, then from 0.
    for (int k = 0; k < count; ++k) {
      const RibbonPoint &p = ring[(head + k) % count];
      out[k] = {p.x, p.y, p.z, PackColorRounded(p.color), p.width, static_cast<float>(k) / (count - 1)};
    }
  }
  m_Lines.Finish();
  PublishObject();
}
