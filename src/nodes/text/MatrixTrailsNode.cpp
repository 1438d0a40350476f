#include "nodes/text/MatrixTrailsNode.h"

#include <algorithm>
#include <cmath>

#include "core/Random.h"
#include "render/Color.h"
#include "scene/DrawList.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
// An aspect ratio widens the grid by that many columns; a window of any
// shape stays within this many cells a side.
constexpr int kMaxCells = 400;
}  // namespace

CNodeInfo *CMatrixTrailsNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "MatrixTrails", [] { return static_cast<CNode *>(new CMatrixTrailsNode); },
                             "Matrix trails");
  info->AddInPort(new CPortEffect("Effect", "Effect"));
  info->AddOutPort(new CPortObject("Object", "Object"));
  info->AddInPort(new CPortFloat("CharDelay", "Time to wait before we add a new char", 0.03f, 0.01f, 0, 10000));
  info->AddInPort(new CPortFloat("FadeSpeed", "How quickly the trails will fade away", 1.2f, 0.01f, 0, 10000));
  info->AddInPort(new CPortInt("NumColumns", "Number of columns", 50, 1, 100));
  info->AddInPort(new CPortInt("NumRows", "Number of rows", 40, 1, 100));
  info->AddInPort(new CPortColor("CharCol", "Color of the trails", {0, 1, 0, 1}, {0, 0, 0, 0}, {1, 1, 1, 1}));
  info->AddInPort(new CPortInt("NumChars", "Number of characters in the font texture", 32, 1, 10000));
  info->AddInPort(new CPortFloat("CharWidthTex", "The width of a character", 0.125f, 0.01f, 0, 1));
  info->AddInPort(new CPortFloat("CharHeightTex", "The height of a character", 0.1015625f, 0.01f, 0, 1));
  info->AddInPort(new CPortFloat("Width", "Width of object", 1, 0.001f, 0.001f, 10000));
  info->AddInPort(new CPortFloat("Height", "Height of object", 1, 0.001f, 0.001f, 10000));
  info->AddInPort(
      new CPortBool("AdjustForAspect", "Adjust the width and height depending on the screen aspect", true));
  return info;
}

bool CMatrixTrailsNode::Init() {
  m_Effect = InPort<CPortEffect>("Effect");
  m_Object = OutPort<CPortObject>("Object");
  m_CharDelay = InPort<CPortFloat>("CharDelay");
  m_FadeSpeed = InPort<CPortFloat>("FadeSpeed");
  m_NumColumns = InPort<CPortInt>("NumColumns");
  m_NumRows = InPort<CPortInt>("NumRows");
  m_CharCol = InPort<CPortColor>("CharCol");
  m_NumChars = InPort<CPortInt>("NumChars");
  m_CharWidthTex = InPort<CPortFloat>("CharWidthTex");
  m_CharHeightTex = InPort<CPortFloat>("CharHeightTex");
  m_Width = InPort<CPortFloat>("Width");
  m_Height = InPort<CPortFloat>("Height");
  m_AdjustForAspect = InPort<CPortBool>("AdjustForAspect");
  return true;
}

void CMatrixTrailsNode::Update(float, FrameInfo *frame) {
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  const float aspect = frame->Aspect > 0 ? frame->Aspect : 1.0f;
  const bool adjust = m_AdjustForAspect->m_Value;
  float W = m_Width->m_Value, H = m_Height->m_Value;
  if (adjust) (aspect > 1 ? W *= aspect : H /= aspect);
  if (frame->Aspect != frame->PrevAspect || m_NumColumns->m_Changed || m_NumRows->m_Changed ||
      m_AdjustForAspect->m_Changed || m_Columns.empty()) {
    int columns = m_NumColumns->m_Value, rows = m_NumRows->m_Value;
    if (adjust) (aspect > 1 ? columns = static_cast<int>(columns * aspect) : rows = static_cast<int>(rows / aspect));
    Rebuild(std::clamp(columns, 1, kMaxCells), std::clamp(rows, 1, kMaxCells));
  }
  for (CMatrixColumn &column : m_Columns) Step(column, frame->DeltaTime);

  const float cw = W / Columns(), ch = H / m_Rows;
  float x = -W / 2;
  CQuadBatch::Quad *out = m_Quads.Quads();
  for (const CMatrixColumn &column : m_Columns) {
    out = WriteColumn(column, x, H / 2 - ch, cw, ch, out);
    x += cw;
  }
  m_Quads.SetCount(static_cast<int>(out - m_Quads.Quads()));
  m_Object->m_Value = this;
}

