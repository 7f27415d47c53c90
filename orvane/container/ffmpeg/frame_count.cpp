#include "orvane/container/ffmpeg/frame_count.h"

#include <algorithm>
#include <optional>
#include <span>

extern "C" {
#include <libavutil/mathematics.h>
}

#include "orvane/container/ffmpeg/decoder.h"
#include "orvane/container/ffmpeg/demuxer.h"
#include "orvane/container/ffmpeg/packet_frames.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

std::int64_t readLittleEndian32(const std::uint8_t* bytes) {
  std::int64_t value = 0;
  for (std::size_t i = 4; i-- > 0;) value = value << 8 | bytes[i];
  return value;
}

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
      const std::int64_t stated = readLittleEndian32(side);
      skip_ = stated <= INT32_MAX ? stated : 0;  // libavcodec takes negative ones for none
      padding = readLittleEndian32(side + 4);
    }
    const std::int64_t skipped = std::min(skip_, frames);
    skip_ -= skipped;
    if ((packet.flags & AV_PKT_FLAG_DISCARD) != 0) return 0;
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
  int sampleRate = 0;
  int delay = 0;  ///< frames that the decoder itself takes off the start
};

FirstPacket decodeFirstPacket(Demuxer& demuxer) {
  const CodecContextPointer codec =
      openCodec(demuxer, *demuxer.stream().codecpar, AV_CODEC_FLAG2_SKIP_MANUAL);
  const PacketPointer packet = makePacket();
  const FramePointer frame = makeFrame();
  FirstPacket first;
  while (first.frames == 0 && demuxer.read(*packet)) {
    if (avcodec_send_packet(codec.get(), packet.get()) < 0) continue;
    if (avcodec_receive_frame(codec.get(), frame.get()) < 0) continue;
    first.frames = frame->nb_samples;
    first.sampleRate = frame->sample_rate;
    first.isOneFrame = avcodec_receive_frame(codec.get(), frame.get()) == AVERROR(EAGAIN);
  }
  first.delay = codec->delay;
  return first;
}

/// Counts without decoding; absent when a packet does not tell its length.
std::optional<StreamLength> countByPackets(Demuxer& demuxer, const FirstPacket& first) {
  if (!first.isOneFrame) return std::nullopt;
  PacketFrames packetFrames(*demuxer.stream().codecpar, first.frames);
  Trimming trimming(first.delay);
  StreamLength length;
  const PacketPointer packet = makePacket();
  while (demuxer.read(*packet)) {
    // New headers in mid-stream may change all that is known of its packets.
    if (av_packet_get_side_data(packet.get(), AV_PKT_DATA_NEW_EXTRADATA, nullptr) != nullptr)
      return std::nullopt;
    if (packet->size <= 0) continue;
    const auto frames = packetFrames.next({packet->data, static_cast<std::size_t>(packet->size)});
    if (!frames) return std::nullopt;
    length.frames += trimming.apply(*packet, *frames);
  }
  if (const auto most = demuxer.stated().framesAt(first.sampleRate))
    length.frames = std::min(length.frames, *most);
  return length;
}

StreamLength countByDecoding(Demuxer& demuxer, std::size_t threadCount) {
  Decoder decoder(demuxer, threadCount);
  StreamLength length;
  while (const AVFrame* frame = decoder.next()) length.frames += frame->nb_samples;
  return length;
}

/// Whether the header states a duration of this very stream that the packets fall short of.
bool fallsShort(const Demuxer& demuxer, std::int64_t frames) {
  // Priming, padding and edit lists shift lengths by a few packets; a cut takes more.
  constexpr double kToleranceSeconds = 0.25;
  const AVFormatContext& format = demuxer.format();
  const AVStream& stream = demuxer.stream();
  const bool isOfThisStream =
      format.nb_streams == 1 && format.duration_estimation_method == AVFMT_DURATION_FROM_STREAM;
  if (!isOfThisStream || stream.duration <= 0 || stream.codecpar->sample_rate <= 0) return false;
  const double stated = static_cast<double>(stream.duration) * av_q2d(stream.time_base);
  const double found = static_cast<double>(frames) / stream.codecpar->sample_rate;
  return found + kToleranceSeconds < stated;
}

}  // namespace

std::optional<std::int64_t> statedFrames(const Demuxer& demuxer) {
  const AVStream& stream = demuxer.stream();
  const AVRational ofFrames{1, stream.codecpar->sample_rate};
  const AVRational ofMicroseconds{1, AV_TIME_BASE};
  if (ofFrames.den <= 0) return std::nullopt;
  const std::int64_t frames =
      stream.duration > 0 ? av_rescale_q(stream.duration, stream.time_base, ofFrames)
                          : av_rescale_q(demuxer.format().duration, ofMicroseconds, ofFrames);
  return frames > 0 ? std::optional(frames) : std::nullopt;
}

bool breaksOff(const Demuxer& demuxer, std::int64_t frames) {
  return demuxer.isTruncated() || fallsShort(demuxer, frames);
}

StreamLength countFrames(const std::shared_ptr<const InputFile>& file,
                         const AudioFileOpenOptions& options, FourCC containerHint) {
  Demuxer first(file, options, containerHint);
  const FirstPacket firstPacket = decodeFirstPacket(first);
  std::optional<Demuxer> demuxer(std::in_place, file, options, containerHint);
  auto length = countByPackets(*demuxer, firstPacket);
  if (!length) {
    demuxer.emplace(file, options, containerHint);
    length = countByDecoding(*demuxer, options.execution.threadCount);
  }
  length->isTruncated = breaksOff(*demuxer, length->frames);
  return *length;
}

}  // namespace orvane
