#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "orvane/platform/export.h"

namespace orvane {

/// The header of a frame of MPEG-1, 2 or 2.5 audio (ISO/IEC 11172-3, 2.4.1.3; 13818-3).
struct MPEGFrameHeader {
  bool isMPEG1 = false;
  std::uint32_t layer = 0;         ///< 1 … 3
  std::uint32_t sampleRate = 0;    ///< in Hz
  std::uint32_t channelCount = 0;  ///< 1 or 2
  bool hasChecksum = false;
  std::size_t byteCount = 0;  ///< of the whole frame

  bool operator==(const MPEGFrameHeader&) const = default;
};

/// Reads the header that `bytes` begin with; absent where there is none, and for a frame of free
/// format, whose length is not stated.
ORVANE_API std::optional<MPEGFrameHeader> readMPEGFrameHeader(
    std::span<const std::byte> bytes) noexcept;

}  // namespace orvane