void CMatrixTrailsNode::Rebuild(int columns, int rows) {
  m_Rows = rows;
  // A private generator, seeded from the shared one: a run seeded alike
  // repeats, and the trails show even where nothing seeded the shared one.
  SeedRandomState(m_Random, NextRandom(SharedRandom()));
  m_Columns.assign(columns, {});
  for (int i = 0; i < columns; ++i) SetUpColumn(m_Columns[i], i, columns);
  m_Quads.SetSize(rows * columns);
  m_DirtyUnits = ALL_UNITS;
}

// Delay and fade are read at the column's local time, so a function
// connected to them can differ by column.
void CMatrixTrailsNode::ReadTimes(CMatrixColumn &column) {
  m_CharDelay->Update(column.place);
  m_FadeSpeed->Update(column.place);
  column.delay = m_CharDelay->m_Value;
  column.fade = m_FadeSpeed->m_Value;
}

void CMatrixTrailsNode::SetUpColumn(CMatrixColumn &column, int index, int count) {
  column.place = static_cast<float>(index) / count;
  ReadTimes(column);
  column.timer = column.delay;
  column.head = 0;
  column.cells.assign(m_Rows, {});
  // Columns start in different phases.
  const int steps = static_cast<int>(RandomUnsigned(m_Random) * m_Rows);
  for (int s = 0; s < steps; ++s) Step(column, column.delay);
}

void CMatrixTrailsNode::Step(CMatrixColumn &column, float dt) {
  for (auto &cell : column.cells) cell.alpha = std::clamp(cell.alpha - column.fade * dt, 0.0f, 1.0f);
  column.timer -= dt;
  // A stalled column doesn't catch up for more than a moment.
  if (column.timer < -1.0f) column.timer = -column.delay * RandomUnsigned(m_Random);
  const int chars = std::max(m_NumChars->m_Value, 1);
  for (int n = 0; n < m_Rows && column.timer <= 0; ++n) {
    column.timer += column.delay;
    const int previous = column.cells[column.head].character;
    if (++column.head >= m_Rows) {
      column.head = 0;
      ReadTimes(column);
    }
    int &c = column.cells[column.head].character;
    c = static_cast<int>(RandomUnsigned(m_Random) * chars) % chars;
    // A new character differs from the one before; a few draws are enough.
    for (int tries = 0; tries < 16 && column.head != 0 && chars > 1 && c == previous; ++tries)
      c = static_cast<int>(RandomUnsigned(m_Random) * chars) % chars;
    column.cells[column.head].alpha = 1.0f;
  }
}

CQuadBatch::Quad *CMatrixTrailsNode::WriteColumn(const CMatrixColumn &column, float x, float y, float cw, float ch,
                                                 CQuadBatch::Quad *out) const {
  const float tw = m_CharWidthTex->m_Value, th = m_CharHeightTex->m_Value;
  const int perRow = tw > 0 ? std::max(static_cast<int>(1 / tw), 1) : 1;
  const Color4f &col = m_CharCol->m_Value;
  for (int row = 0; row < m_Rows; ++row, y -= ch) {
    const auto &cell = column.cells[row];
    const int c = cell.character;
    uint32_t color = 0;  // character 0 is left transparent
    if (c != 0) color = row == column.head ? PackColor(0.8f, 1.0f, 0.9f, 1.0f) : PackColor(col.r * cell.alpha, col.g * cell.alpha,
                                                                     col.b * cell.alpha, 1.0f);
    const float u = static_cast<float>(c % perRow) * tw, v = static_cast<float>(c / perRow) * th;
    // The glyph stands mirrored from left to right: the trails' look.
    *out++ = {{{x, y, 0, u + tw, v, color},
               {x + cw, y, 0, u, v, color},
               {x, y + ch, 0, u + tw, v + th, color},
               {x + cw, y + ch, 0, u, v + th, color}}};
  }
  return out;
}

bool CMatrixTrailsNode::RestoreDevice(CRender *render) { return m_Quads.RestoreDevice(render); }

void CMatrixTrailsNode::InvalidateDevice(CRender *render) { m_Quads.InvalidateDevice(render); }

void CMatrixTrailsNode::AddToDrawList(CDrawList &list, CDrawItemList &parents, const CCamera *camera) {
  AppendObjectItems(list, parents, camera, &m_Quads, m_Effect->m_Value);
}
