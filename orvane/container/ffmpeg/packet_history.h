#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "orvane/container/ffmpeg/codec_context.h"
#include "orvane/container/ffmpeg/demuxer.h"

namespace orvane {

/// The packets that a decoder has been given since it was opened, from which another one comes to
/// the same state.
class PacketHistory {
 public:
  /// Keeps the packet, or another reference to its bytes.
  void add(const AVPacket& packet);
  /// Those packets instead, some of which may be kept already.
  void replaceBy(std::span<const AVPacket* const> packets);
  void clear() noexcept;

  std::size_t size() const noexcept { return packets_.size(); }
  std::size_t bytes() const noexcept { return bytes_; }
  /// Valid until the next change.
  std::vector<const AVPacket*> packets() const;

 private:
  std::vector<PacketPointer> packets_{};
  std::size_t bytes_ = 0;
};

/// What a packet holds in memory.
std::size_t bytesHeldBy(const AVPacket& packet) noexcept;

/// A new decoder that has decoded those packets. Throws as `openCodec` does.
CodecContextPointer replay(const Demuxer& demuxer, const AVCodecParameters& parameters,
                           std::span<const AVPacket* const> packets);

}  // namespace orvane
