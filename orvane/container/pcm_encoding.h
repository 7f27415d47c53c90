#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "orvane/platform/audio_format.h"
#include "orvane/platform/export.h"

namespace orvane {

/// How linear-PCM samples are stored.
struct ORVANE_API PCMEncoding {
  std::int64_t bitDepth = 0;  ///< bits per sample
  bool isFloat = false;       ///< IEEE floating point, else integer

  bool operator==(const PCMEncoding&) const = default;

  /// 32-bit floating point.
  static const PCMEncoding float32;

  /// The encoding of a file format. Absent unless the format is there and linear PCM, and the depth
  /// is there and at least 1. A missing float entry means integer.
  static std::optional<PCMEncoding> fromFileFormat(const AudioFormatSettings& format);

  /// "24-bit integer", "32-bit float".
  std::string label() const;
};

}  // namespace orvane
