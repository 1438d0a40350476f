#include "nodes/value/SignalGeneratorNode.h"

#include <cmath>

#include "expr/Noise.h"
#include "scene/NodeInfo.h"
#include "scene/PortValues.h"

CNodeInfo *CSignalGeneratorNode::CreateInfo() {
  auto *info = new CNodeInfo(
      7, "SignalGenerator", [] { return static_cast<CNode *>(new CSignalGeneratorNode); },
      "Creates a wave form value of various types including sin, square, triangle, saw tooth and random. Generated "
      "values range from -1 to 1. Change the offset and amplitude to change this");
  info->AddInPort(new CPortInt("WaveformType", "The type of waveform to create", 0, 0, 5))
      ->AddValue(0, "Sine")
      ->AddValue(1, "Square")
      ->AddValue(2, "Triangle")
      ->AddValue(3, "Sawtooth")
      ->AddValue(4, "Random");
  info->AddInPort(new CPortFloat("Frequency", "Frequency of the waveform", 1.0f, 0.01f, 0.000001f, 10000.0f));
  info->AddInPort(new CPortFloat("Phase", "Phase of the waveform. Moves the waveform along the time axis", 0.0f, 0.01f,
                                 -10000.0f, 10000.0f));
  info->AddInPort(new CPortFloat("Offset", "Offset of the waveform. Move the waveform along the 'y' axis", 0.0f,
                                 0.01f, -10000.0f, 10000.0f));
  info->AddInPort(
      new CPortFloat("Amplitude", "Amplitude/strength of the waveform", 1.0f, 0.01f, -10000.0f, 10000.0f));
  info->AddInPort(new CPortBool("Invert", "Invert the waveform", false));
  info->AddOutPort(new CPortFloat("Value", "Computed value", 0.0f, 0.01f, 0.0f, 1.0f));
  return info;
}

bool CSignalGeneratorNode::Init() {
  m_WaveformType = InPort<CPortInt>("WaveformType");
  m_Frequency = InPort<CPortFloat>("Frequency");
  m_Phase = InPort<CPortFloat>("Phase");
  m_Offset = InPort<CPortFloat>("Offset");
  m_Amplitude = InPort<CPortFloat>("Amplitude");
  m_Invert = InPort<CPortBool>("Invert");
  m_Value = OutPort<CPortFloat>("Value");
  return true;
}

namespace {
// One of the waves at t cycles, in about -1 to 1; 0 for a type without a wave.
float Wave(int type, float t) {
  switch (type) {
    case 0: return std::sin(6.2831855f * t);
    case 1: return std::sin(6.2831855f * t) > 0.0f ? 1.0f : -1.0f;
    case 2: {
      // Shifted a quarter cycle so that it rises through 0 at t = 0, as the sine does.
      const float u = t - 0.25f;
      return 1.0f - 4.0f * std::fabs(std::floor(u + 0.5f) - u);
    }
    case 3: return 2.0f * (t - std::floor(t + 0.5f));
    case 4: return SimplexNoise1(t);
    default: return 0.0f;
  }
}
}  // namespace

void CSignalGeneratorNode::Update(float time, FrameInfo *) {
  UpdateInPorts(time);
  const float t = m_Frequency->m_Value * time + m_Phase->m_Value;
  const float w = Wave(m_WaveformType->m_Value, t);
  const float a = m_Amplitude->m_Value;
  m_Value->m_Value = m_Offset->m_Value + (m_Invert->m_Value ? -a : a) * w;
  m_Value->m_Changed = true;
}
