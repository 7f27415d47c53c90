#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace orvane {

/// How a codec's decoder may begin in mid-stream: what it must have decoded before its output is
/// that of a decoder that has read from the start, and of which packets that holds.
class EntryRule {
 public:
  /// Absent where a decoder cannot be entered in mid-stream: because it draws random numbers all
  /// along (dither of AC-3) or never quite forgets.
  static std::optional<EntryRule> of(const AVCodecParameters& parameters);

  AVCodecID codec() const noexcept { return memory_.codec; }

  /// To be told of every packet that one decoder is given by itself, from the first on. False when
  /// the packet holds headers: decoders opened for earlier ones are none of the stream's then.
  bool note(const AVPacket& packet);

  /// Whether a packet brings audio that a decoder forgets, and nothing for the decoder only.
  bool suits(const AVPacket& packet) const;

  /// Decoded by both neighbours behind the warm-up, and compared.
  std::size_t comparedPackets() const noexcept { return memory_.comparedPackets; }

  /// With how many of the packets before a border a decoder has to begin; absent where they do not
  /// bring it to the state that it needs.
  std::optional<std::size_t> leadIn(std::span<const AVPacket* const> before) const;

 private:
  struct Memory {
    AVCodecID codec = AV_CODEC_ID_NONE;
    std::size_t warmUpPackets = 0;
    std::size_t warmUpUnits = 0;  ///< bytes of Layer III, 2.5 ms of Opus
    std::size_t comparedPackets = 0;
  };
  explicit EntryRule(const Memory& memory) : memory_(memory) {}
  std::size_t unitsOf(const AVPacket& packet) const;
  bool forgets(std::span<const AVPacket* const> packets) const;

  static const Memory kMemories[];
  Memory memory_;
  std::optional<std::uint32_t> layerHeader_{};  ///< what the first packet's has fixed
};

}  // namespace orvane
