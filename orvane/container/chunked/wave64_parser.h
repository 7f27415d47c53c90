#pragma once

#include <cstdint>

#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Reads the header of a Sony Wave64 file: WAVE with 64-bit sizes and GUIDs for identifiers.
/// `start` is where the form begins. Throws `PlatformError` for a file without a usable format
/// chunk.
ORVANE_TESTING_API PCMStream parseWave64(const InputFile& file, std::uint64_t start);

}  // namespace orvane
