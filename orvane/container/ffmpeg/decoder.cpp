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

bool isOpusHeader(const AVPacket& packet, const char* signature) {
  return packet.size >= 8 && std::memcmp(packet.data, signature, 8) == 0;
}

/// Whether frames are to be taken off the packet's start.
bool hasPreSkip(const AVPacket& packet) {
  std::size_t size = 0;
  const std::uint8_t* side = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size);
  return side != nullptr && size >= 4 && AV_RL32(side) > 0;
}

/// A decoder that meets the packet knows what others, opened for the stream's headers, do not.
bool bringsNewHeaders(const AVPacket& packet) {
  return av_packet_get_side_data(&packet, AV_PKT_DATA_NEW_EXTRADATA, nullptr) != nullptr;
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

Decoder::Decoder(Demuxer& demuxer, std::size_t threadCount)
    : demuxer_(demuxer),
      codec_(openCodec(demuxer)),
      packet_(makePacket()),
      frame_(makeFrame()),
      segments_(SegmentedDecoding::of(demuxer, threadCount)),
      isChainable_(codec_->codec_id == AV_CODEC_ID_OPUS &&
                   std::string_view(demuxer.format().iformat->name) == "ogg") {}

const AVFrame* Decoder::next() {
  while (framesLeft_ > 0) {
    AVFrame* const frame = receive();
    if (frame == nullptr) break;
    if (frame->nb_samples <= 0) continue;
    checkFormat(*frame);
    frame->nb_samples = static_cast<int>(std::min<std::int64_t>(frame->nb_samples, framesLeft_));
    framesLeft_ -= frame->nb_samples;
    return frame;
  }
  return nullptr;
}

AVFrame* Decoder::receive() {
  for (;;) {
    if (segments_)
      if (AVFrame* const frame = segments_->nextFrame()) return frame;
    const int result = avcodec_receive_frame(codec_.get(), frame_.get());
    if (result >= 0) {
      if (segments_) segments_->note(*frame_);
      return frame_.get();
    }
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (std::exchange(isBetweenLinks_, false)) {
      // Another link is another stream, whose decoder knows nothing of the last one.
      codec_ = openCodec(demuxer_);
      segments_.reset();
      continue;
    }
    if (result == AVERROR_EOF) return nullptr;
    if (result != AVERROR(EAGAIN)) hasJustFailed_ = true;
    // A decoder that fails while it is drained has nothing more to give.
    if (isDraining_) return nullptr;
    send();
  }
}

void Decoder::send() {
  if (!std::exchange(isPacketWaiting_, false)) {
    if (segments_ && segments_->decodeStretch(codec_, framesLeft_)) {
      hasMetDamage_ = hasMetDamage_ || hasJustFailed_;
      hasJustFailed_ = segments_->hasFailed();
      return;
    }
    if (!demuxer_.read(*packet_)) {
      avcodec_send_packet(codec_.get(), nullptr);
      isDraining_ = true;
      return;
    }
    hasMetDamage_ = hasMetDamage_ || hasJustFailed_;
    hasJustFailed_ = false;
    const bool isFirst = !std::exchange(hasMetPackets_, true);
    if (!isFirst && isChainable_ && endsLink()) return;
    if (bringsNewHeaders(*packet_)) segments_.reset();
    if (segments_) segments_->note(*packet_);
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

void Decoder::checkFormat(const AVFrame& frame) {
  const int channels = frame.ch_layout.nb_channels;
  if (sampleRate_ == 0 && channelCount_ == 0) {
    sampleRate_ = frame.sample_rate;
    channelCount_ = channels;
    if (sampleRate_ <= 0 || channelCount_ <= 0)
      throw PlatformError(demuxer_.path(), "The audio has no sample rate or no channels");
    framesLeft_ = demuxer_.stated().framesAt(sampleRate_).value_or(INT64_MAX);
  } else if (frame.sample_rate != sampleRate_ || channels != channelCount_) {
    throw PlatformError(demuxer_.path(), "The audio format changes in mid-stream");
  }
}

}  // namespace orvane
