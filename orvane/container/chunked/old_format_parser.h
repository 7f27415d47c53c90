#pragma once

#include <cstdint>

#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Reads the header of a file that begins at `start`. Throws `PlatformError` for a header that is
/// cut short or says nothing of its audio.
using OldFormatParser = PCMStream (*)(const InputFile& file, std::uint64_t start);

/// The parser of a simple format of old samplers, trackers, handhelds and laboratories; null for
/// every other one. What is linear PCM can be read; the rest is described with a refusal, but for
/// Psion's WVE, which FFmpeg decodes.
ORVANE_TESTING_API OldFormatParser oldFormatParser(FourCC fileTypeID);

}  // namespace orvane
