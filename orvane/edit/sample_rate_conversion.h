#pragma once

#include <optional>
#include <span>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane {

/// The samples at another rate, round(n × to ÷ from) of them: band-limited, linear phase, no delay,
/// errors near −140 dB. Rates are above 0. Absent when they lie more than 4,096 times apart, and
/// when the memory cannot be had.
ORVANE_TESTING_API std::optional<std::vector<float>> atSampleRate(std::span<const float> samples,
                                                                  double fromRate, double toRate);

}  // namespace orvane
