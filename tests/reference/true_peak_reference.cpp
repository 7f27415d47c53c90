#include "tests/reference/true_peak_reference.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "orvane/core/peak/polyphase_upsampler_taps.h"

namespace orvane::test::reference {
namespace {

double finite(float x) {
  return std::isfinite(x) ? static_cast<double>(x) : 0.0;
}

}  // namespace

Filters quarterFilters() {
  Filters filters;
  for (const auto& taps : core::kUpsamplerFilters) filters.emplace_back(taps.begin(), taps.end());
  return filters;
}

Filters halfwayFilter() {
  return {{core::kHalfwayFilter.begin(), core::kHalfwayFilter.end()}};
}

std::vector<double> windowPeaks(std::span<const float> samples, const Filters& filters) {
  const auto count = static_cast<std::ptrdiff_t>(samples.size());
  const auto at = [&](std::ptrdiff_t n) {
    return n >= 0 && n < count ? finite(samples[static_cast<std::size_t>(n)]) : 0.0;
  };
  const auto reach = static_cast<std::ptrdiff_t>(filters.front().size()) - 1;
  std::vector<double> peaks;
  for (std::ptrdiff_t last = 0; last < count + reach; ++last) {
    double peak = std::abs(at(last));
    for (const auto& taps : filters) {
      double sum = 0;
      for (std::size_t tap = 0; tap < taps.size(); ++tap)
        sum += taps[tap] * at(last - reach + static_cast<std::ptrdiff_t>(tap));
      peak = std::max(peak, std::abs(sum));
    }
    peaks.push_back(peak);
  }
  return peaks;
}

double truePeak(std::span<const float> samples, double sampleRate) {
  if (samples.empty()) return 0;
  if (sampleRate >= 192000) return samplePeak(samples);
  const auto peaks = windowPeaks(samples, sampleRate < 96000 ? quarterFilters() : halfwayFilter());
  return *std::max_element(peaks.begin(), peaks.end());
}

double samplePeak(std::span<const float> samples) {
  double peak = 0;
  for (const float x : samples) peak = std::max(peak, std::abs(finite(x)));
  return peak;
}

}  // namespace orvane::test::reference
