#pragma once

#include <cstdint>

#include "orvane/container/pcm_file_outline.h"
#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Flags of linear PCM as a CAF file states them. The second one means the opposite of its namesake
/// in a stream description.
namespace CAFFlags {
inline constexpr std::uint32_t isFloat = 1U << 0;
inline constexpr std::uint32_t isLittleEndian = 1U << 1;
}  // namespace CAFFlags

/// Reads the header of a Core Audio Format file, which begins at `start`. Throws `PlatformError`
/// for a file without a usable description chunk.
ORVANE_TESTING_API PCMStream parseCAF(const InputFile& file, std::uint64_t start);

/// A Core Audio Format file to be, little-endian.
PCMFileOutline outlineCAF(const PCMFileSpecification& specification);

}  // namespace orvane
