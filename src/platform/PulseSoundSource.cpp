// Records the monitor of the default output from the PulseAudio server (or
// PipeWire's PulseAudio service). A non-threaded main loop is iterated
// without waiting from each poll, so connecting, a missing server and a
// server that goes away never hold up a frame.

#include "platform/SoundSource.h"

#include <pulse/pulseaudio.h>

#include <string>

namespace {
constexpr int SampleRate = 44100;
constexpr int Channels = 2;
constexpr const char *DefaultMonitor = "@DEFAULT_MONITOR@";
// Events handled per poll at most; each one is cheap, and a bound keeps a
// flood of them from stretching a frame.
constexpr int MaxIterations = 16;

class CPulseSoundSource final : public ISoundSource {
 public:
  ~CPulseSoundSource() override { Stop(); }

  SoundResult Start(SoundMixFormat &format) override;
  void Stop() override;
  SoundResult GetNextPacketSize(uint32_t &frames) override;
  SoundResult GetBuffer(SoundPacket &packet) override;
  SoundResult ReleaseBuffer(uint32_t frames) override;
  std::string ErrorText() const override { return m_Error; }

 private:
  enum class EState { Idle, Connecting, AskingDefaultSink, Recording };

  SoundResult Advance();
  SoundResult OpenStream(const char *device, ESoundStep step);
  SoundResult Fail(ESoundStep step, int32_t code);
  static void OnServerInfo(pa_context *, const pa_server_info *info, void *user);

  pa_mainloop *m_Loop = nullptr;
  pa_context *m_Context = nullptr;
  pa_stream *m_Stream = nullptr;
  EState m_State = EState::Idle;
  bool m_OnDefaultMonitor = false;
  bool m_ServerInfoDone = false;
  std::string m_DefaultSink;

