// Reading a movie back: every packet decoded, so that counts, key frames and
// picture contents are what a player would see.

#include "platform/MovieWriter.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
}

namespace {
uint64_t HashFrame(const AVFrame *f) {
  const auto format = static_cast<AVPixelFormat>(f->format);
  const int size = av_image_get_buffer_size(format, f->width, f->height, 1);
  if (size <= 0) return 0;
  std::vector<uint8_t> bytes(static_cast<size_t>(size));
  av_image_copy_to_buffer(bytes.data(), size, f->data, f->linesize, format, f->width, f->height, 1);
  uint64_t h = 1469598103934665603ull;
  for (uint8_t b : bytes) h = (h ^ b) * 1099511628211ull;
  return h;
}

void Count(AVCodecContext *c, MovieStream &s, AVFrame *frame) {
  while (avcodec_receive_frame(c, frame) >= 0) {
    if (s.kind == 'v') {
      ++s.frames;
      s.frameHashes.push_back(HashFrame(frame));
    } else {
      s.frames += frame->nb_samples;
    }
  }
}
}  // namespace

bool ReadMovie(const std::string &file, std::vector<MovieStream> &streams) {
  streams.clear();
  AVFormatContext *format = nullptr;
  if (avformat_open_input(&format, file.c_str(), nullptr, nullptr) < 0) return false;
  if (avformat_find_stream_info(format, nullptr) < 0) {
    avformat_close_input(&format);
    return false;
  }
  std::vector<AVCodecContext *> decoders;
  for (unsigned i = 0; i < format->nb_streams; ++i) {
    const AVCodecParameters *par = format->streams[i]->codecpar;
    MovieStream s;
    s.kind = par->codec_type == AVMEDIA_TYPE_VIDEO ? 'v' : par->codec_type == AVMEDIA_TYPE_AUDIO ? 'a' : '?';
    s.codec = avcodec_get_name(par->codec_id);
    s.width = par->width;
    s.height = par->height;
    s.channels = par->ch_layout.nb_channels;
    s.rate = s.kind == 'v' ? av_q2d(format->streams[i]->avg_frame_rate) : par->sample_rate;
    if (s.kind == 'v' && s.rate <= 0.0) s.rate = av_q2d(format->streams[i]->r_frame_rate);
    streams.push_back(s);
    const AVCodec *codec = avcodec_find_decoder(par->codec_id);
    AVCodecContext *c = codec ? avcodec_alloc_context3(codec) : nullptr;
    if (c && (avcodec_parameters_to_context(c, par) < 0 || avcodec_open2(c, codec, nullptr) < 0))
      avcodec_free_context(&c);
    decoders.push_back(c);
  }
  AVPacket *packet = av_packet_alloc();
  AVFrame *frame = av_frame_alloc();
  while (av_read_frame(format, packet) >= 0) {
    const auto i = static_cast<size_t>(packet->stream_index);
    if (i < streams.size()) {
      if (streams[i].kind == 'v' && !(packet->flags & AV_PKT_FLAG_KEY)) streams[i].allKeyFrames = false;
      if (decoders[i] && avcodec_send_packet(decoders[i], packet) >= 0) Count(decoders[i], streams[i], frame);
    }
    av_packet_unref(packet);
  }
  for (size_t i = 0; i < decoders.size(); ++i)
    if (decoders[i]) {
      avcodec_send_packet(decoders[i], nullptr);
      Count(decoders[i], streams[i], frame);
      avcodec_free_context(&decoders[i]);
    }
  av_frame_free(&frame);
  av_packet_free(&packet);
  avformat_close_input(&format);
  return true;
}
