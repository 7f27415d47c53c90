#pragma once

#include <cstddef>

#include "orvane/container/pcm_stream.h"

namespace orvane {

/// Converts and de-interleaves `frames` frames of `channelCount` channels of stored samples:
/// sample (frame, channel) goes to `destinations[channel][frame]`. Values as in `convertToFloat`.
void deinterleaveStoredSamples(const StoredSample& sample, const std::byte* source,
                               std::size_t frames, std::size_t channelCount,
                               float* const* destinations) noexcept;

}  // namespace orvane
