#include "audio/SoundCapture.h"

#include "core/Log.h"
#include "core/Trace.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {
constexpr int32_t FormatIeeeFloat = 3;
constexpr int32_t FormatExtensible = 0xFFFE;
}  // namespace

CSoundCapture::CSoundCapture() : m_LastPollTime(-HUGE_VAL) {}

CSoundCapture::~CSoundCapture() { Shutdown(); }

void CSoundCapture::SetSource(std::unique_ptr<ISoundSource> source) {
  Shutdown();
  m_Retry = false;
  m_Source = std::move(source);
}

void CSoundCapture::Shutdown() {
  if (m_Running && m_Source) m_Source->Stop();
  m_Running = false;
}

void CSoundCapture::StopCapture() {
  Shutdown();
  m_Retry = false;
}

bool CSoundCapture::StartCapture() {
  TRACE_SCOPE("CSoundCapture::StartCapture");
  Shutdown();
  m_LastStartTime = SoundTimerMilliseconds();
  m_Retry = true;
  if (!m_Source) m_Source = CreatePulseSoundSource();

  SoundMixFormat format;
  if (SoundResult r = m_Source->Start(format); !r) {
    m_Running = true;  // so that Fail stops the source it half opened
    return Fail(r.step, r.code);
  }
  m_Running = true;
  if (!m_Quiet)
    Log("Mixer format. Bytepersec:%ld Block:%ld Channels:%ld SamplesPerSec:%ld BitsPerSample:%ld Format:%x",
        static_cast<long>(format.avgBytesPerSec), static_cast<long>(format.blockAlign),
        static_cast<long>(format.channels), static_cast<long>(format.samplesPerSec),
        static_cast<long>(format.bitsPerSample), static_cast<unsigned>(format.formatTag));
  // Samples are taken to be 32-bit floats whatever the extensible format
  // says; a frame must hold at least one.
  if ((format.formatTag != FormatIeeeFloat && format.formatTag != FormatExtensible) || format.blockAlign < 4) {
    if (!m_Quiet)
      LogError("Don't know how to coerce WAVEFORMATEX with wFormatTag = 0x%08x to int-16",
               static_cast<unsigned>(format.formatTag));
    m_Quiet = true;
    Shutdown();
    return false;
  }
  m_BlockAlign = format.blockAlign;
  return true;
}

bool CSoundCapture::PollCapture() {
  const double now = SoundTimerMilliseconds();
  if (!m_Running) {
    if (m_Retry && m_Source && now - m_LastStartTime >= RetryIntervalMs) StartCapture();
    return false;
  }
  if (now - m_LastPollTime < PollIntervalMs) return true;
  m_LastPollTime = now;
  m_Silent = false;

  for (int packets = 0; packets < MaxPacketsPerPoll; ++packets) {
    uint32_t size = 0;
    if (SoundResult r = m_Source->GetNextPacketSize(size); !r) return Fail(r.step, r.code);
    if (size == 0) {
      if (packets == 0) PushSilentFrame();
      return true;
    }
    SoundPacket packet;
    if (SoundResult r = m_Source->GetBuffer(packet); !r) return Fail(r.step, r.code);
    if (packet.frames == 0) {
      if (packet.silent && packets == 0) PushSilentFrame();
      m_Source->ReleaseBuffer(0);
      return false;
    }
    if (m_Quiet) {
      m_Quiet = false;
      Log("Sound capture resumed");
    }
    CopyPacket(packet);
    m_TotalFrames += packet.frames;
    m_LastDataTime = now;
    if (SoundResult r = m_Source->ReleaseBuffer(packet.frames); !r) return Fail(r.step, r.code);
  }
  return true;
}

void CSoundCapture::CopyPacket(const SoundPacket &packet) {
  const int stride = m_BlockAlign / 4;
  const float *src = packet.silent ? nullptr : packet.data;
  float sum = 0.0f;
  uint32_t remaining = packet.frames;
  while (remaining > 0) {
    if (!m_Current) {
      m_Current = TakeFreeFrame();
      m_Current->count = 0;
    }
    const uint32_t n = std::min<uint32_t>(SoundFrame::Pairs - m_Current->count, remaining);
    float *dst = m_Current->samples + 2 * m_Current->count;
    if (!src) {
      std::memset(dst, 0, n * 2 * sizeof(float));
    } else if (stride == 1) {
      for (uint32_t i = 0; i < n; ++i) {
        dst[2 * i] = dst[2 * i + 1] = src[i];
        sum += src[i];
      }
      src += n;
    } else {
      // Channels past the first two are skipped.
      for (uint32_t i = 0; i < n; ++i, src += stride) {
        dst[2 * i] = src[0];
        dst[2 * i + 1] = src[1];
        sum += src[0] + src[1];
      }
    }
    m_Current->count += static_cast<int32_t>(n);
    remaining -= n;
    if (m_Current->count == SoundFrame::Pairs) {
      QueueFrame(m_Current);
      m_Current = nullptr;
    }
  }
  // The signed sum: sound balanced around zero over a packet counts as silence.
  if (std::fabs(sum) < 0.001f) m_Silent = true;
}

