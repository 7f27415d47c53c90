#pragma once

#include <cstddef>

#include "orvane/core/loudness/k_weighting.h"
#include "orvane/platform/export.h"

namespace orvane::core {

/// Lanes that the kernel works on side by side at most.
inline constexpr std::size_t kKWeightingLanes = 16;

/// Filter memory of up to `kKWeightingLanes` independent signals: two values of each stage.
struct KWeightingState {
  alignas(64) double values[4][kKWeightingLanes] = {};
};

/// K-weights `laneCount` signals of `frames` samples each and adds the sum of squares of lane `i`'s
/// output to `sums[i]`. `lanes[i]` is the first sample; null stands for silence. Non-finite samples
/// count as 0. Double precision throughout; the filtered signal of a lane depends neither on its
/// neighbours nor on how it is cut into calls (the order of summation does).
ORVANE_TESTING_API void kWeightedSums(const KWeighting& coefficients, const float* const* lanes,
                                      std::size_t laneCount, std::size_t frames,
                                      KWeightingState& state, double* sums) noexcept;

}  // namespace orvane::core