  const void *m_Peeked = nullptr;
  size_t m_PeekedBytes = 0;
  bool m_HavePeek = false;
  std::string m_Error;
};

pa_sample_spec SampleFormat() {
  pa_sample_spec sampleFormat{};
  sampleFormat.format = PA_SAMPLE_FLOAT32NE;
  sampleFormat.rate = SampleRate;
  sampleFormat.channels = Channels;
  return sampleFormat;
}

SoundResult CPulseSoundSource::Fail(ESoundStep step, int32_t code) {
  if (code == 0) code = PA_ERR_UNKNOWN;
  m_Error = std::string("PulseAudio: ") + pa_strerror(code);
  return SoundFailed(step, code);
}

SoundResult CPulseSoundSource::Start(SoundMixFormat &format) {
  Stop();
  m_Loop = pa_mainloop_new();
  if (!m_Loop) return Fail(ESoundStep::CreateEnumerator, PA_ERR_INTERNAL);
  m_Context = pa_context_new(pa_mainloop_get_api(m_Loop), "Velmor");
  if (!m_Context) return Fail(ESoundStep::CreateEnumerator, PA_ERR_INTERNAL);
  // Never start a server of our own: no server means no music.
  if (pa_context_connect(m_Context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0)
    return Fail(ESoundStep::CreateEnumerator, pa_context_errno(m_Context));
  m_State = EState::Connecting;

  const pa_sample_spec sampleFormat = SampleFormat();
  format = SoundMixFormat{};
  format.channels = sampleFormat.channels;
  format.samplesPerSec = static_cast<int32_t>(sampleFormat.rate);
  format.blockAlign = static_cast<int32_t>(pa_frame_size(&sampleFormat));
  format.avgBytesPerSec = static_cast<int32_t>(pa_bytes_per_second(&sampleFormat));
  return SoundOk();
}

void CPulseSoundSource::Stop() {
  if (m_Stream) {
    pa_stream_disconnect(m_Stream);
    pa_stream_unref(m_Stream);
    m_Stream = nullptr;
  }
  if (m_Context) {
    pa_context_disconnect(m_Context);
    pa_context_unref(m_Context);
    m_Context = nullptr;
  }
  if (m_Loop) {
    pa_mainloop_free(m_Loop);
    m_Loop = nullptr;
  }
  m_State = EState::Idle;
  m_OnDefaultMonitor = false;
  m_ServerInfoDone = false;
  m_HavePeek = false;
  m_Peeked = nullptr;
  m_PeekedBytes = 0;
}

SoundResult CPulseSoundSource::OpenStream(const char *device, ESoundStep step) {
  if (m_Stream) {
    pa_stream_disconnect(m_Stream);
    pa_stream_unref(m_Stream);
  }
  const pa_sample_spec sampleFormat = SampleFormat();
  m_Stream = pa_stream_new(m_Context, "Velmor capture", &sampleFormat, nullptr);
  if (!m_Stream) return Fail(ESoundStep::Activate, pa_context_errno(m_Context));
  // At most 200 ms buffered, in packets of 10 ms: shorter than the poll
  // interval, so that a poll while sound plays rarely finds nothing (which
  // would count as a frame of silence).
  pa_buffer_attr attr;
  attr.maxlength = static_cast<uint32_t>(pa_usec_to_bytes(200000, &sampleFormat));
  attr.fragsize = static_cast<uint32_t>(pa_usec_to_bytes(10000, &sampleFormat));
  attr.tlength = attr.prebuf = attr.minreq = static_cast<uint32_t>(-1);
  if (pa_stream_connect_record(m_Stream, device, &attr, PA_STREAM_ADJUST_LATENCY) < 0)
    return Fail(step, pa_context_errno(m_Context));
  return SoundOk();
}

void CPulseSoundSource::OnServerInfo(pa_context *, const pa_server_info *info, void *user) {
  auto *self = static_cast<CPulseSoundSource *>(user);
  self->m_DefaultSink = info && info->default_sink_name ? info->default_sink_name : "";
  self->m_ServerInfoDone = true;
}

// Moves the connection on as far as the events that have arrived allow.
SoundResult CPulseSoundSource::Advance() {
  for (int i = 0; i < MaxIterations; ++i) {
    const int dispatched = pa_mainloop_iterate(m_Loop, 0, nullptr);
    if (dispatched < 0) return Fail(ESoundStep::NextPacketSize, pa_context_errno(m_Context));
    if (dispatched == 0) break;
  }

  const pa_context_state_t cs = pa_context_get_state(m_Context);
  if (!PA_CONTEXT_IS_GOOD(cs))
    return Fail(m_State == EState::Recording ? ESoundStep::NextPacketSize : ESoundStep::CreateEnumerator,
                pa_context_errno(m_Context));
  if (cs != PA_CONTEXT_READY) return SoundOk();

  if (m_State == EState::Connecting && !m_Stream) {
    m_OnDefaultMonitor = true;
    if (SoundResult r = OpenStream(DefaultMonitor, ESoundStep::Initialize); !r) return r;
  }

  if (m_State == EState::AskingDefaultSink) {
    if (!m_ServerInfoDone) return SoundOk();
    if (m_DefaultSink.empty()) return Fail(ESoundStep::DefaultEndpoint, PA_ERR_NOENTITY);
    m_State = EState::Connecting;
    m_OnDefaultMonitor = false;
    const std::string monitor = m_DefaultSink + ".monitor";
    return OpenStream(monitor.c_str(), ESoundStep::Initialize);
  }

  const pa_stream_state_t ss = pa_stream_get_state(m_Stream);
  if (ss == PA_STREAM_READY) {
    m_State = EState::Recording;
  } else if (!PA_STREAM_IS_GOOD(ss)) {
    if (m_State == EState::Recording) return Fail(ESoundStep::NextPacketSize, pa_context_errno(m_Context));
    // An older server may not know the default monitor's alias: ask for the
    // default sink and record from its monitor by name.
    if (!m_OnDefaultMonitor) return Fail(ESoundStep::Initialize, pa_context_errno(m_Context));
    m_State = EState::AskingDefaultSink;
    m_ServerInfoDone = false;
    pa_operation *op = pa_context_get_server_info(m_Context, &CPulseSoundSource::OnServerInfo, this);
    if (!op) return Fail(ESoundStep::DefaultEndpoint, pa_context_errno(m_Context));
    pa_operation_unref(op);
  }
  return SoundOk();
}

SoundResult CPulseSoundSource::GetNextPacketSize(uint32_t &frames) {
  frames = 0;
  if (!m_Loop) return Fail(ESoundStep::NextPacketSize, PA_ERR_BADSTATE);
  if (m_HavePeek) {
    frames = static_cast<uint32_t>(m_PeekedBytes / (Channels * sizeof(float)));
    return SoundOk();
  }
  if (SoundResult r = Advance(); !r) return r;
  if (m_State != EState::Recording) return SoundOk();
  if (pa_stream_peek(m_Stream, &m_Peeked, &m_PeekedBytes) < 0)
    return Fail(ESoundStep::NextPacketSize, pa_context_errno(m_Context));
  m_HavePeek = m_PeekedBytes > 0;
  frames = static_cast<uint32_t>(m_PeekedBytes / (Channels * sizeof(float)));
  return SoundOk();
}

SoundResult CPulseSoundSource::GetBuffer(SoundPacket &packet) {
  packet = SoundPacket{};
  if (!m_HavePeek) return SoundOk();
  packet.frames = static_cast<uint32_t>(m_PeekedBytes / (Channels * sizeof(float)));
  // No data with a size is a hole in the stream: that much silence.
  packet.silent = m_Peeked == nullptr;
  packet.data = static_cast<const float *>(m_Peeked);
  return SoundOk();
}

SoundResult CPulseSoundSource::ReleaseBuffer(uint32_t) {
  if (!m_HavePeek) return SoundOk();
  m_HavePeek = false;
  m_Peeked = nullptr;
  m_PeekedBytes = 0;
  if (pa_stream_drop(m_Stream) < 0) return Fail(ESoundStep::ReleaseBuffer, pa_context_errno(m_Context));
  return SoundOk();
}
}  // namespace

std::unique_ptr<ISoundSource> CreatePulseSoundSource() { return std::make_unique<CPulseSoundSource>(); }
