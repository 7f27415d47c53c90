#pragma once

#include <cstdint>

/// The grid on which loudness is told, and the rates at which it can be.
namespace orvane::core::LoudnessGrid {

/// Gating blocks of 400 ms overlap by three quarters (ITU-R BS.1770-5, Annex 1), so that one starts
/// every 100 ms. Curves, speech flags and windows of correlation follow the same step.
inline constexpr double kStepSeconds = 0.1;

/// Below, K-weighting's shelf comes too close to half the rate; above there is no audio.
inline constexpr double kLowestRate = 8'000;
inline constexpr double kHighestRate = 768'000;

constexpr bool hasLoudness(double sampleRate) noexcept {
  return sampleRate >= kLowestRate && sampleRate <= kHighestRate;
}

/// The end of step `index`, counted from 0, in seconds.
constexpr double stepEnd(std::int64_t index) noexcept {
  return static_cast<double>(index + 1) * kStepSeconds;
}

}  // namespace orvane::core::LoudnessGrid
