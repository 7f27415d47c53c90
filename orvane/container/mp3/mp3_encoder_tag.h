#pragma once

#include <cstdint>
#include <optional>

#include "orvane/container/mp3/mp3_packet.h"

namespace orvane {

/// The note of an encoder in a packet of its own before the audio, "Xing" or "Info" by its first
/// letters.
struct MP3EncoderTag {
  std::int64_t packetCount = 0;  ///< of audio, without the tag's own
  std::int64_t priming = 0;      ///< frames that are to be taken off the start
  std::int64_t padding = 0;      ///< and off the end
};

/// Whether the packet seems to be such a note, or that of another family ("VBRI"), and no audio.
bool holdsEncoderTag(const MP3Packet& packet) noexcept;

/// Reads the note; absent where it does not tell the number of packets or is odd in another way.
std::optional<MP3EncoderTag> readEncoderTag(const MP3Packet& packet) noexcept;

}  // namespace orvane
