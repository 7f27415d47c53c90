#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane::core {

/// The gates of BS.1770-5, Annex 1, over powers of gating blocks.
namespace LoudnessGating {

/// Blocks must lie strictly above −70 LUFS.
inline constexpr double kAbsoluteGateLUFS = -70.0;
/// … and strictly above the mean of those, less 10 LU.
inline constexpr double kRelativeGateLU = -10.0;

/// Mean power of the blocks that pass both gates; 0 when none does.
ORVANE_API double gatedPower(std::span<const double> blockPowers);

/// How many blocks pass both gates.
ORVANE_API std::size_t gatedBlockCount(std::span<const double> blockPowers);

/// `gatedPower` of the first 1, 2, 3 … blocks; O(n log n) for all of them.
ORVANE_API std::vector<double> runningGatedPowers(std::span<const double> blockPowers);

}  // namespace LoudnessGating

/// Loudness range (EBU Tech 3342 v4) from the powers of 3 s windows at 10 per second, in LU: the
/// distance from the 10th to the 95th percentile of those at or above −70 LUFS and at or above
/// their mean less 20 LU; 0 when there are none.
ORVANE_API double loudnessRangeOfPowers(std::span<const double> shortTermPowers);

}  // namespace orvane::core
