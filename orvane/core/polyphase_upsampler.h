#pragma once

#include <cstddef>

#include "orvane/platform/export.h"

/// Interpolation at four times the sample rate, for true-peak measurement (BS.1770-5, Annex 2).
///
/// The filter looks at a sample and the thirteen before it. For stationary sines up to 20 kHz at a
/// rate of 48 kHz the highest reading lies within +0.1 / −0.6 dB of the true peak at the worst
/// phase.
namespace orvane::core::PolyphaseUpsampler4x {

/// Samples before the current one that the filter looks at.
inline constexpr std::size_t kHistory = 13;

/// Points per sample at which the signal is estimated.
enum class Factor { none = 1, two = 2, four = 4 };

/// One magnitude per frame: the largest of |sample| and the three interpolated values that the
/// window ending at that sample gives. They lie half a window, seven samples, back. `work` holds
/// `kHistory` samples followed by `frameCount` frames, all finite; `peaks` receives `frameCount`
/// values.
ORVANE_API void detectPerSamplePeaks(const float* work, std::size_t frameCount,
                                     float* peaks) noexcept;

/// The largest magnitude among `floor`, all samples and all interpolated values of a run of
/// `frameCount` samples that, unless it is empty, is preceded by `kHistory` readable samples.
/// Stretches that cannot raise the result are passed over. Non-finite samples count as 0.
ORVANE_API float largestPeak(Factor factor, const float* samples, std::size_t frameCount,
                             float floor) noexcept;

}  // namespace orvane::core::PolyphaseUpsampler4x
