#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "orvane/platform/export.h"

namespace orvane {

/// All bytes of a regular file. Throws `PlatformError`, for one of more than `largestSize` bytes
/// too.
ORVANE_API std::string readFileText(const std::filesystem::path& path, std::uint64_t largestSize);

}  // namespace orvane
