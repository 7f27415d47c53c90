#include "orvane/platform/audio_file/ffmpeg/decoder.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <string>

#include "orvane/platform/error.h"

namespace orvane {
namespace {

constexpr std::size_t kMostThreads = 16;

/// In a chained Ogg file the headers of every later link come as packets; RFC 7845, 5.
bool isOpusHeader(const AVCodecContext& codec, const AVPacket& packet) {
  if (codec.codec_id != AV_CODEC_ID_OPUS || packet.size < 8) return false;
  return std::memcmp(packet.data, "OpusHead", 8) == 0 ||
         std::memcmp(packet.data, "OpusTags", 8) == 0;
}

}  // namespace

FramePointer makeFrame() {
  FramePointer frame(av_frame_alloc());
  if (!frame) throw std::bad_alloc();
  return frame;
}

CodecContextPointer openCodec(const Demuxer& demuxer, std::size_t threadCount, int flags2) {
  const AVStream& stream = demuxer.stream();
  const std::string name = avcodec_get_name(stream.codecpar->codec_id);
  if (stream.codecpar->codec_id == AV_CODEC_ID_NONE)
    throw PlatformError(demuxer.path(), "There is no decoder for its codec");
  if (demuxer.codec() == nullptr)
    throw PlatformError(demuxer.path(), "There is no decoder for its codec, " + name);
  CodecContextPointer context(avcodec_alloc_context3(demuxer.codec()));
  if (!context) throw std::bad_alloc();
  int result = avcodec_parameters_to_context(context.get(), stream.codecpar);
  context->pkt_timebase = stream.time_base;
  context->thread_count = static_cast<int>(std::clamp<std::size_t>(threadCount, 1, kMostThreads));
  context->flags2 |= flags2;
  if (result >= 0) result = avcodec_open2(context.get(), demuxer.codec(), nullptr);
  if (result == AVERROR_PATCHWELCOME || result == AVERROR(ENOSYS))
    throw PlatformError(demuxer.path(),
                        "There is no decoder for this variant of its codec, " + name);
  if (result < 0) throw PlatformError(demuxer.path(), ffmpegErrorText(result));
  return context;
}

Decoder::Decoder(Demuxer& demuxer, std::size_t threadCount)
    : demuxer_(demuxer),
      codec_(openCodec(demuxer, threadCount)),
      packet_(makePacket()),
      frame_(makeFrame()) {}

const AVFrame* Decoder::next() {
  while (receive()) {
    if (frame_->nb_samples <= 0) continue;
    checkFormat();
    return frame_.get();
  }
  return nullptr;
}

bool Decoder::receive() {
  for (;;) {
    const int result = avcodec_receive_frame(codec_.get(), frame_.get());
    if (result >= 0) return true;
    if (result == AVERROR_EOF) return false;
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result != AVERROR(EAGAIN)) hasJustFailed_ = true;
    // A decoder that fails while it is drained has nothing more to give.
    if (isDraining_) return false;
    send();
  }
}

void Decoder::send() {
  if (demuxer_.read(*packet_)) {
    hasMetPackets_ = true;
    hasMetDamage_ = hasMetDamage_ || hasJustFailed_;
    hasJustFailed_ = false;
    if (isOpusHeader(*codec_, *packet_)) return;
    // A packet is only sent when the decoder has asked for one, so every failure is the packet's.
    if (avcodec_send_packet(codec_.get(), packet_.get()) < 0) hasJustFailed_ = true;
  } else {
    avcodec_send_packet(codec_.get(), nullptr);
    isDraining_ = true;
  }
}

void Decoder::checkFormat() {
  const int channels = frame_->ch_layout.nb_channels;
  if (sampleRate_ == 0 && channelCount_ == 0) {
    sampleRate_ = frame_->sample_rate;
    channelCount_ = channels;
    if (sampleRate_ <= 0 || channelCount_ <= 0)
      throw PlatformError(demuxer_.path(), "The audio has no sample rate or no channels");
  } else if (frame_->sample_rate != sampleRate_ || channels != channelCount_) {
    throw PlatformError(demuxer_.path(), "The audio format changes in mid-stream");
  }
}

}  // namespace orvane
