#include "nodes/object/LinesNode.h"

#include <algorithm>
#include <cmath>

#include "nodes/object/SimRandom.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
// p turned around the unit axis a by `degrees` (the quaternion rotation q p q^-1).
CVector3 RotateAround(const CVector3 &p, const CVector3 &a, float degrees) {
  const float angle = degrees * 0.017453292f, c = std::cos(angle), s = std::sin(angle);
  return p * c + Cross(a, p) * s + a * (Dot(a, p) * (1.0f - c));
}
}  // namespace

CNodeInfo *CLinesNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "Lines", [] { return static_cast<CNode *>(new CLinesNode); },
                             "Draws random lines in a criss cross pattern");
  const Color4f black{0, 0, 0, 0}, white{1, 1, 1, 1};
  info->AddInPort(new CPortFloat("Width", "Width of drawing area", 1.0f, 0.01f, 0.0001f, 100000.0f));
  info->AddInPort(new CPortFloat("Height", "Height of drawing area", 1.0f, 0.01f, 0.0001f, 100000.0f));
  info->AddInPort(new CPortInt("NumSectionsWidth",
                               "Number of subdivisions we should do along the width of the line. Usefull when applying "
                               "a vertex shaders",
                               1, 1, 10000));
  info->AddInPort(new CPortInt("NumSectionsHeight",
                               "Number of subdivisions we should do along the height of the line. Usefull when applying "
                               "a vertex shaders",
                               1, 1, 10000));
  info->AddInPort(new CPortInt("RepeatTexU", "How many times we should repeat the texture U over the line", 1, 0, 1000));
  info->AddInPort(new CPortInt("RepeatTexV", "How many times we should repeat the texture V over the line", 1, 0, 1000));
  info->AddInPort(new CPortFloat("Thickness", "Thickness of the lines. Set when line is created", 0.01f, 0.01f, 1e-05f,
                                 10000.0f));
  info->AddInPort(new CPortFloat("LocalThickness", "Thickness to add to the base thickness. (Local)", 0.0f, 0.01f,
                                 1e-05f, 10000.0f));
  info->AddInPort(new CPortColor("Color", "Color of the lines", {0.8f, 0.9f, 1, 1}, black, white));
  info->AddInPort(new CPortColor("LocalColor", "Color of the lines (Local)", white, black, white));
  info->AddInPort(new CPortFloat("LinesPerSec", "Number of lines to add per second", 1.0f, 0.1f, 0.0f, 10000.0f));
  info->AddInPort(new CPortFloat("LineLifeTime", "How long time line should live. Set when line is created", 1.0f, 0.1f,
                                 0.0f, 10000.0f));
  info->AddInPort(new CPortFloat("RotationSpeed", "The speed of the line rotation", 0.0f, 0.1f, -10000.0f, 10000.0f));
  info->AddInPort(new CPortFloat("RotationSpeedVar", "The speed of the line rotation variance", 0.1f, 0.1f, -10000.0f,
                                 10000.0f));
  info->AddInPort(new CPortEffect("Effect", "Effect"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  return info;
}

bool CLinesNode::Init() {
  InitBatchPorts("Effect");
  m_Width = InPort<CPortFloat>("Width");
  m_Height = InPort<CPortFloat>("Height");
  m_SectionsW = InPort<CPortInt>("NumSectionsWidth");
  m_SectionsH = InPort<CPortInt>("NumSectionsHeight");
  m_RepeatU = InPort<CPortInt>("RepeatTexU");
  m_RepeatV = InPort<CPortInt>("RepeatTexV");
  m_Thickness = InPort<CPortFloat>("Thickness");
  m_LocalThickness = InPort<CPortFloat>("LocalThickness");
  m_Color = InPort<CPortColor>("Color");
  m_LocalColor = InPort<CPortColor>("LocalColor");
  m_LinesPerSec = InPort<CPortFloat>("LinesPerSec");
  m_LifeTime = InPort<CPortFloat>("LineLifeTime");
  m_RotSpeed = InPort<CPortFloat>("RotationSpeed");
  m_RotSpeedVar = InPort<CPortFloat>("RotationSpeedVar");
  return true;
}

CVector3 CLinesNode::OnEllipse(const CVector3 &v) const {
  const CVector3 n = Normalize({v.x * m_Half.x, v.y * m_Half.y, 0.0f});
  return {n.x * m_Half.x, n.y * m_Half.y, 0.0f};
}

void CLinesNode::SizeQuads(int sections) {
  const long long wanted = static_cast<long long>(sections) * static_cast<long long>(m_Pool.size());
  m_QuadCapacity = static_cast<int>(std::min<long long>(wanted, MaxQuads));
  m_Quads.SetSize(m_QuadCapacity);
  m_DirtyUnits = ALL_UNITS;
}

void CLinesNode::Spawn(CrossLine &line) {
  line.age = 0.0f;
  line.alive = true;
  line.baseThickness = m_Thickness->m_Value;
  const Color4f c = m_Color->m_Value;
  line.baseColor[0] = c.r, line.baseColor[1] = c.g, line.baseColor[2] = c.b, line.baseColor[3] = c.a;
  line.lifeTime = m_LifeTime->m_Value;
  const CVector3 p = RandomUnitVector();
  const CVector3 axis = RandomUnitVector();
  // The far end is the opposite point turned a little, so the line crosses the middle.
  const CVector3 r = RotateAround(-p, axis, RandomRange(-90.0f, 90.0f));
  line.axis1 = RandomUnitVector();
  line.speed1 = m_RotSpeed->m_Value + DrawSigned() * m_RotSpeedVar->m_Value;
  line.axis2 = RandomUnitVector();
  line.speed2 = m_RotSpeed->m_Value + DrawSigned() * m_RotSpeedVar->m_Value;
  line.end1 = OnEllipse(p);
  line.end2 = OnEllipse(r);
}

void CLinesNode::Update(float, FrameInfo *frame) {
  if (m_Updated || !frame) return;
  UpdateInPorts(frame->Time);
  const float dt = frame->DeltaTime;
  m_Half = {m_Width->m_Value * 0.5f, m_Height->m_Value * 0.5f, 0.0f};
  const int perSec = static_cast<int>(std::clamp(m_LinesPerSec->m_Value, 0.0f, 10000.0f));
  const int sectionsW = std::clamp(m_SectionsW->m_Value, 1, 10000), sectionsH = std::clamp(m_SectionsH->m_Value, 1, 10000);
  const int sections = static_cast<int>(std::min<long long>(static_cast<long long>(sectionsW) * sectionsH, MaxQuads));

  m_Accumulator += dt;
  const int n = static_cast<int>(std::min(m_Accumulator * static_cast<float>(perSec), float{MaxLines}));
  const int pool = static_cast<int>(m_Pool.size());
  if (m_FreeCount < n && pool < MaxLines) {
    const int grow = std::min(std::max(2 * n, 2 * perSec), MaxLines - pool);
    m_Pool.resize(static_cast<size_t>(pool) + grow);
    m_FreeCount += grow;
    m_SearchStart = pool;
    if (static_cast<long long>(sections) * static_cast<long long>(m_Pool.size()) > m_QuadCapacity) SizeQuads(sections);
  } else if (m_SectionsW->m_Changed || m_SectionsH->m_Changed) {
    SizeQuads(sections);
  }
  if (n > 0) {
    // One period per update, however many lines came: a rate above the
    // frame rate makes the backlog grow.
    m_Accumulator -= 1.0f / static_cast<float>(perSec);
    for (int k = 0; k < n; ++k) {
      const int index = TakeFreeRecord(m_Pool.data(), static_cast<int>(m_Pool.size()), m_SearchStart);
      if (index < 0) break;
      Spawn(m_Pool[index]);
      --m_FreeCount;
    }
  }

  const bool localThickness = m_LocalThickness->IsConnected(), localColor = m_LocalColor->IsConnected();
  m_LiveCount = 0;
  for (CrossLine &line : m_Pool) {
    if (!line.alive) continue;
    line.age += dt;
    if (!(line.age < line.lifeTime)) {
      line.alive = false;
      ++m_FreeCount;
      continue;
    }
    const float t = line.age / line.lifeTime;
    if (localThickness) m_LocalThickness->Update(t);
    line.thickness = m_LocalThickness->m_Value + line.baseThickness;
    if (localColor) m_LocalColor->Update(t);
    const Color4f &lc = m_LocalColor->m_Value;
    const float local[4] = {lc.r, lc.g, lc.b, lc.a};
    for (int c = 0; c < 4; ++c) line.color[c] = line.baseColor[c] * local[c];
    line.end1 = OnEllipse(RotateAround(line.end1, line.axis1, line.speed1 * dt));
    line.end2 = OnEllipse(RotateAround(line.end2, line.axis2, line.speed2 * dt));
    ++m_LiveCount;
  }

  if (!m_Pool.empty()) {
    const int repeatU = m_RepeatU->m_Value, repeatV = m_RepeatV->m_Value;
    m_Quads.SetCount(m_QuadCapacity);
    CRenderQuads::Quad *out = m_Quads.Quads(), *begin = out;
    for (const CrossLine &line : m_Pool)
      if (line.alive)
        out = m_Quads.AddLine(line.end1, line.end2, line.thickness, sectionsW, sectionsH, static_cast<float>(repeatU),
                              static_cast<float>(repeatV), PackColorRounded(line.color), out);
    m_Quads.SetCount(static_cast<int>(out - begin));
  }
  PublishObject();
}
