#pragma once

#include <cstdint>

#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/pcm_stream.h"

namespace orvane {

inline constexpr FourCC kWaveFormatID = fourCCFrom("fmt ");
inline constexpr FourCC kWaveDataID = fourCCFrom("data");

inline constexpr std::uint16_t kWaveTagPCM = 0x0001;
inline constexpr std::uint16_t kWaveTagFloat = 0x0003;
inline constexpr std::uint16_t kWaveTagExtensible = 0xFFFE;

/// Whether a sub-format and a speaker mask stand behind the basic fields of a format chunk's body.
bool isExtensibleWave(const HeaderFields& format);

/// The code of a compressed format by its WAVE format tag; the tag itself where there is none.
FourCC codecOfWaveTag(std::uint16_t tag);

/// The stream that the format and data chunks of a WAVE file describe, in whichever way the chunks
/// are headed. Throws `PlatformError` without a format chunk, or with one that is cut short.
PCMStream waveStream(const InputFile& file, FourCC fileTypeID, ChunkList list);

}  // namespace orvane
