#pragma once

#include <cstdint>

#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Read MATLAB files of version 4 and 5, which begin at `start` and hold audio as two variables: a
/// number named "samplerate", then a matrix with one row to the channel. Integers are samples of
/// full scale. Throw `PlatformError` for a file of other variables or one that is cut short.
ORVANE_TESTING_API PCMStream parseMATLAB4(const InputFile& file, std::uint64_t start);
ORVANE_TESTING_API PCMStream parseMATLAB5(const InputFile& file, std::uint64_t start);

}  // namespace orvane
