#include "tests/reference/true_peak_reference.h"

#include <algorithm>
#include <cmath>

#include "orvane/core/polyphase_upsampler_taps.h"

namespace orvane::test::reference {
namespace {

double finite(float x) {
  return std::isfinite(x) ? static_cast<double>(x) : 0.0;
}

}  // namespace

std::vector<double> windowPeaks(std::span<const float> samples, std::size_t firstFilter,
                                std::size_t filterStep) {
  const auto count = static_cast<std::ptrdiff_t>(samples.size());
  const auto at = [&](std::ptrdiff_t n) {
    return n >= 0 && n < count ? finite(samples[static_cast<std::size_t>(n)]) : 0.0;
  };
  const auto history = static_cast<std::ptrdiff_t>(core::kUpsamplerTaps) - 1;
  std::vector<double> peaks;
  for (std::ptrdiff_t last = 0; last < count + history; ++last) {
    double peak = std::abs(at(last));
    for (std::size_t f = firstFilter; f < core::kUpsamplerFilters.size(); f += filterStep) {
      double sum = 0;
      for (std::size_t tap = 0; tap < core::kUpsamplerTaps; ++tap)
        sum += static_cast<double>(core::kUpsamplerFilters[f][tap]) *
               at(last - history + static_cast<std::ptrdiff_t>(tap));
      peak = std::max(peak, std::abs(sum));
    }
    peaks.push_back(peak);
  }
  return peaks;
}

double truePeak(std::span<const float> samples, double sampleRate) {
  if (samples.empty()) return 0;
  if (sampleRate >= 192000) return samplePeak(samples);
  const auto peaks = sampleRate < 96000 ? windowPeaks(samples, 0, 1) : windowPeaks(samples, 1, 3);
  return *std::max_element(peaks.begin(), peaks.end());
}

double samplePeak(std::span<const float> samples) {
  double peak = 0;
  for (const float x : samples) peak = std::max(peak, std::abs(finite(x)));
  return peak;
}

}  // namespace orvane::test::reference
