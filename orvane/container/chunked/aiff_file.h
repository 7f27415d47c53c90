#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "orvane/container/pcm_file_outline.h"
#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Reads the header of an AIFF or AIFF-C file. `start` is where the form begins. Throws
/// `PlatformError` for a file without a usable common chunk.
ORVANE_TESTING_API PCMStream parseAIFF(const InputFile& file, std::uint64_t start);

inline constexpr std::string_view kNoFloatInAIFF =
    "AIFF stores integer PCM only; AIFF-C and CAF store floating point too";

/// Compression type and name of samples that AIFF-C stores: `NONE`, `fl32` or `fl64`.
std::vector<std::byte> aiffCompression(const SampleEncoding& sample);

/// An AIFF file to be, or an AIFF-C file of integers (`NONE`) or floats (`fl32`, `fl64`). Throws
/// `UnwritableFormat`.
PCMFileOutline outlineAIFF(const PCMFileSpecification& specification);

}  // namespace orvane
