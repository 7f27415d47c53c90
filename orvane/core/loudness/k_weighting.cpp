#include "orvane/core/loudness/k_weighting.h"

#include <cmath>
#include <limits>
#include <numbers>

#include "orvane/core/loudness/loudness_grid.h"
#include "orvane/platform/precondition.h"

namespace orvane::core {
namespace {

// Parameters of the analogue prototypes, a high shelf and a high pass: BS.1770-5, Annex 1, tables 1
// and 2, with the bilinear transform at 48 kHz undone. K = tan(pi f / rate) and Q follow from the
// poles, the shelf's gain from the zeros at half the rate (10^(G/20)), the exponent of its band gain
// from the middle one. At 48 kHz they give the tables back to the last printed digit.
constexpr double kShelfHz = 1681.974450955533;
constexpr double kShelfGainDB = 3.999843853973347;
constexpr double kShelfQ = 0.7071752369554196;
constexpr double kShelfBandExponent = 0.4996667741545416;
constexpr double kHighPassHz = 38.13547087602444;
constexpr double kHighPassQ = 0.5003270373238773;

/// Cancels the weighting's gain at 997 Hz (BS.1770-5, Annex 1).
constexpr double kOffsetDB = -0.691;

}  // namespace

KWeighting designKWeighting(double sampleRate) {
  precondition(sampleRate >= LoudnessGrid::kLowestRate,
               "K-weighting needs a sample rate of at least 8 kHz");
  KWeighting k;
  {
    const double warped = std::tan(std::numbers::pi * kShelfHz / sampleRate);
    const double high = std::pow(10.0, kShelfGainDB / 20.0);
    const double band = std::pow(high, kShelfBandExponent);
    const double a0 = 1.0 + warped / kShelfQ + warped * warped;
    k.shelfB0 = (high + band * warped / kShelfQ + warped * warped) / a0;
    k.shelfB1 = 2.0 * (warped * warped - high) / a0;
    k.shelfB2 = (high - band * warped / kShelfQ + warped * warped) / a0;
    k.shelfA1 = 2.0 * (warped * warped - 1.0) / a0;
    k.shelfA2 = (1.0 - warped / kShelfQ + warped * warped) / a0;
  }
  {
    const double warped = std::tan(std::numbers::pi * kHighPassHz / sampleRate);
    const double a0 = 1.0 + warped / kHighPassQ + warped * warped;
    k.highPassA1 = 2.0 * (warped * warped - 1.0) / a0;
    k.highPassA2 = (1.0 - warped / kHighPassQ + warped * warped) / a0;
  }
  return k;
}

double loudnessOfPower(double power) noexcept {
  if (!(power > 0)) return -std::numeric_limits<double>::infinity();
  return kOffsetDB + 10.0 * std::log10(power);
}

double powerOfLoudness(double lufs) noexcept {
  return std::pow(10.0, (lufs - kOffsetDB) / 10.0);
}

}  // namespace orvane::core
