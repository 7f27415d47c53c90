#pragma once

#include <cstdint>

#include "orvane/container/pcm_file_outline.h"
#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Reads the header of a WAVE file in any of its dresses: `RIFF`, `RIFX` (big-endian), `RF64` and
/// `BW64` (EBU Tech 3306, ITU-R BS.2088, with a `ds64` chunk). `start` is where the form begins.
/// Throws `PlatformError` for a file without a usable format chunk.
ORVANE_TESTING_API PCMStream parseRIFF(const InputFile& file, std::uint64_t start);

/// Reads the header of a Sony Wave64 file: WAVE with 64-bit sizes and GUIDs for identifiers.
/// `start` is where the form begins. Throws `PlatformError` for a file without a usable format
/// chunk.
ORVANE_TESTING_API PCMStream parseWave64(const InputFile& file, std::uint64_t start);

/// Throws `UnwritableFormat` for frames that are too large for a format chunk.
void requireWaveFrame(AudioContainer container, std::uint64_t frameBytes);

/// A WAVE file to be: RIFF, from 4 GiB on RF64, or RF64 and BW64 from the first byte on. Throws
/// `UnwritableFormat`.
PCMFileOutline outlineWave(const PCMFileSpecification& specification);

/// A Wave64 file to be. Throws `UnwritableFormat`.
PCMFileOutline outlineWave64(const PCMFileSpecification& specification);

}  // namespace orvane
