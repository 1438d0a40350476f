#include "tool/ToolSound.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "audio/SoundAnalyzer.h"
#include "audio/SoundFromFile.h"
#include "core/FakeClock.h"
#include "core/Log.h"
#include "tool/ToolScene.h"

CToolSound::CToolSound() = default;
CToolSound::~CToolSound() {
  if (m_Clock) g_Sound.Capture().StopCapture();
}

bool CToolSound::TakeOption(std::vector<std::string> &args) {
  std::string path;
  if (!::TakeOption(args, "--audio", path)) return true;
  m_Clock = std::make_unique<CScopedFakeClock>();
  m_Start = m_Clock->clock.counter;
  if (!PlaySoundFile(g_Sound, path)) {
    fprintf(stderr, "velmor-tool: %s\n", GetFirstError());
    return false;
  }
  g_Sound.UpdateSound(30.0f);  // the file starts playing at scene time 0
  return true;
}

void CToolSound::AdvanceTo(double seconds) {
  if (!m_Clock) return;
  // In polls of 20 ms, as a program running at 50 frames a second would,
  // however long the scene's steps are.
  const int64_t at = m_Start + static_cast<int64_t>(seconds * static_cast<double>(m_Clock->clock.frequency));
  const int64_t poll = m_Clock->clock.frequency / 50;
  while (m_Clock->clock.counter < at) {
    m_Clock->clock.counter = std::min(at, m_Clock->clock.counter + poll);
    g_Sound.UpdateSound(50.0f);
  }
}
