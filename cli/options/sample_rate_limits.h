#pragma once

#include <string>

/// The rates at which the program measures: beyond them a header is broken, not unusual.
namespace orvane::cli::SampleRateLimits {

inline constexpr double kLowestHertz = 100;
inline constexpr double kHighestHertz = 10e6;

/// False also for what is no number.
constexpr bool contains(double hertz) noexcept {
  return hertz >= kLowestHertz && hertz <= kHighestHertz;
}

inline std::string description() {
  return "100 Hz to 10 MHz";
}

}  // namespace orvane::cli::SampleRateLimits
