#pragma once

#include <cstdint>
#include <memory>

#include "orvane/platform/pcm_buffer.h"

/// Where whole-file buffers are made.
namespace orvane::core::PCMBufferAllocation {

/// A buffer of `format` that can hold `frameCapacity` frames, its length 0; null when the memory
/// cannot be had.
inline std::shared_ptr<PCMBuffer> make(const AudioFormat& format,
                                       std::uint32_t frameCapacity) noexcept {
  return PCMBuffer::make(format, frameCapacity);
}

}  // namespace orvane::core::PCMBufferAllocation
