// Movies through FFmpeg: libavformat for the container, libavcodec for the
// codecs, libswscale to turn the renderer's bottom-up BGR rows into what the
// video encoder takes.

#include <algorithm>
#include <cstring>

#include "platform/MovieWriter.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

namespace {
bool EndsWith(const std::string &s, const char *end) {
  const size_t n = strlen(end);
  return s.size() >= n && std::equal(s.end() - static_cast<long>(n), s.end(), end,
                                     [](char a, char b) { return tolower(a) == b; });
}

std::string AvError(int code) {
  char text[AV_ERROR_MAX_STRING_SIZE] = {};
  av_strerror(code, text, sizeof(text));
  return text;
}

// The first of `wanted` that the encoder takes, else its own first.
AVPixelFormat PickPixelFormat(const AVCodec *codec, std::initializer_list<AVPixelFormat> wanted) {
  if (!codec->pix_fmts) return *wanted.begin();
  for (AVPixelFormat w : wanted)
    for (const AVPixelFormat *p = codec->pix_fmts; *p != AV_PIX_FMT_NONE; ++p)
      if (*p == w) return w;
  return codec->pix_fmts[0];
}

struct Encoder {
  AVCodecContext *context = nullptr;
  AVStream *stream = nullptr;
  AVFrame *frame = nullptr;
  int64_t next = 0;  // pts of the next frame, in the context's time base
  void Reset() {
    av_frame_free(&frame);
    avcodec_free_context(&context);
    stream = nullptr;
    next = 0;
  }
  ~Encoder() { Reset(); }
};

class CFFmpegMovieWriter final : public IMovieWriter {
 public:
  ~CFFmpegMovieWriter() override { Close(); }

  bool Create(const std::string &file) override {
    Close();
    av_log_set_level(AV_LOG_ERROR);  // the encoders' statistics are no news
    m_Error.clear();
    m_SoundChannels = 0;
    m_Lossless = !EndsWith(file, ".mp4") && !EndsWith(file, ".mkv");
    const char *format = m_Lossless ? "avi" : nullptr;
    int r = avformat_alloc_output_context2(&m_Format, nullptr, format, file.c_str());
    if (r < 0 || !m_Format) return Fail("no container for \"" + file + "\": " + AvError(r));
    if ((r = avio_open(&m_Format->pb, file.c_str(), AVIO_FLAG_WRITE)) < 0) {
      Close();
      return Fail("can't create \"" + file + "\": " + AvError(r));
    }
    return true;
  }

  void SetSound(int channels, int rate) override {
    m_SoundChannels = std::clamp(channels, 1, 8);
    m_SoundRate = std::clamp(rate, 8000, 192000);
  }

  bool AddFrame(const MoviePicture &picture) override {
    if (!m_Format || !picture.bgr) return Fail("no movie file");
    if (!m_Started && (m_Video.context || !Start(picture))) return Fail("the movie couldn't start");
    if (picture.width != m_Width || picture.height != m_Height) return Fail("a frame of another size");
    if (av_frame_make_writable(m_Video.frame) < 0) return Fail("out of memory");
    // Bottom-up rows: start at the last one and step backwards.
    const int stride = (picture.width * 3 + 3) & ~3;
    const uint8_t *src[1] = {picture.bgr + static_cast<ptrdiff_t>(stride) * (picture.height - 1)};
    const int srcStride[1] = {-stride};
    sws_scale(m_Scale, src, srcStride, 0, picture.height, m_Video.frame->data, m_Video.frame->linesize);
    m_Video.frame->pts = m_Video.next++;
    if (m_Lossless) {
      m_Video.frame->key_frame = 1;
      m_Video.frame->pict_type = AV_PICTURE_TYPE_I;
    }
    return Encode(m_Video, m_Video.frame);
  }

  bool AddSound(const float *interleaved, int frames) override {
    if (!m_Sound.context) return Fail("no sound stream");
    m_Pending.insert(m_Pending.end(), interleaved, interleaved + static_cast<ptrdiff_t>(frames) * m_SoundChannels);
    return SendSound(false);
  }