void CSoundCapture::PushSilentFrame() {
  SoundFrame *frame = m_Current ? m_Current : TakeFreeFrame();
  m_Current = nullptr;
  frame->count = 0;
  std::memset(frame->samples, 0, sizeof(frame->samples));
  QueueFrame(frame);
  m_Silent = true;
}

SoundFrame *CSoundCapture::TakeFreeFrame() {
  if (!m_FreeList) {
    m_Blocks.push_back(std::make_unique<SoundFrame[]>(FramesPerBlock));
    SoundFrame *block = m_Blocks.back().get();
    for (int i = 0; i < FramesPerBlock; ++i) block[i].next = i + 1 < FramesPerBlock ? &block[i + 1] : nullptr;
    m_FreeList = block;
  }
  SoundFrame *frame = m_FreeList;
  m_FreeList = frame->next;
  frame->next = nullptr;
  return frame;
}

void CSoundCapture::QueueFrame(SoundFrame *frame) {
  frame->next = nullptr;
  if (m_QueueTail)
    m_QueueTail->next = frame;
  else
    m_QueueHead = frame;
  m_QueueTail = frame;
}

SoundFrame *CSoundCapture::PopFilledFrame() {
  SoundFrame *frame = m_QueueHead;
  if (!frame) return nullptr;
  m_QueueHead = frame->next;
  if (!m_QueueHead) m_QueueTail = nullptr;
  frame->next = nullptr;
  return frame;
}

void CSoundCapture::ReleaseFrame(SoundFrame *frame) {
  if (!frame) return;
  frame->next = m_FreeList;
  m_FreeList = frame;
}

bool CSoundCapture::Fail(ESoundStep step, int32_t code) {
  if (!m_Quiet) LogFailure(step, code);
  m_Quiet = true;
  Shutdown();
  // No sound from a dead source: the music state runs down as in silence.
  m_Silent = true;
  return false;
}

void CSoundCapture::LogFailure(ESoundStep step, int32_t code) {
  const unsigned hr = static_cast<unsigned>(code);
  const long frames = static_cast<long>(m_TotalFrames);
  switch (step) {
    case ESoundStep::CreateEnumerator:
      LogError("CoCreateInstance(IMMDeviceEnumerator) failed: hr = 0x%08x", hr);
      LogError("Unable to capture audio from default device");
      break;
    case ESoundStep::DefaultEndpoint:
      LogError("IMMDeviceEnumerator::GetDefaultAudioEndpoint failed: hr = 0x%08x", hr);
      LogError("Unable to capture audio from default device");
      break;
    case ESoundStep::Activate: LogError("IMMDevice::Activate(IAudioClient) failed: hr = 0x%08x", hr); break;
    case ESoundStep::DevicePeriod: LogError("IAudioClient::GetDevicePeriod failed: hr = 0x%08x", hr); break;
    case ESoundStep::MixFormat: LogError("IAudioClient::GetMixFormat failed: hr = 0x%08x", hr); break;
    case ESoundStep::Initialize: LogError("IAudioClient::Initialize failed: hr = 0x%08x", hr); break;
    case ESoundStep::GetService:
      LogError("IAudioClient::GetService(IAudioCaptureClient) failed: hr 0x%08x", hr);
      break;
    case ESoundStep::Start: LogError("IAudioClient::Start failed: hr = 0x%08x", hr); break;
    case ESoundStep::NextPacketSize:
      LogError("IAudioCaptureClient::GetNextPacketSize failed after %ld frames: hr = 0x%08x", frames, hr);
      break;
    case ESoundStep::GetBuffer:
      LogError("IAudioCaptureClient::GetBuffer failed on after %ld frames: hr = 0x%08x", frames, hr);
      break;
    case ESoundStep::ReleaseBuffer:
      LogError("IAudioCaptureClient::ReleaseBuffer failed on after %ld frames: hr = 0x%08x", frames, hr);
      break;
  }
  if (m_Source) {
    const std::string detail = m_Source->ErrorText();
    if (!detail.empty()) LogError("%s", detail.c_str());
  }
}
