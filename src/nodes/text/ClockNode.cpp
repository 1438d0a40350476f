#include "nodes/text/ClockNode.h"

#include <cstdio>

#include "core/Clock.h"
#include "scene/NodeInfo.h"
#include "scene/PortPointers.h"
#include "scene/PortValues.h"

namespace {
// The longest text, "12:34:56 PM", is 11 glyphs.
constexpr int kClockQuads = 50;
}  // namespace

CNodeInfo *CClockNode::CreateInfo() {
  auto *info = new CNodeInfo(2, "Clock", [] { return static_cast<CNode *>(new CClockNode); }, "A digital clock");
  AddBlendPorts(info);
  info->AddInPort(new CPortInt("DigitalFormat", "Format of the time to show", 0, 0, 4))
      ->AddValue(0, "22:31")
      ->AddValue(1, "22:31:42")
      ->AddValue(2, "10:31 pm")
      ->AddValue(3, "10:31:42 pm");
  info->AddInPort(new CPortInt("Font", "The font to use", 1, 0, 2))->AddValue(0, "Normal")->AddValue(1, "Digital Led");
  AddShaderPorts(info);
  return info;
}

bool CClockNode::Init() {
  CFontEffectNode::Init();
  m_DigitalFormat = InPort<CPortInt>("DigitalFormat");
  m_FontPort = InPort<CPortInt>("Font");
  return true;
}

std::string CClockNode::FormatTime(const WallTime &t, int format) {
  const int hour12 = t.hour % 12 == 0 ? 12 : t.hour % 12;
  const char *half = t.hour < 12 ? "AM" : "PM";
  char text[32];
  switch (format) {
    case 0: snprintf(text, sizeof(text), "%02d%c%02d", t.hour, ':', t.minute); break;
    case 2: snprintf(text, sizeof(text), "%02d%c%02d %s", hour12, ':', t.minute, half); break;
    case 3: snprintf(text, sizeof(text), "%02d%c%02d%c%02d %s", hour12, ':', t.minute, ':', t.second, half); break;
    default: snprintf(text, sizeof(text), "%02d%c%02d%c%02d", t.hour, ':', t.minute, ':', t.second); break;
  }
  return text;
}

void CClockNode::Update(float, FrameInfo *frame) {
  if (m_ObjectOut) m_ObjectOut->m_Value = this;
  if (m_Updated) return;
  UpdateInPorts(frame->Time);
  ReadEffectInputs(*frame);
  if (m_FontPort->m_Changed) {
    const bool plain = m_FontPort->m_Value == 0;
    m_Font.SetFont(plain ? "nodedata/fonts/font1.fnt" : "nodedata/fonts/fontledbig.fnt", kClockQuads);
    const float lineHeight = m_Font.m_LineHeight > 0 ? m_Font.m_LineHeight : 1.0f;
    m_Font.m_Scale = (plain ? 1.0f : 0.7f) / lineHeight;
    m_DirtyUnits = ALL_UNITS;
  }
  m_Text = FormatTime(GetClock().LocalTime(), m_DigitalFormat->m_Value);
  m_Font.Batch().SetCount(0);
  m_Font.WriteCentered(0, 0, 0, m_Text.c_str(), static_cast<int>(m_Text.size()));
}
