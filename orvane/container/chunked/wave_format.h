#pragma once

#include <cstdint>

#include "orvane/container/pcm_stream.h"

namespace orvane {

inline constexpr FourCC kWaveFormatID = fourCCFrom("fmt ");
inline constexpr FourCC kWaveDataID = fourCCFrom("data");

/// The code of a compressed format by its WAVE format tag; the tag itself where there is none.
FourCC codecOfWaveTag(std::uint16_t tag);

/// The stream that the format and data chunks of a WAVE file describe, in whichever way the chunks
/// are headed. Throws `PlatformError` without a format chunk, or with one that is cut short.
PCMStream waveStream(const InputFile& file, FourCC fileTypeID, ChunkList list);

}  // namespace orvane
