#pragma once

#include <cstdint>
#include <optional>
#include <span>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace orvane {

/// Frames that a decoder makes of one packet, told without decoding it.
class PacketFrames {
 public:
  /// `decodedFrames` is what the stream's first packet decoded to.
  PacketFrames(const AVCodecParameters& parameters, std::int64_t decodedFrames);

  /// Absent when only decoding can tell. Packets must be given in stream order.
  std::optional<std::int64_t> operator()(std::span<const std::uint8_t> packet);

 private:
  const AVCodecParameters& parameters_;
  std::int64_t decodedFrames_;
};

}  // namespace orvane
