#pragma once

#include <cstdint>

#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Reads the header of a WAVE file in any of its dresses: `RIFF`, `RIFX` (big-endian), `RF64` and
/// `BW64` (EBU Tech 3306, ITU-R BS.2088, with a `ds64` chunk). `start` is where the form begins.
/// Throws `PlatformError` for a file without a usable format chunk.
ORVANE_TESTING_API PCMStream parseRIFF(const InputFile& file, std::uint64_t start);

}  // namespace orvane
