#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/vorbis_parser.h>
}

namespace orvane {

/// Tells how many frames a decoder makes of each packet of a stream, without decoding it.
class PacketFrames {
 public:
  /// `decodedFrames` is what the stream's first packet decoded to. `parameters` must live as long.
  PacketFrames(const AVCodecParameters& parameters, std::int64_t decodedFrames);

  /// Frames of the stream's next packet, before any trimming; absent when only decoding can tell.
  std::optional<std::int64_t> next(std::span<const std::uint8_t> packet);

 private:
  struct FreeVorbisParser {
    void operator()(AVVorbisParseContext* parser) const noexcept { av_vorbis_parse_free(&parser); }
  };

  std::optional<std::int64_t> nextVorbis(std::span<const std::uint8_t> packet);

  const AVCodecParameters& parameters_;
  std::int64_t decodedFrames_;
  std::unique_ptr<AVVorbisParseContext, FreeVorbisParser> vorbisParser_{};
  bool isFirstVorbisPacket_ = true;
};

}  // namespace orvane
