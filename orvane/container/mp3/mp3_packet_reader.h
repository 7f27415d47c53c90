#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "orvane/container/mp3/mp3_packet.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// Reads the packets of a file that follow one another without a gap.
class MP3PacketReader {
 public:
  /// Nothing is read at or behind `end`.
  MP3PacketReader(std::shared_ptr<const InputFile> file, std::uint64_t end);

  /// Goes on at that place of the file.
  void seek(std::uint64_t place) noexcept;

  /// The next packet, valid until the next call; absent where no whole one stands. Throws
  /// `PlatformError`.
  std::optional<MP3Packet> next();

  /// Where the next packet begins.
  std::uint64_t place() const noexcept { return place_; }

 private:
  std::shared_ptr<const InputFile> file_;
  std::uint64_t end_;
  std::uint64_t place_ = 0;
  std::vector<std::byte> buffer_{};
  std::uint64_t bufferPlace_ = 0;
  std::size_t bufferedBytes_ = 0;
};

}  // namespace orvane
