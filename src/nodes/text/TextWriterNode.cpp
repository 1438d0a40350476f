#include "nodes/text/TextWriterNode.h"

#include <algorithm>
#include <cmath>

#include "core/Random.h"
#include "expr/ExprEvaluator.h"
#include "render/Color.h"
#include "render/Matrix.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
const char kFontName[] = "nodedata/fonts/font1.fnt";
// A text longer than this is cut: every character keeps a record and a quad.
constexpr size_t kMaxText = 10000;
constexpr size_t kMinRecords = 500;

const char kExpressionDesc[] =
    "Expression to be evaluated for each character. Inputs are charnr,numchars,linenr,numlines,time,age (of "
    "character). Inputs/outputs are pos x/y/z,rot x/y/z,width,height,col r/g/b/a. Please see the website for "
    "detailed description of this port.";
const char kExpressionDefault[] =
    "pos.x = pos.x + noise2(age, charnr)*(1-age)*2;\r\npos.y = pos.y + noise2(age, charnr*2)*(1-age)*2;\r\nwidth = "
    "width * age;\r\nheight = height * age;\r\ncol.a = age;\r\n";
const char *const kAxes[3] = {"x", "y", "z"};
const char *const kChannels[4] = {"r", "g", "b", "a"};
}  // namespace

CNodeInfo *CTextWriterNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "TextWriter", [] { return static_cast<CNode *>(new CTextWriterNode); }, "Text writer");
  auto *align = info->AddInPort(new CPortInt("TextAlign", "How to align the text", 1, 0, 3));
  align->AddValue(0, "Left")->AddValue(1, "Center")->AddValue(2, "Right")->AddValue(3, "Justify");
  info->AddInPort(new CPortVector("Pos", "Position of the text", {}, {0.1f, 0.1f, 0.1f}, {-10000, -10000, -10000},
                                  {10000, 10000, 10000}));
  info->AddInPort(new CPortBool("UseCharsPerSec", "Will write all text directly if false", true));
  info->AddInPort(new CPortFloat("CharsPerSec", "Number of characters to write per second", 2, 1, 0, 10000));
  info->AddInPort(new CPortFloat("CharExpressionTime",
                                 "How long of the chars life the expression should be evaluated (sec)", 2, 1, 0, 10000));
  info->AddInPort(new CPortFloat("ResetDelay",
                                 "How many seconds to wait before the writer starts over when all text has been "
                                 "written. Set to -1 to disable and never restart the writer",
                                 3, 1, -1, 10000));
  info->AddInPort(new CPortString("TextLines", "The lines of text to show", "Hello\r\nworld!"));
  info->AddInPort(new CPortInt("RandomSeed", "Random seed to be used by the rand() and srand() functions", 1, 1, 100000));
  info->AddInPort(new CPortString("Expression", kExpressionDesc, kExpressionDefault));
  AddBlendPorts(info);
  AddShaderPorts(info);
  return info;
}

CTextWriterNode::CTextWriterNode() : m_Eval(std::make_unique<CExprEvaluator>()) {}

CTextWriterNode::~CTextWriterNode() = default;

bool CTextWriterNode::Init() {
  CFontEffectNode::Init();
  m_TextAlign = InPort<CPortInt>("TextAlign");
  m_Pos = InPort<CPortVector>("Pos");
  m_UseCharsPerSec = InPort<CPortBool>("UseCharsPerSec");
  m_CharsPerSec = InPort<CPortFloat>("CharsPerSec");
  m_CharExpressionTime = InPort<CPortFloat>("CharExpressionTime");
  m_ResetDelay = InPort<CPortFloat>("ResetDelay");
  m_TextLines = InPort<CPortString>("TextLines");
  m_RandomSeed = InPort<CPortInt>("RandomSeed");
  m_Expression = InPort<CPortString>("Expression");

  for (int a = 0; a < 3; ++a) m_Eval->AddAddress(std::string("pos.") + kAxes[a], &m_Vars.pos[a], 0.0);
  for (int a = 0; a < 3; ++a) m_Eval->AddAddress(std::string("rot.") + kAxes[a], &m_Vars.rot[a], 0.0);
  for (int c = 0; c < 4; ++c) m_Eval->AddAddress(std::string("col.") + kChannels[c], &m_Vars.col[c], 1.0);
  m_Eval->AddAddress("charnr", &m_Vars.charnr, 0.0);
  m_Eval->AddAddress("numchars", &m_Vars.numchars, 0.0);
  m_Eval->AddAddress("linenr", &m_Vars.linenr, 0.0);
  m_Eval->AddAddress("numlines", &m_Vars.numlines, 0.0);
  m_Eval->AddAddress("time", &m_Vars.time, 0.0);
  m_Eval->AddAddress("age", &m_Vars.age, 0.0);
  m_Eval->AddAddress("permrand", &m_Vars.permrand, 0.0);
  m_Eval->AddAddress("width", &m_Vars.width, 0.0);
  m_Eval->AddAddress("height", &m_Vars.height, 0.0);
  m_Vars.permrand = RandomUnsigned(SharedRandom());
  m_Eval->Attach();
  m_Font.SetFont(kFontName, static_cast<int>(kMinRecords));
  m_Chars.resize(kMinRecords);
  return true;
}

