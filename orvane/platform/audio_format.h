#pragma once

#include <cstdint>
#include <optional>

#include "orvane/platform/channel_layout.h"
#include "orvane/platform/four_cc.h"

namespace orvane {

/// Format of a buffer: always planar 32-bit float.
struct AudioFormat {
  double sampleRate = 0;  ///< hertz
  std::uint32_t channelCount = 0;
  std::optional<ChannelLayout> layout{};  ///< absent when nothing is known about the channels

  bool operator==(const AudioFormat&) const = default;
};

/// How audio lies in a file, in the terms of a Core Audio stream description.
struct StreamDescription {
  double sampleRate = 0;          ///< hertz
  FourCC formatID = 0;            ///< `lpcm`, `aac `, `alac` …
  std::uint32_t formatFlags = 0;  ///< for `lpcm` the kFormatFlag… bits below
  std::uint32_t bytesPerPacket = 0;
  std::uint32_t framesPerPacket = 0;
  std::uint32_t bytesPerFrame = 0;
  std::uint32_t channelsPerFrame = 0;
  std::uint32_t bitsPerChannel = 0;  ///< 0 for compressed codecs

  bool operator==(const StreamDescription&) const = default;
};

inline constexpr FourCC kFormatLinearPCM = fourCCFrom("lpcm");
inline constexpr std::uint32_t kFormatFlagIsFloat = 1U << 0;
inline constexpr std::uint32_t kFormatFlagIsBigEndian = 1U << 1;
inline constexpr std::uint32_t kFormatFlagIsSignedInteger = 1U << 2;
inline constexpr std::uint32_t kFormatFlagIsPacked = 1U << 3;
inline constexpr std::uint32_t kFormatFlagIsAlignedHigh = 1U << 4;  ///< left-justified in its bytes
inline constexpr std::uint32_t kFormatFlagIsNonInterleaved = 1U << 5;

/// The settings under which a file's format is described to writers. Every entry may be missing.
struct AudioFormatSettings {
  std::optional<FourCC> fileTypeID{};  ///< of the container: `WAVE`, `caff` …
  std::optional<FourCC> formatID{};
  std::optional<double> sampleRate{};
  std::optional<std::int64_t> channelCount{};
  std::optional<ChannelLayout> layout{};
  std::optional<std::int64_t> linearPCMBitDepth{};
  std::optional<bool> linearPCMIsFloat{};
  std::optional<bool> linearPCMIsBigEndian{};

  bool operator==(const AudioFormatSettings&) const = default;
};

}  // namespace orvane
