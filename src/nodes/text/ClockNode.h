#pragma once
// Clock: the time of day, read from the process's clock, written centered
// on the object's origin in the plain or the dot-matrix font.

#include <string>

#include "nodes/text/FontEffectNode.h"

struct WallTime;

class CClockNode : public CFontEffectNode {
 public:
  static CNodeInfo *CreateInfo();
  bool Init() override;
  void Update(float time, FrameInfo *frame) override;

  // The text for a time in one of the DigitalFormat values.
  static std::string FormatTime(const WallTime &time, int format);
  const std::string &Text() const { return m_Text; }

 private:
  CPortInt *m_DigitalFormat = nullptr;
  CPortInt *m_FontPort = nullptr;
  std::string m_Text;
};
