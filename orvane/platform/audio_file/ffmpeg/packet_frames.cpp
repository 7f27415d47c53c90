#include "orvane/platform/audio_file/ffmpeg/packet_frames.h"

#include <array>
#include <cstddef>

namespace orvane {
namespace {

using Bytes = std::span<const std::uint8_t>;
using Count = std::optional<std::int64_t>;

/// RFC 9639, 9.1: sync code, block size code, a coded number, then an uncommon block size.
Count flacFrames(Bytes packet) {
  if (packet.size() < 6 || packet[0] != 0xFF || (packet[1] & 0xFE) != 0xF8) return {};
  const unsigned code = packet[2] >> 4;
  if (code == 1) return 192;
  if (code >= 2 && code <= 5) return 576 << (code - 2);
  if (code >= 8) return 256 << (code - 8);
  if (code == 0) return {};
  // The coded number's length stands in its first byte, as in UTF-8.
  unsigned numberBytes = 0;
  while (numberBytes < 8 && (packet[4] & (0x80U >> numberBytes)) != 0) ++numberBytes;
  const std::size_t at = 4 + std::max(numberBytes, 1U);
  const std::size_t sizeBytes = code - 5;
  if (packet.size() < at + sizeBytes) return {};
  const unsigned stored = sizeBytes == 1 ? packet[at] : (packet[at] << 8 | packet[at + 1]);
  return stored + 1;
}

/// RFC 6716, 3.1 and 3.2: frame size from the table-of-contents byte, frame count from its code.
/// Opus decodes at 48 kHz.
Count opusFrames(Bytes packet) {
  if (packet.empty()) return {};
  const unsigned configuration = packet[0] >> 3;
  constexpr std::array silk{480, 960, 1920, 2880};
  constexpr std::array hybrid{480, 960};
  constexpr std::array celt{120, 240, 480, 960};
  const int frames = configuration < 12   ? silk[configuration % 4]
                     : configuration < 16 ? hybrid[configuration % 2]
                                          : celt[configuration % 4];
  switch (packet[0] & 3) {
    case 0:
      return frames;
    case 1:
    case 2:
      return 2 * frames;
    default:
      if (packet.size() < 2) return {};
      return static_cast<std::int64_t>(packet[1] & 0x3F) * frames;
  }
}

/// An Apple Lossless packet names its own length only when it is shorter than the others.
Count alacFrames(Bytes packet, std::int64_t usualFrames) {
  constexpr std::size_t kSizeBit = 23;
  if (packet.size() < 8) return {};
  const bool hasSize = (packet[2] & 0x10) != 0;
  if (!hasSize) return usualFrames;
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < 8; ++i) bits = bits << 8 | packet[i];
  return static_cast<std::int64_t>((bits << kSizeBit) >> 32);
}

/// A WavPack block header gives the block's length at byte 20.
Count wavPackFrames(Bytes packet) {
  if (packet.size() < 32 || packet[0] != 'w' || packet[1] != 'v' || packet[2] != 'p' ||
      packet[3] != 'k')
    return {};
  return static_cast<std::int64_t>(packet[20]) | packet[21] << 8 | packet[22] << 16 |
         static_cast<std::int64_t>(packet[23]) << 24;
}

}  // namespace

PacketFrames::PacketFrames(const AVCodecParameters& parameters, std::int64_t decodedFrames)
    : parameters_(parameters), decodedFrames_(decodedFrames) {}

std::optional<std::int64_t> PacketFrames::operator()(Bytes packet) {
  switch (parameters_.codec_id) {
    case AV_CODEC_ID_FLAC:
      return flacFrames(packet);
    case AV_CODEC_ID_OPUS:
      return opusFrames(packet);
    case AV_CODEC_ID_ALAC:
      return alacFrames(packet, decodedFrames_);
    case AV_CODEC_ID_WAVPACK:
      return wavPackFrames(packet);
    // One packet is one frame of constant length.
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

}  // namespace orvane
