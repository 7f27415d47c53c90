#pragma once

#include <cstdint>

#include "orvane/container/pcm_stream.h"
#include "orvane/platform/export.h"

namespace orvane {

/// An ASF file as it is sent over a network: its header object in a frame of 12 bytes. The first
/// audio stream's properties hold the format of a WAVE file; nothing here can read its packets.
/// Throws `PlatformError`.
ORVANE_TESTING_API PCMStream parseASFStream(const InputFile& file, std::uint64_t start);

}  // namespace orvane
