#pragma once

#include <cstdint>

#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Reads the header of a Core Audio Format file, which begins at `start`. Throws `PlatformError`
/// for a file without a usable description chunk.
ORVANE_TESTING_API PCMStream parseCAF(const InputFile& file, std::uint64_t start);

}  // namespace orvane
