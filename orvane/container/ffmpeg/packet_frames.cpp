#include "orvane/container/ffmpeg/packet_frames.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace orvane {
namespace {

using Bytes = std::span<const std::uint8_t>;
using Count = std::optional<std::int64_t>;

// What a packet states beyond these is a lie that the decoder sees through; it must be asked then.
constexpr std::int64_t kMostOpusFrames = 5760;       // 120 ms at 48 kHz: RFC 6716, 3.2.5
constexpr std::int64_t kMostWavPackFrames = 150000;  // more than any encoder's block

/// RFC 9639, 9.1: sync code, block size code, a coded number, then an uncommon block size.
Count flacFrames(Bytes packet) {
  if (packet.size() < 6 || packet[0] != 0xFF || (packet[1] & 0xFE) != 0xF8) return {};
  const unsigned code = packet[2] >> 4;
  if (code == 0) return {};
  if (code == 1) return 192;
  if (code <= 5) return 576 << (code - 2);
  if (code >= 8) return 256 << (code - 8);
  // The coded number's length stands in its first byte, as in UTF-8.
  std::size_t numberBytes = 0;
  while (numberBytes < 7 && (packet[4] & (0x80U >> numberBytes)) != 0) ++numberBytes;
  const std::size_t at = 4 + std::max<std::size_t>(numberBytes, 1);
  const std::size_t sizeBytes = code - 5;
  if (packet.size() < at + sizeBytes) return {};
  const unsigned stored =
      sizeBytes == 1 ? packet[at] : static_cast<unsigned>(packet[at] << 8 | packet[at + 1]);
  return stored + 1;
}

/// RFC 6716, 3.1 and 3.2: frame size from the table-of-contents byte, frame count from its code.
/// Opus decodes at 48 kHz.
Count opusFrames(Bytes packet) {
  if (packet.empty()) return {};
  constexpr std::array kSilk{480, 960, 1920, 2880};
  constexpr std::array kHybrid{480, 960};
  constexpr std::array kCelt{120, 240, 480, 960};
  const std::size_t configuration = packet[0] >> 3;
  const std::int64_t frames = configuration < 12   ? kSilk[configuration % 4]
                              : configuration < 16 ? kHybrid[configuration % 2]
                                                   : kCelt[configuration % 4];
  const unsigned code = packet[0] & 3;
  if (code == 3 && packet.size() < 2) return {};
  const std::int64_t total = frames * (code == 0 ? 1 : code < 3 ? 2 : packet[1] & 0x3F);
  return total > 0 && total <= kMostOpusFrames ? Count(total) : std::nullopt;
}

/// An Apple Lossless element states its length only when it is not the stream's usual one. Behind
/// 3 bits of type, 4 of instance and 12 unused ones stands the flag, behind three more bits the
/// 32-bit length.
Count alacFrames(Bytes packet, std::int64_t usualFrames) {
  constexpr unsigned kLengthBit = 23;
  if (packet.size() < 8) return {};
  const bool statesLength = (packet[2] & 0x10) != 0;
  if (!statesLength) return usualFrames;
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < 8; ++i) bits = bits << 8 | packet[i];
  const auto stated = static_cast<std::int64_t>((bits << kLengthBit) >> 32);
  return stated <= usualFrames ? Count(stated) : std::nullopt;
}

/// A WavPack block header gives the block's length, little-endian, at byte 20.
Count wavPackFrames(Bytes packet) {
  constexpr std::array<std::uint8_t, 4> kSignature{'w', 'v', 'p', 'k'};
  if (packet.size() < 32 || !std::equal(kSignature.begin(), kSignature.end(), packet.begin()))
    return {};
  std::int64_t stated = 0;
  for (std::size_t i = 4; i-- > 0;) stated = stated << 8 | packet[20 + i];
  return stated <= kMostWavPackFrames ? Count(stated) : std::nullopt;
}

}  // namespace

PacketFrames::PacketFrames(const AVCodecParameters& parameters, std::int64_t decodedFrames)
    : parameters_(parameters), decodedFrames_(decodedFrames) {
  if (parameters.codec_id == AV_CODEC_ID_VORBIS)
    vorbisParser_.reset(av_vorbis_parse_init(parameters.extradata, parameters.extradata_size));
}

std::optional<std::int64_t> PacketFrames::next(Bytes packet) {
  switch (parameters_.codec_id) {
    case AV_CODEC_ID_FLAC:
      return flacFrames(packet);
    case AV_CODEC_ID_OPUS:
      return opusFrames(packet);
    case AV_CODEC_ID_ALAC:
      return alacFrames(packet, decodedFrames_);
    case AV_CODEC_ID_WAVPACK:
      return wavPackFrames(packet);
    case AV_CODEC_ID_VORBIS:
      return nextVorbis(packet);
    // One packet is one coded frame of a constant length.
    case AV_CODEC_ID_MP3:
    case AV_CODEC_ID_MP2:
    case AV_CODEC_ID_MP1:
    case AV_CODEC_ID_AAC:
    case AV_CODEC_ID_AAC_LATM:
    case AV_CODEC_ID_AC3:
    case AV_CODEC_ID_AMR_NB:
    case AV_CODEC_ID_AMR_WB:
      return decodedFrames_;
    default:
      return {};
  }
}

std::optional<std::int64_t> PacketFrames::nextVorbis(Bytes packet) {
  if (!vorbisParser_) return {};
  const int frames =
      av_vorbis_parse_frame(vorbisParser_.get(), packet.data(), static_cast<int>(packet.size()));
  if (frames < 0) return {};
  // Blocks overlap: the first one only starts the first frame.
  const bool isFirst = std::exchange(isFirstVorbisPacket_, false);
  return isFirst ? 0 : frames;
}

}  // namespace orvane
