#pragma once

#include <cstdint>

#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Reads the header of an AIFF or AIFF-C file. `start` is where the form begins. Throws
/// `PlatformError` for a file without a usable common chunk.
ORVANE_TESTING_API PCMStream parseAIFF(const InputFile& file, std::uint64_t start);

}  // namespace orvane
