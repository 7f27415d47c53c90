#pragma once

#include <cstdint>

#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Reads the header of a NeXT/Sun file (AU) in either byte order, which begins at `start`. Throws
/// `PlatformError` for a header that is cut short.
ORVANE_TESTING_API PCMStream parseAU(const InputFile& file, std::uint64_t start);

}  // namespace orvane