  bool Finish() override {
    bool ok = m_Started && m_Error.empty();
    if (m_Started) {
      if (m_Sound.context) ok = SendSound(true) && Encode(m_Sound, nullptr) && ok;
      ok = Encode(m_Video, nullptr) && ok;
      const int r = av_write_trailer(m_Format);
      if (r < 0) ok = Fail("can't finish the movie: " + AvError(r));
    }
    Close();
    return ok;
  }

  std::string ErrorText() const override { return m_Error; }

 private:
  bool Fail(const std::string &text) {
    if (m_Error.empty()) m_Error = text;
    return false;
  }

  void Close() {
    if (m_Format) {
      if (m_Format->pb) avio_closep(&m_Format->pb);
      avformat_free_context(m_Format);
      m_Format = nullptr;
    }
    m_Video.Reset();
    m_Sound.Reset();
    m_Started = false;
    sws_freeContext(m_Scale);
    m_Scale = nullptr;
    m_Pending.clear();
  }

  bool Open(Encoder &e, const AVCodec *codec, AVCodecContext *c) {
    if (m_Format->oformat->flags & AVFMT_GLOBALHEADER) c->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    int r = avcodec_open2(c, codec, nullptr);
    if (r < 0) return Fail(std::string("can't open the ") + codec->name + " encoder: " + AvError(r));
    e.stream = avformat_new_stream(m_Format, nullptr);
    if (!e.stream || avcodec_parameters_from_context(e.stream->codecpar, c) < 0) return Fail("can't add a stream");
    e.stream->time_base = c->time_base;
    e.frame = av_frame_alloc();
    return e.frame != nullptr || Fail("out of memory");
  }

  bool Start(const MoviePicture &p) {
    if (p.width < 1 || p.height < 1 || p.width > 16384 || p.height > 16384) return Fail("a picture of no size");
    const AVCodec *codec = nullptr;
    if (m_Lossless) {
      codec = avcodec_find_encoder(AV_CODEC_ID_FFV1);
    } else {
      codec = avcodec_find_encoder(AV_CODEC_ID_H264);
      if (!codec) codec = avcodec_find_encoder(AV_CODEC_ID_MPEG4);
    }
    if (!codec) return Fail("no video encoder");
    AVCodecContext *c = m_Video.context = avcodec_alloc_context3(codec);
    if (!c) return Fail("out of memory");
    // 4:2:0 pictures need even sides: an odd last row or column is scaled in.
    m_Width = p.width;
    m_Height = p.height;
    c->width = m_Lossless ? p.width : std::max(2, p.width & ~1);
    c->height = m_Lossless ? p.height : std::max(2, p.height & ~1);
    c->time_base = AVRational{1, std::clamp(p.framesPerSecond, 1, 1000)};
    c->framerate = AVRational{c->time_base.den, 1};
    if (m_Lossless) {
      c->gop_size = 1;  // every frame a key frame
      // Version 3 cuts a picture into slices that encode on every core.
      c->level = 3;
      c->thread_count = 0;
      av_opt_set_int(c->priv_data, "slices", 16, 0);
      c->pix_fmt = PickPixelFormat(codec, {AV_PIX_FMT_0RGB32, AV_PIX_FMT_GBRP});
    } else {
      c->pix_fmt = PickPixelFormat(codec, {AV_PIX_FMT_YUV420P});
      c->gop_size = 2 * c->time_base.den;
      // Visually lossless where x264 is there; a generous rate otherwise.
      if (av_opt_set(c->priv_data, "crf", "18", 0) < 0)
        c->bit_rate = static_cast<int64_t>(p.width) * p.height * c->time_base.den / 4;
    }
    if (!Open(m_Video, codec, c)) return false;
    m_Video.frame->format = c->pix_fmt;
    m_Video.frame->width = c->width;
    m_Video.frame->height = c->height;
    if (av_frame_get_buffer(m_Video.frame, 0) < 0) return Fail("out of memory");
    m_Scale = sws_getContext(p.width, p.height, AV_PIX_FMT_BGR24, c->width, c->height, c->pix_fmt,
                             m_Lossless ? SWS_POINT : SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr,
                             nullptr, nullptr);
    if (!m_Scale) return Fail("no conversion to the encoder's pixels");
    if (m_SoundChannels > 0 && !StartSound()) return false;
    const int r = avformat_write_header(m_Format, nullptr);
    m_Started = r >= 0;
    return m_Started || Fail("can't write the movie's header: " + AvError(r));
  }

