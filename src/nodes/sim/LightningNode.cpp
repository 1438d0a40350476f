#include "nodes/sim/LightningNode.h"

#include <algorithm>

#include "core/Numeric.h"
#include "expr/ExprEvaluator.h"
#include "nodes/ExpressionPorts.h"
#include "nodes/object/SimRandom.h"
#include "nodes/sim/SimValues.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
const char *const kNames[CLightningNode::VariableCount] = {
    "boltnr",     "in1",        "in2",     "in3",     "in4",     "in5",     "time",    "startpos.x", "startpos.y",
    "startpos.z", "endpos.x",   "endpos.y", "endpos.z", "color.r", "color.g", "color.b", "color.a",    "boltrandseed"};

// 3^n as a count, saturating at `limit`.
long long PowerOfThree(int n, long long limit) {
  long long v = 1;
  for (int i = 0; i < n && v < limit; ++i) v *= 3;
  return std::min(v, limit);
}
}  // namespace

CNodeInfo *CLightningNode::CreateInfo() {
  auto *info = new CNodeInfo(11, "Lightning", [] { return static_cast<CNode *>(new CLightningNode); },
                             "Create bolts of lightning");
  info->AddInPort(new CPortInt("NumBolts", "Number of bolts", 1, 1, 10000));
  info->AddInPort(new CPortInt("Detail", "Amount of detail in the bolts", 5, 0, 15));
  info->AddInPort(new CPortFloat("Width", "Width of the bolt", 0.01f, 0.01f, 0.0f, 10000.0f));
  info->AddInPort(
      new CPortFloat("Jitter", "Amount to randomly jitter the bolts each frame", 0.001f, 0.01f, 0.0f, 10000.0f));
  info->AddInPort(new CPortFloat("BranchChance",
                                 "Chance that a branch should be created.\n0.0=No branches will be created\n1.0=A "
                                 "branch will always be created at each generation",
                                 1.0f, 0.01f, 0.0f, 1.0f));
  info->AddInPort(new CPortFloat("BranchLengthScale",
                                 "Scale of each branch compared to the branch full length. 1.0 will create a branch "
                                 "that is equal to the main path of the bolt",
                                 0.75f, 0.01f, 0.0f, 1000.0f));
  AddExpressionInputPorts(*info, false, "Random seed used to generate the bolts");
  info->AddInPort(new CPortString(
      "Expression",
      "Expression to be evaluated for each bolt.\nboltnr=the index of the current bolt.\ntime=runtime in "
      "seconds\naspect=window aspect\nnumobjectsx/y/z is the number of objects in each axis\nOutput values are pos.x, "
      "pos.y, pos.z, rot.x, rot.y, scale.x, scale.y, scale.z, rot.z, col.r, col.g, col.b, col.a.\nPlease see the "
      "website for detailed description of this port.",
      "startpos.x = 0;\r\nstartpos.y = 1;\r\nstartpos.z = 0;\r\nendpos.x = 0;\r\nendpos.y = -1;\r\nendpos.z = "
      "0;\r\ncolor.r = color.g = color.b = color.a = 1;\r\nboltrandseed = floor(time*10);"));
  info->AddInPort(new CPortEffect("Effect", "The effect to apply on the bolts"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

CLightningNode::CLightningNode() : CBatchObjectNode(m_Lines), m_Evaluator(std::make_unique<CExprEvaluator>()) {}
CLightningNode::~CLightningNode() = default;

bool CLightningNode::Init() {
  InitBatchPorts("Effect");
  m_NumBolts = InPort<CPortInt>("NumBolts");
  m_Detail = InPort<CPortInt>("Detail");
  m_Width = InPort<CPortFloat>("Width");
  m_Jitter = InPort<CPortFloat>("Jitter");
  m_BranchChance = InPort<CPortFloat>("BranchChance");
  m_BranchLengthScale = InPort<CPortFloat>("BranchLengthScale");
  m_Inputs.Find(*this);
  for (int v = 0; v < VariableCount; ++v) m_Evaluator->AddAddress(kNames[v], &m_Vars[v], 0.0);
  m_Evaluator->Attach();
  return true;
}

void CLightningNode::Update(float time, FrameInfo *frame) {
  if (m_Updated || !frame) return;
  UpdateInPorts(frame->Time);
  if (!m_Inputs.Ready(*m_Evaluator)) return;
  m_Inputs.Apply(*m_Evaluator, &m_Vars[In1]);
  m_Vars[Time] = time;
  m_Vars[BoltRandSeed] = m_Inputs.randomSeed->m_Value;

  const int bolts = std::clamp(m_NumBolts->m_Value, 1, 10000), detail = std::clamp(m_Detail->m_Value, 0, 15);
  // Room for the worst case within the budget, so a steady frame allocates nothing.
  m_BoltPoints.reserve(std::min<long long>((PowerOfThree(detail + 1, MaxPoints) / 2 + 1) * bolts, MaxPoints));
  m_Bolts.reserve(std::min<long long>((PowerOfThree(detail, MaxPoints) / 2 + 1) * bolts, MaxPoints / 2));
  m_Bolts.clear();
  m_BoltPoints.clear();
  Reseed();
  for (int b = 1; b <= bolts && m_BoltPoints.size() + 2 <= MaxPoints; ++b) {
    m_Vars[BoltNr] = b;
    for (int c = ColorR; c <= ColorA; ++c) m_Vars[c] = 1.0;
    m_Evaluator->Evaluate();
    // Before the bolt grows: a text that changes the seed changes the shape.
    if (m_Vars[BoltRandSeed] != m_Seed) Reseed();
    const float color[4] = {static_cast<float>(m_Vars[ColorR]), static_cast<float>(m_Vars[ColorG]),
                            static_cast<float>(m_Vars[ColorB]), static_cast<float>(m_Vars[ColorA])};
    const int first = static_cast<int>(m_Bolts.size());
    AddBolt(SafePosition(m_Vars[StartX], m_Vars[StartY], m_Vars[StartZ]),
            SafePosition(m_Vars[EndX], m_Vars[EndY], m_Vars[EndZ]), color);
    Grow(first, detail);
  }
  WriteStrips();
  PublishObject();
}

void CLightningNode::Reseed() {
  m_Seed = m_Vars[BoltRandSeed];
  SeedRandomState(m_BoltState, static_cast<uint32_t>(SatInt(m_Seed)));
}

int CLightningNode::AddBolt(const CVector3 &from, const CVector3 &to, const float color[4]) {
  const int a = static_cast<int>(m_BoltPoints.size());
  m_BoltPoints.push_back({a + 1, -1, from});
  m_BoltPoints.push_back({-1, a, to});
  m_Bolts.push_back({{color[0], color[1], color[2], color[3]}, a, a + 1, 2});
  return static_cast<int>(m_Bolts.size()) - 1;
}

// Each generation puts a displaced midpoint into every segment of the bolts
// grown from `first` so far; a branch forked in a generation takes part from
// the next one on. Displacement and branch lengths halve each generation.
void CLightningNode::Grow(int first, int generations) {
  const float jitter = SafeFloat(m_Jitter->m_Value, 0.0f, 10000.0f);
  const float chance = SafeFloat(m_BranchChance->m_Value, 0.0f, 1.0f);
  const float scale = SafeFloat(m_BranchLengthScale->m_Value, 0.0f, 1000.0f);
  float o = 0.25f;
  for (int g = 0; g < generations; ++g, o *= 0.5f) {
    const int end = static_cast<int>(m_Bolts.size());
    for (int b = first; b < end; ++b) {
      for (int p = m_Bolts[b].first; m_BoltPoints[p].next >= 0;) {
        if (m_BoltPoints.size() >= MaxPoints) return;
        const int q = m_BoltPoints[p].next;
        const CVector3 from = m_BoltPoints[p].position, to = m_BoltPoints[q].position;
        const float t = RandomSigned(m_BoltState) * o * 0.1f + 0.5f;
        const CVector3 j = CVector3{DrawSigned(), DrawSigned(), DrawSigned()} * jitter;
        const float sb = RandomSigned(m_BoltState);
        const CVector3 d = to - from;
        const float length = Length(d);
        const CVector3 n = length > 0.0f ? d * (1.0f / length) : CVector3{};
        const CVector3 side{n.y, -n.x, 0.0f};
        // t multiplies the sum of the ends: at 0.5 this is the midpoint.
        const CVector3 m = SafePosition((from + to) * t + j + side * (o * sb));
        const int mi = static_cast<int>(m_BoltPoints.size());
        m_BoltPoints.push_back({q, p, m});
        m_BoltPoints[p].next = mi;
        m_BoltPoints[q].previous = mi;
        ++m_Bolts[b].count;
        if (RandomUnsigned(m_BoltState) <= chance) {
          const float s1 = RandomSigned(m_BoltState), s2 = RandomSigned(m_BoltState), s3 = RandomSigned(m_BoltState);
          if (m_BoltPoints.size() + 2 <= MaxPoints) {
            const CVector3 e = SafePosition(m + (m - from) * scale + CVector3{s3, s2, s1} * (0.5f * o));
            const float color[4] = {m_Bolts[b].color[0], m_Bolts[b].color[1], m_Bolts[b].color[2],
                                    m_Bolts[b].color[3]};
            AddBolt(m, e, color);
          }
        }
        p = q;
      }
    }
  }
}

void CLightningNode::WriteStrips() {
  const float width = SafeFloat(m_Width->m_Value, 0.0f, 10000.0f);
  m_Lines.Clear();
  for (const Bolt &bolt : m_Bolts) {
    CRenderVolumeLines::StripPoint *out = m_Lines.AddStrip(bolt.count, 1.0f);
    const uint32_t color = PackColorRounded(bolt.color);
    int k = 0;
    for (int p = bolt.first; p >= 0; p = m_BoltPoints[p].next, ++k) {
      const CVector3 &v = m_BoltPoints[p].position;
      out[k] = {v.x, v.y, v.z, color, width, static_cast<float>(k) / static_cast<float>(bolt.count - 1)};
    }
  }
  m_Lines.Finish();
}
