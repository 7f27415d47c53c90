#include "orvane/container/ffmpeg/entry_rule.h"

#include <algorithm>
#include <cstring>
#include <iterator>

extern "C" {
#include <libavutil/intreadwrite.h>
}

#include "orvane/container/ffmpeg/celt_frame.h"
#include "orvane/container/ffmpeg/demuxer.h"

namespace orvane {
namespace {

bool beginsWith(std::span<const std::uint8_t> packet, const char (&text)[5]) {
  return packet.size() >= 4 && std::memcmp(packet.data(), text, 4) == 0;
}

/// ISO/IEC 11172-3, 2.4.2.3: syncword, version, layer and rate, and whether there is one channel.
std::optional<std::uint32_t> layerHeader(std::span<const std::uint8_t> packet) {
  if (packet.size() < 4) return std::nullopt;
  const std::uint32_t header = AV_RB32(packet.data());
  const bool isMono = (header & 0xC0) == 0xC0;
  return (header & 0xFFFE0C00U) | (isMono ? 1U : 0U);
}

bool isLayerIII(std::uint32_t header) {
  return header >> 21 == 0x7FF && (header >> 17 & 3) == 1;
}

/// RFC 7845, 5.1: the mapping family, and the number of streams where there may be several.
bool isOneOpusStream(const AVCodecParameters& parameters) {
  constexpr int kFamily = 18;
  constexpr int kStreams = 19;
  if (parameters.extradata_size <= kStreams || parameters.extradata[kFamily] == 0) return true;
  return parameters.extradata[kStreams] == 1;
}

/// One-bit audio is filtered across blocks; the flags lie behind 24 bytes of a block's header.
bool isWavPackOfSamples(std::span<const std::uint8_t> packet) {
  constexpr std::size_t kFlags = 24;
  constexpr std::uint32_t kOneBit = 0x80000000U;
  return packet.size() >= kFlags + 4 && beginsWith(packet, "wvpk") &&
         (AV_RL32(packet.data() + kFlags) & kOneBit) == 0;
}

/// A frame's syncword, RFC 9639, 9.1.
bool isFLACFrame(std::span<const std::uint8_t> packet) {
  return packet.size() >= 2 && packet[0] == 0xFF && (packet[1] & 0xFC) == 0xF8;
}

/// Vorbis I, 4.2.1 and 4.3.1: the first bit tells headers from audio.
bool isVorbisHeader(std::span<const std::uint8_t> packet) {
  return !packet.empty() && (packet[0] & 1) != 0;
}

}  // namespace

// Decoders whose memory ends. Layer III reaches back 511 bytes of main data and one synthesis
// window; that of layers I and II, which rounds to 16 bits, hands its rounding errors on for ever.
// Vorbis overlaps two blocks. Opus in its CELT mode predicts energies from packet to packet; the
// last trace of a difference is gone after about a second of music, and silence ends it at once.
// AAC overlaps two blocks, and where it holds no noise that is all; the decoder may be told to
// leave out some blocks at its start. The lossless codecs begin anew with every packet.
const EntryRule::Memory EntryRule::kMemories[] = {
    {AV_CODEC_ID_MP3, 4, 2048, 3}, {AV_CODEC_ID_VORBIS, 2, 0, 4}, {AV_CODEC_ID_OPUS, 4, 400, 5},
    {AV_CODEC_ID_ALAC, 1, 0, 1},   {AV_CODEC_ID_FLAC, 1, 0, 1},   {AV_CODEC_ID_WAVPACK, 1, 0, 1},
    {AV_CODEC_ID_TTA, 1, 0, 1},    {AV_CODEC_ID_AAC, 3, 0, 1},
};

std::optional<EntryRule> EntryRule::of(const AVCodecParameters& parameters) {
  const auto* const memory =
      std::find_if(std::begin(kMemories), std::end(kMemories),
                   [&](const Memory& each) { return each.codec == parameters.codec_id; });
  if (memory == std::end(kMemories)) return std::nullopt;
  // The speech modes' filters never quite forget, and only the first stream's mode is looked at.
  if (memory->codec == AV_CODEC_ID_OPUS && !isOneOpusStream(parameters)) return std::nullopt;
  return EntryRule(*memory);
}

bool EntryRule::note(const AVPacket& packet) {
  const auto bytes = bytesOf(packet);
  if (codec() == AV_CODEC_ID_MP3 && !layerHeader_) layerHeader_ = layerHeader(bytes);
  if (codec() == AV_CODEC_ID_VORBIS) return !isVorbisHeader(bytes);
  return codec() != AV_CODEC_ID_FLAC || !beginsWith(bytes, "fLaC");
}

bool EntryRule::suits(const AVPacket& packet) const {
  const auto concernsDecoder = [](const AVPacketSideData& side) {
    return side.type != AV_PKT_DATA_MPEGTS_STREAM_ID;
  };
  if (packet.size <= 0 || (packet.flags & (AV_PKT_FLAG_CORRUPT | AV_PKT_FLAG_DISCARD)) != 0 ||
      std::any_of(packet.side_data, packet.side_data + packet.side_data_elems, concernsDecoder))
    return false;
  const auto bytes = bytesOf(packet);
  switch (codec()) {
    case AV_CODEC_ID_MP3:
      return layerHeader_ && isLayerIII(*layerHeader_) && layerHeader(bytes) == layerHeader_;
    case AV_CODEC_ID_VORBIS:
      return !isVorbisHeader(bytes);
    case AV_CODEC_ID_OPUS:
      return CELTFrame::isOne(bytes);
    case AV_CODEC_ID_FLAC:
      return isFLACFrame(bytes);
    case AV_CODEC_ID_WAVPACK:
      return isWavPackOfSamples(bytes);
    default:
      return true;
  }
}

std::optional<std::size_t> EntryRule::leadIn(std::span<const AVPacket* const> before) const {
  const std::size_t fewest = memory_.comparedPackets + memory_.warmUpPackets;
  std::size_t count = memory_.comparedPackets;
  std::size_t units = 0;
  while (count < fewest || units < memory_.warmUpUnits) {
    if (count >= before.size()) return std::nullopt;
    ++count;
    units += unitsOf(*before[before.size() - count]);
  }
  return forgets(before.last(count)) ? std::optional(count) : std::nullopt;
}

std::size_t EntryRule::unitsOf(const AVPacket& packet) const {
  return codec() == AV_CODEC_ID_OPUS ? CELTFrame::duration(bytesOf(packet))
                                     : static_cast<std::size_t>(packet.size);
}

/// Whether a decoder of Opus that has come to the right energies also has those of frames before:
/// a transient after a run of transients may bring out what lay before that, which no neighbour
/// hears until then.
bool EntryRule::forgets(std::span<const AVPacket* const> packets) const {
  constexpr std::ptrdiff_t kSteadyPackets = 2;
  if (codec() != AV_CODEC_ID_OPUS) return true;
  const auto later = packets.last(packets.size() / 2);
  return std::count_if(later.begin(), later.end(), [](const AVPacket* packet) {
           return CELTFrame::isSteady(bytesOf(*packet));
         }) >= kSteadyPackets;
}

}  // namespace orvane
