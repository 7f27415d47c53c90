#include "orvane/core/loudness/loudness_measurement.h"

#include <cmath>
#include <limits>

namespace orvane::core::LoudnessMeasurement {

float programRMSDBFS(std::span<const float> perChannelDBFS) noexcept {
  double power = 0;
  for (const float level : perChannelDBFS)
    power += std::pow(10.0, static_cast<double>(level) / 10.0);
  if (!(power > 0)) return -std::numeric_limits<float>::infinity();
  return static_cast<float>(10.0 * std::log10(power / static_cast<double>(perChannelDBFS.size())));
}

}  // namespace orvane::core::LoudnessMeasurement
