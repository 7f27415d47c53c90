#include "orvane/platform/audio_file/ffmpeg/frame_count.h"

#include <algorithm>

extern "C" {
#include <libavutil/intreadwrite.h>
#include <libavutil/mathematics.h>
}

#include "orvane/platform/audio_file/ffmpeg/decoder.h"
#include "orvane/platform/audio_file/ffmpeg/demuxer.h"
#include "orvane/platform/audio_file/ffmpeg/packet_frames.h"

namespace orvane {
namespace {

/// What libavcodec takes off the decoded frames at a container's word.
class Trimming {
 public:
  explicit Trimming(std::int64_t delay) : skip_(delay) {}

  /// Frames left of the `frames` that `packet` decodes to.
  std::int64_t apply(const AVPacket& packet, std::int64_t frames) {
    std::int64_t padding = 0;
    std::size_t size = 0;
    const std::uint8_t* side = av_packet_get_side_data(&packet, AV_PKT_DATA_SKIP_SAMPLES, &size);
    if (side != nullptr && size >= 10) {
      skip_ = std::max<std::int64_t>(0, static_cast<std::int32_t>(AV_RL32(side)));
      padding = AV_RL32(side + 4);
    }
    if ((packet.flags & AV_PKT_FLAG_DISCARD) != 0) {
      skip_ = std::max<std::int64_t>(0, skip_ - frames);
      return 0;
    }
    const std::int64_t skipped = std::min(skip_, frames);
    skip_ -= skipped;
    frames -= skipped;
    return padding <= frames ? frames - padding : frames;
  }

 private:
  std::int64_t skip_;
};

/// What the first decodable packet shows of all others.
struct FirstPacket {
  std::int64_t frames = 0;  ///< decoded from it, nothing trimmed; 0 when no packet decodes
  bool isOneFrame = true;   ///< false when the decoder finds several coded frames in the packet
  int delay = 0;            ///< frames that the decoder itself takes off the start
};

FirstPacket decodeFirstPacket(Demuxer& demuxer) {
  const CodecContextPointer codec = openCodec(demuxer, 1, AV_CODEC_FLAG2_SKIP_MANUAL);
  const PacketPointer packet = makePacket();
  const FramePointer frame = makeFrame();
  FirstPacket first;
  while (first.frames == 0 && demuxer.read(*packet)) {
    if (avcodec_send_packet(codec.get(), packet.get()) < 0) continue;
    if (avcodec_receive_frame(codec.get(), frame.get()) < 0) continue;
    first.frames = frame->nb_samples;
    first.isOneFrame = avcodec_receive_frame(codec.get(), frame.get()) == AVERROR(EAGAIN);
  }
  first.delay = codec->delay;
  return first;
}

/// Counts without decoding; absent when a packet does not tell its length.
std::optional<StreamLength> countByPackets(Demuxer& demuxer, const FirstPacket& first) {
  if (!first.isOneFrame) return std::nullopt;
  PacketFrames framesOf(*demuxer.stream().codecpar, first.frames);
  Trimming trimming(first.delay);
  StreamLength length;
  const PacketPointer packet = makePacket();
  while (demuxer.read(*packet)) {
    if (packet->size <= 0) continue;
    const auto frames = framesOf({packet->data, static_cast<std::size_t>(packet->size)});
    if (!frames) return std::nullopt;
    length.frames += trimming.apply(*packet, *frames);
    if ((packet->flags & AV_PKT_FLAG_CORRUPT) != 0) length.isTruncated = true;
  }
  length.isTruncated = length.isTruncated || demuxer.isTruncated();
  return length;
}

StreamLength countByDecoding(Demuxer& demuxer) {
  Decoder decoder(demuxer, 1);
  StreamLength length;
  while (const AVFrame* frame = decoder.next()) length.frames += frame->nb_samples;
  length.isTruncated = demuxer.isTruncated();
  return length;
}

}  // namespace

StreamLength countFrames(const std::filesystem::path& path, std::optional<int> streamIndex,
                         FourCC containerHint) {
  Demuxer first(path, streamIndex, containerHint);
  const FirstPacket firstPacket = decodeFirstPacket(first);
  Demuxer second(path, streamIndex, containerHint);
  if (const auto length = countByPackets(second, firstPacket)) return *length;
  Demuxer third(path, streamIndex, containerHint);
  return countByDecoding(third);
}

}  // namespace orvane