void CTextWriterNode::ResetWriter(size_t length) {
  m_Accumulated = m_Written = m_FinishTime = 0;
  if (m_Chars.size() < length) m_Chars.resize(length);
  for (CharRecord &r : m_Chars) {
    r.age = 0;
    r.frozen = false;
  }
}

void CTextWriterNode::Update(float time, FrameInfo *frame) {
  if (m_ObjectOut) m_ObjectOut->m_Value = this;
  if (m_Updated) return;
  const std::string &text = m_TextLines ? m_TextLines->m_Value : std::string();
  const size_t length = std::min(text.size(), kMaxText);
  if (frame->Restart) ResetWriter(length);
  UpdateInPorts(frame->Time);
  ReadEffectInputs(*frame);
  if (m_Expression->m_Changed) {
    const double permrand = m_Vars.permrand;  // lives as long as the node
    m_Eval->Compile(m_Expression->m_Value);
    m_Vars.permrand = permrand;
  }
  if (!m_Eval->m_Compiled) return;
  m_Vars.numchars = static_cast<double>(length);
  if (m_TextLines->m_Changed) {
    m_Font.SetFont(kFontName, static_cast<int>(std::max(length, kMinRecords)));
    ResetWriter(length);
  }
  m_Eval->SeedRandom(static_cast<uint32_t>(m_RandomSeed->m_Value));

  if (!m_UseCharsPerSec->m_Value) {
    m_Written = static_cast<float>(length);
  } else {
    m_Accumulated += frame->DeltaTime;
    const float n = std::trunc(m_Accumulated * std::trunc(m_CharsPerSec->m_Value));
    if (n > 0) {
      m_Accumulated = 0;
      m_Written = std::min(m_Written + n, static_cast<float>(length));
    }
  }
  if (m_Written == static_cast<float>(length) && m_ResetDelay->m_Value >= 0) {
    if (m_FinishTime <= 0) m_FinishTime = frame->Time;
    if (m_ResetDelay->m_Value <= frame->Time - m_FinishTime) ResetWriter(length);
  }

  m_Vars.time = time;
  m_Font.SetVertexHook(&CTextWriterNode::VertexHook, this);
  m_Font.Batch().SetCount(0);
  const Vec3f &pos = m_Pos->m_Value;
  m_Font.WriteLines(pos.x, pos.y, pos.z, text.data(), static_cast<int>(length), m_TextAlign->m_Value);
  const size_t shown = std::min(static_cast<size_t>(m_Written), m_Chars.size());
  for (size_t i = 0; i < shown; ++i) m_Chars[i].age += frame->DeltaTime;
}

CQuadBatch::Quad *CTextWriterNode::VertexHook(void *user, CQuadBatch::Quad *out, int quad, int line, float corner[3],
                                              float w, float h, const float uv0[2], const float uv1[2]) {
  return static_cast<CTextWriterNode *>(user)->PlaceChar(out, quad, line, corner, w, h, uv0, uv1);
}

CQuadBatch::Quad *CTextWriterNode::PlaceChar(CQuadBatch::Quad *out, int i, int line, const float corner[3], float w,
                                             float h, const float uv0[2], const float uv1[2]) {
  if (static_cast<size_t>(i) >= m_Chars.size()) m_Chars.resize(i + 1);
  if (m_Written < static_cast<float>(i)) return nullptr;  // not written yet
  CharRecord &r = m_Chars[i];
  if (!r.frozen) {
    const float lifetime = m_CharExpressionTime->m_Value;
    if (r.age > lifetime) {
      r.age = lifetime;
      r.frozen = true;
    }
    m_Vars.pos[0] = corner[0] + w / 2;
    m_Vars.pos[1] = corner[1] - h / 2;
    m_Vars.pos[2] = corner[2];
    std::fill_n(m_Vars.rot, 3, 0.0);
    std::fill_n(m_Vars.col, 4, 1.0);
    m_Vars.age = std::fabs(lifetime) < 1e-05f ? 1.0 : r.age / lifetime;
    m_Vars.width = w;
    m_Vars.height = h;
    m_Vars.charnr = i;
    m_Vars.linenr = line;
    m_Eval->Evaluate();
    for (int a = 0; a < 3; ++a) {
      r.center[a] = static_cast<float>(m_Vars.pos[a]);
      r.rot[a] = static_cast<float>(m_Vars.rot[a]);
    }
    r.halfWidth = static_cast<float>(m_Vars.width / 2);
    r.halfHeight = static_cast<float>(m_Vars.height / 2);
    r.color = PackColor(static_cast<float>(m_Vars.col[0]), static_cast<float>(m_Vars.col[1]),
                        static_cast<float>(m_Vars.col[2]), static_cast<float>(m_Vars.col[3]));
  }
  const CMatrix rotation = RotationMatrix(r.rot[0], r.rot[1], r.rot[2]);
  const CVector3 center{r.center[0], r.center[1], r.center[2]};
  auto vertex = [&](float sx, float sy, float u, float v) {
    const CVector3 p = center + TransformNormal({sx * r.halfWidth, sy * r.halfHeight, 0}, rotation);
    return VertexPCT{p.x, p.y, p.z, u, v, r.color};
  };
  *out = {{vertex(1, 1, uv1[0], uv0[1]), vertex(-1, 1, uv0[0], uv0[1]), vertex(1, -1, uv1[0], uv1[1]),
           vertex(-1, -1, uv0[0], uv1[1])}};
  return out + 1;
}