  bool StartSound() {
    const AVCodec *codec = avcodec_find_encoder(m_Lossless ? AV_CODEC_ID_PCM_S16LE : AV_CODEC_ID_AAC);
    if (!codec) return Fail("no sound encoder");
    AVCodecContext *c = m_Sound.context = avcodec_alloc_context3(codec);
    if (!c) return Fail("out of memory");
    c->sample_fmt = m_Lossless ? AV_SAMPLE_FMT_S16 : AV_SAMPLE_FMT_FLTP;
    c->sample_rate = m_SoundRate;
    av_channel_layout_default(&c->ch_layout, m_SoundChannels);
    c->time_base = AVRational{1, m_SoundRate};
    if (!m_Lossless) c->bit_rate = 192000;
    return Open(m_Sound, codec, c);
  }

  // Hands pending samples to the sound encoder in frames of its size; at the
  // end, the rest as a short frame.
  bool SendSound(bool last) {
    AVCodecContext *c = m_Sound.context;
    if (!c) return true;
    const int ch = m_SoundChannels;
    const int size = c->frame_size > 0 ? c->frame_size : 1024;
    while (!m_Pending.empty()) {
      const int available = static_cast<int>(m_Pending.size() / static_cast<size_t>(ch));
      if (available < size && !last) break;
      const int n = std::min(available, size);
      AVFrame *f = m_Sound.frame;
      av_frame_unref(f);
      f->format = c->sample_fmt;
      f->nb_samples = n;
      f->sample_rate = c->sample_rate;
      if (av_channel_layout_copy(&f->ch_layout, &c->ch_layout) < 0 || av_frame_get_buffer(f, 0) < 0)
        return Fail("out of memory");
      for (int i = 0; i < n; ++i)
        for (int k = 0; k < ch; ++k) {
          const float v = std::clamp(m_Pending[static_cast<size_t>(i * ch + k)], -1.0f, 1.0f);
          if (m_Lossless)
            reinterpret_cast<int16_t *>(f->data[0])[i * ch + k] = static_cast<int16_t>(v * 32767.0f);
          else
            reinterpret_cast<float *>(f->data[k])[i] = v;
        }
      m_Pending.erase(m_Pending.begin(), m_Pending.begin() + static_cast<ptrdiff_t>(n) * ch);
      f->pts = m_Sound.next;
      m_Sound.next += n;
      if (!Encode(m_Sound, f)) return false;
    }
    return true;
  }

  // Sends a frame (null: flush) and writes every packet that comes out.
  bool Encode(Encoder &e, AVFrame *frame) {
    int r = avcodec_send_frame(e.context, frame);
    if (r < 0) return Fail(std::string("encoding failed: ") + AvError(r));
    AVPacket *packet = av_packet_alloc();
    if (!packet) return Fail("out of memory");
    while ((r = avcodec_receive_packet(e.context, packet)) >= 0) {
      av_packet_rescale_ts(packet, e.context->time_base, e.stream->time_base);
      packet->stream_index = e.stream->index;
      if (av_interleaved_write_frame(m_Format, packet) < 0) r = AVERROR(EIO);
      if (r < 0) break;
    }
    av_packet_free(&packet);
    return r == AVERROR(EAGAIN) || r == AVERROR_EOF || Fail("writing failed: " + AvError(r));
  }

  AVFormatContext *m_Format = nullptr;
  SwsContext *m_Scale = nullptr;
  Encoder m_Video, m_Sound;
  bool m_Lossless = true;
  bool m_Started = false;
  int m_Width = 0, m_Height = 0;  // of the pictures  // the header is written: frames and a trailer may follow
  int m_SoundChannels = 0, m_SoundRate = 44100;
  std::vector<float> m_Pending;
  std::string m_Error;
};
}  // namespace

std::unique_ptr<IMovieWriter> MakeMovieWriter() { return std::make_unique<CFFmpegMovieWriter>(); }
