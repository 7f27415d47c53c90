#pragma once

#include <cstdint>

#include "orvane/platform/audio_file/pcm_stream.h"

namespace orvane {

/// Reads the header of a Core Audio Format file, which begins at `start`. Throws `PlatformError`
/// for a file without a usable description chunk.
PCMStream parseCAF(const InputFile& file, std::uint64_t start);

}  // namespace orvane
