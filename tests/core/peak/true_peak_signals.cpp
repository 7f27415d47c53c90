#include "tests/core/peak/true_peak_signals.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>

#include "tests/support/signals.h"

namespace orvane::core::conformance {
namespace {

constexpr std::size_t kFadesPerSecond = 10;  // 100 ms

/// The programme at four times the rate.
const std::vector<float>& splicedToneAtFourTimes() {
  static const std::vector<float> samples = [] {
    auto before = test::lockedSine(6040 * 24, 1, 24, 0.0, 0.5);
    const auto insert = test::lockedSine(16, 1, 16, 0.0, 1.0);
    const auto after = test::lockedSine(6760 * 24, 1, 24, 0.0, 0.5);
    before.insert(before.end(), insert.begin(), insert.end());
    before.insert(before.end(), after.begin(), after.end());
    return before;
  }();
  return samples;
}

/// A windowed sinc (Hann) whose edge is half the lower rate.
std::vector<double> decimationFilter() {
  constexpr int kHalf = 256;
  std::vector<double> taps;
  for (int k = -kHalf; k <= kHalf; ++k) {
    const double x = std::numbers::pi * k / 4;
    const double window = 0.5 + 0.5 * std::cos(std::numbers::pi * k / kHalf);
    taps.push_back((k == 0 ? 1.0 : std::sin(x) / x) * window / 4);
  }
  return taps;
}

}  // namespace

std::vector<float> lockedToneSignal(std::uint32_t sampleRate, int variant) {
  struct Locked {
    std::uint32_t period;
    double degrees, amplitude;
  };
  constexpr std::array<Locked, 5> kTones{
      {{4, 0, 0.5}, {4, 45, 0.5}, {6, 60, 0.5}, {8, 67.5, 0.5}, {4, 45, 1.41}}};
  const Locked& tone = kTones.at(static_cast<std::size_t>(variant));
  auto samples = test::lockedSine(sampleRate * 16 / 5, 1, tone.period,
                                  tone.degrees * std::numbers::pi / 180, tone.amplitude);
  test::fadeEnds(samples, sampleRate / kFadesPerSecond);
  return samples;
}

std::vector<float> splicedToneSignal(std::uint32_t sampleRate, int offset) {
  const auto& source = splicedToneAtFourTimes();
  const auto taps = decimationFilter();
  const auto half = static_cast<std::ptrdiff_t>(taps.size() / 2);
  const auto count = static_cast<std::ptrdiff_t>(source.size());
  std::vector<float> samples;
  for (std::ptrdiff_t centre = offset; centre < count; centre += 4) {
    double sum = 0;
    for (auto n = std::max<std::ptrdiff_t>(0, centre - half);
         n < std::min(count, centre + half + 1); ++n)
      sum += taps[static_cast<std::size_t>(n - centre + half)] *
             static_cast<double>(source[static_cast<std::size_t>(n)]);
    samples.push_back(static_cast<float>(sum));
  }
  test::fadeEnds(samples, sampleRate / kFadesPerSecond);
  return samples;
}

}  // namespace orvane::core::conformance
