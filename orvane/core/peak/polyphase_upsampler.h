#pragma once

#include <cstddef>

#include "orvane/platform/export.h"

/// Interpolation between samples, for true-peak measurement (BS.1770-5, Annex 2).
///
/// At four times the rate the filters look at twelve samples, at twice the rate at twenty-four. For
/// stationary sines up to 20 kHz at a rate of 48 kHz (×4) or 96 kHz (×2) the highest reading lies
/// within +0.1 / −0.6 dB of the true peak at the worst phase.
namespace orvane::core::PolyphaseUpsampler4x {

/// Samples that stand before the first one in the work buffer of `detectPerSamplePeaks`.
inline constexpr std::size_t kHistory = 13;

/// Samples before a run that `largestPeak` looks at.
inline constexpr std::size_t kPeakHistory = 23;

/// No value at ×4 exceeds the largest sample of its window by more: the sum of a filter's
/// magnitudes.
inline constexpr float kLargestGain = 1.901F;

/// Points per sample at which the signal is estimated.
enum class Factor { none = 1, two = 2, four = 4 };

/// One magnitude per frame: the largest of |sample| and the three interpolated values (×4) that the
/// window ending at that sample gives. They lie half a window, five to six samples, back. `work`
/// holds `kHistory` samples followed by `frameCount` frames, all finite; `peaks` receives
/// `frameCount` values.
ORVANE_API void detectPerSamplePeaks(const float* work, std::size_t frameCount,
                                     float* peaks) noexcept;

/// The largest magnitude among `floor`, all samples and all interpolated values of a run of
/// `frameCount` samples that, unless it is empty, is preceded by `kPeakHistory` readable samples.
/// Stretches that cannot raise the result are passed over. Non-finite samples count as 0.
ORVANE_API float largestPeak(Factor factor, const float* samples, std::size_t frameCount,
                             float floor) noexcept;

}  // namespace orvane::core::PolyphaseUpsampler4x
