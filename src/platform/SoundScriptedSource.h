#pragma once
// A sound source that plays back packets queued by a test, and fails on
// command, so capture and analysis can be driven exactly.

#include "platform/SoundSource.h"

#include <algorithm>
#include <deque>
#include <vector>

class CSoundScriptedSource final : public ISoundSource {
 public:
  SoundMixFormat format;
  // When its code is not 0, the operation of this step fails (for a step of
  // the start, Start fails) until the test clears it.
  SoundResult failure;
  std::string errorText;

  int starts = 0;
  int stops = 0;
  std::vector<uint32_t> released;  // every ReleaseBuffer argument, in order

  // Interleaved samples in the source's format; frames = size / channels.
  void Queue(std::vector<float> samples) {
    Packet p;
    p.frames = static_cast<uint32_t>(samples.size() / (format.channels > 0 ? format.channels : 1));
    p.samples = std::move(samples);
    m_Packets.push_back(std::move(p));
  }
  // A packet flagged as silence, possibly of 0 frames.
  void QueueSilent(uint32_t frames) { m_Packets.push_back(Packet{{}, frames, true}); }
  size_t Pending() const { return m_Packets.size(); }

  SoundResult Start(SoundMixFormat &out) override {
    ++starts;
    if (failure.code && failure.step <= ESoundStep::Start) return failure;
    out = format;
    return SoundOk();
  }
  void Stop() override { ++stops; }
  SoundResult GetNextPacketSize(uint32_t &frames) override {
    if (Failing(ESoundStep::NextPacketSize)) return failure;
    // A packet of no frames is still announced, so that the poll reaches
    // GetBuffer and finds it empty (as a device may report a packet and then
    // deliver none).
    frames = m_Packets.empty() ? 0 : std::max<uint32_t>(m_Packets.front().frames, 1);
    return SoundOk();
  }
  SoundResult GetBuffer(SoundPacket &packet) override {
    if (Failing(ESoundStep::GetBuffer)) return failure;
    packet = SoundPacket{};
    if (m_Packets.empty()) return SoundOk();
    const Packet &p = m_Packets.front();
    packet.data = p.samples.empty() ? nullptr : p.samples.data();
    packet.frames = p.frames;
    packet.silent = p.silent;
    return SoundOk();
  }
  SoundResult ReleaseBuffer(uint32_t frames) override {
    if (Failing(ESoundStep::ReleaseBuffer)) return failure;
    released.push_back(frames);
    if (!m_Packets.empty()) m_Packets.pop_front();
    return SoundOk();
  }
  std::string ErrorText() const override { return errorText; }

 private:
  struct Packet {
    std::vector<float> samples;
    uint32_t frames = 0;
    bool silent = false;
  };
  bool Failing(ESoundStep step) const { return failure.code && failure.step == step; }
  std::deque<Packet> m_Packets;
};
