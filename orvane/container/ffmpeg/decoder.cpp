#include "orvane/container/ffmpeg/decoder.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <utility>

extern "C" {
#include <libavutil/intreadwrite.h>
#include <libavutil/mem.h>
}

#include "orvane/platform/error.h"

namespace orvane {
namespace {

constexpr std::size_t kMostThreads = 16;

bool isOpusHeader(const AVPacket& packet, const char* signature) {
  return packet.size >= 8 && std::memcmp(packet.data, signature, 8) == 0;
}

/// Whether frames are to be taken off the packet's start.
bool hasPreSkip(const AVPacket& packet) {
  std::size_t size = 0;
  const std::uint8_t* side = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size);
  return side != nullptr && size >= 4 && AV_RL32(side) > 0;
}

/// Refuses frames larger than any codec's longest of sixteen channels: forged numbers of samples
/// and channels would take gigabytes on each of a decoder's threads.
int allocateFrame(AVCodecContext* codec, AVFrame* frame, int flags) {
  constexpr std::int64_t kMostBytes = std::int64_t{32} << 20;
  const auto bytesPerFrame = std::int64_t{frame->ch_layout.nb_channels} *
                             av_get_bytes_per_sample(static_cast<AVSampleFormat>(frame->format));
  if (bytesPerFrame * frame->nb_samples > kMostBytes) return AVERROR_INVALIDDATA;
  return avcodec_default_get_buffer2(codec, frame, flags);
}

void replaceExtradata(AVCodecParameters& parameters, const AVPacket& packet) {
  const auto size = static_cast<std::size_t>(packet.size);
  auto* copy =
      static_cast<std::uint8_t*>(av_mallocz(size + std::size_t{AV_INPUT_BUFFER_PADDING_SIZE}));
  if (copy == nullptr) throw std::bad_alloc();
  std::memcpy(copy, packet.data, size);
  av_freep(&parameters.extradata);
  parameters.extradata = copy;
  parameters.extradata_size = packet.size;
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
  context->get_buffer2 = allocateFrame;
  if (result >= 0) result = avcodec_open2(context.get(), demuxer.codec(), nullptr);
  if (result == AVERROR_PATCHWELCOME || result == AVERROR(ENOSYS))
    throw PlatformError(demuxer.path(),
                        "There is no decoder for this variant of its codec, " + name);
  if (result < 0) throw PlatformError(demuxer.path(), ffmpegErrorText(result));
  return context;
}

Decoder::Decoder(Demuxer& demuxer, std::size_t threadCount)
    : demuxer_(demuxer),
      threadCount_(threadCount),
      codec_(openCodec(demuxer, threadCount)),
      packet_(makePacket()),
      frame_(makeFrame()),
      isChainable_(codec_->codec_id == AV_CODEC_ID_OPUS &&
                   std::string_view(demuxer.format().iformat->name) == "ogg") {}

const AVFrame* Decoder::next() {
  while (framesLeft_ > 0 && receive()) {
    if (frame_->nb_samples <= 0) continue;
    checkFormat();
    frame_->nb_samples = static_cast<int>(std::min<std::int64_t>(frame_->nb_samples, framesLeft_));
    framesLeft_ -= frame_->nb_samples;
    return frame_.get();
  }
  return nullptr;
}

bool Decoder::receive() {
  for (;;) {
    const int result = avcodec_receive_frame(codec_.get(), frame_.get());
    if (result >= 0) return true;
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (std::exchange(isBetweenLinks_, false)) {
      // Another link is another stream, whose decoder knows nothing of the last one.
      codec_ = openCodec(demuxer_, threadCount_);
      continue;
    }
    if (result == AVERROR_EOF) return false;
    if (result != AVERROR(EAGAIN)) hasJustFailed_ = true;
    // A decoder that fails while it is drained has nothing more to give.
    if (isDraining_) return false;
    send();
  }
}

void Decoder::send() {
  if (!std::exchange(isPacketWaiting_, false)) {
    if (!demuxer_.read(*packet_)) {
      avcodec_send_packet(codec_.get(), nullptr);
      isDraining_ = true;
      return;
    }
    hasMetDamage_ = hasMetDamage_ || hasJustFailed_;
    hasJustFailed_ = false;
    const bool isFirst = !std::exchange(hasMetPackets_, true);
    if (!isFirst && isChainable_ && endsLink()) return;
  }
  // A packet is only sent when the decoder has asked for one, so every failure is the packet's.
  if (avcodec_send_packet(codec_.get(), packet_.get()) < 0) hasJustFailed_ = true;
}

/// Links of a chained Ogg file begin with headers, RFC 7845, 5. They come as packets where the
/// links share their serial number; where they do not, only the new link's pre-skip shows.
bool Decoder::endsLink() {
  if (isOpusHeader(*packet_, "OpusTags")) return true;
  const bool isHeader = isOpusHeader(*packet_, "OpusHead");
  if (!isHeader && !hasPreSkip(*packet_)) return false;
  if (isHeader) replaceExtradata(*demuxer_.stream().codecpar, *packet_);
  isPacketWaiting_ = !isHeader;
  isBetweenLinks_ = true;
  avcodec_send_packet(codec_.get(), nullptr);
  return true;
}

void Decoder::checkFormat() {
  const int channels = frame_->ch_layout.nb_channels;
  if (sampleRate_ == 0 && channelCount_ == 0) {
    sampleRate_ = frame_->sample_rate;
    channelCount_ = channels;
    if (sampleRate_ <= 0 || channelCount_ <= 0)
      throw PlatformError(demuxer_.path(), "The audio has no sample rate or no channels");
    framesLeft_ = demuxer_.stated().framesAt(sampleRate_).value_or(INT64_MAX);
  } else if (frame_->sample_rate != sampleRate_ || channels != channelCount_) {
    throw PlatformError(demuxer_.path(), "The audio format changes in mid-stream");
  }
}

}  // namespace orvane
