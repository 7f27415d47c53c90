#pragma once

#include <cstdint>

#include "orvane/platform/export.h"

/// How much decoded audio may be held in memory. All sizes are in bytes; the machine's figures are
/// read afresh on every call. Machines below 8 GiB are taken for ones of 8 GiB.
namespace orvane::AudioLoadLimits {

/// Working set of a rebuilding edit, in multiples of the decoded size.
inline constexpr std::int64_t rebuildEditWorkingSetMultiplier = 4;
/// The same for edits that hold more copies at a time.
inline constexpr std::int64_t heavyRebuildWorkingSetMultiplier = 6;

/// Largest decoded size that is loaded: half of the physical memory.
ORVANE_API std::int64_t maxDecodedBytes();

/// Decoded size from which a file counts as large: a quarter of the physical memory.
ORVANE_API std::int64_t largeFileThresholdBytes();

/// Memory that can be taken now: free and purgeable, and half of what is inactive; half of the
/// physical memory when the system gives no statistics.
ORVANE_API std::int64_t availableBytes();

/// Size as 32-bit floats; negative counts are taken for 0. A product beyond 64 bits is a
/// programming error.
ORVANE_API std::int64_t decodedBytes(std::int64_t frameLength, std::int64_t channelCount);

/// Whether that much audio may be loaded: at least one frame and channel, fewer than 2^30 frames,
/// no more than `maxDecodedBytes`, and below 4 GiB where the system cannot hold larger buffers.
ORVANE_API bool isWithinLimits(std::int64_t frameLength, std::int64_t channelCount);

ORVANE_API bool isLargeFile(std::int64_t decodedBytes);

/// Whether the working set of a rebuilding edit stays below `maxDecodedBytes`.
ORVANE_API bool rebuildEditFits(std::int64_t decodedBytes);

/// Whether an edit that holds more copies fits into three quarters of the available memory.
ORVANE_API bool inRAMHeavyRebuildFits(std::int64_t decodedBytes);

/// Whether `multiplier` copies fit into three quarters of the available memory.
ORVANE_API bool inRAMRebuildFitsLive(std::int64_t decodedBytes, std::int64_t multiplier);

}  // namespace orvane::AudioLoadLimits
