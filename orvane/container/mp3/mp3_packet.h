#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "orvane/container/sniff/mpeg_frame.h"

namespace orvane {

/// A packet of an MP3: what ISO/IEC 11172-3 calls a frame, which here is one sample of every
/// channel. Layer III, whole.
struct MP3Packet {
  MPEGFrameHeader header{};
  std::span<const std::byte> bytes{};

  /// The packet that `bytes` begin with; absent where there is none or not all of it.
  static std::optional<MP3Packet> at(std::span<const std::byte> bytes) noexcept;

  /// How many frames of audio it stands for.
  std::uint32_t frameCount() const noexcept { return header.isMPEG1 ? 1152 : 576; }

  /// Bytes before the main data: header, checksum, side information.
  std::size_t overhead() const noexcept;
  /// The same of a packet with a checksum.
  std::size_t longestOverhead() const noexcept;

  /// Bytes of main data, those of other packets' included.
  std::size_t mainDataBytes() const noexcept;

  /// What is the same in all packets of a stream: version, rate, channel mode, copyright, emphasis.
  /// The bit rate, the padding, the checksum and the coding of stereo may change within one.
  std::uint32_t streamMark() const noexcept;
};

/// Where a packet's main data lie, by its side information (ISO/IEC 11172-3, 2.4.1.7; 13818-3,
/// 2.4.1.7).
struct MP3MainData {
  std::size_t back = 0;  ///< bytes from the packet's own main data back to where they begin
  std::size_t bits = 0;  ///< that all granules take
};

/// The packet without audio of its own, in that memory: no granule takes any bits. What later
/// packets need of it, it still has.
MP3Packet emptied(const MP3Packet& packet, std::vector<std::byte>& memory);

/// Absent where the side information is one that no encoder writes.
std::optional<MP3MainData> readMP3MainData(const MP3Packet& packet) noexcept;

}  // namespace orvane
