#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "orvane/platform/four_cc.h"

namespace orvane {

/// How much audio a stream decodes to.
struct StreamLength {
  std::int64_t frames = 0;
  bool isTruncated = false;  ///< the container breaks off, or promises more than it holds
};

/// Walks once through the file and counts the frames that decoding it will deliver, priming and
/// padding already taken off. Decodes only where packets do not tell their length. Throws
/// `PlatformError`.
StreamLength countFrames(const std::filesystem::path& path, std::optional<int> streamIndex,
                         FourCC containerHint);

}  // namespace orvane
