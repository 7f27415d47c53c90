#include "tests/reference/dr_reference.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace orvane::test::reference {

double channelDR(std::span<const float> samples, double sampleRate) {
  const auto blockFrames =
      sampleRate == 44100 ? std::size_t{132480} : static_cast<std::size_t>(3 * sampleRate + 0.5);
  std::vector<double> levels, peaks;
  for (std::size_t begin = 0; begin < samples.size(); begin += blockFrames) {
    const auto block = samples.subspan(begin, std::min(blockFrames, samples.size() - begin));
    double squares = 0, peak = 0;
    for (const float sample : block) {
      const auto x = static_cast<double>(sample);
      squares += x * x;
      peak = std::max(peak, std::abs(x));
    }
    levels.push_back(std::sqrt(2 * squares / static_cast<double>(block.size())));
    peaks.push_back(peak);
  }
  std::sort(levels.rbegin(), levels.rend());
  std::sort(peaks.rbegin(), peaks.rend());
  const std::size_t loudest = std::max<std::size_t>(1, levels.size() * 20 / 100);
  double squares = 0;
  for (std::size_t i = 0; i < loudest && i < levels.size(); ++i) squares += levels[i] * levels[i];
  const double level = std::sqrt(squares / static_cast<double>(loudest));
  const double peak = peaks.empty() ? 0.0 : peaks[std::min<std::size_t>(1, peaks.size() - 1)];
  return level > 0 && peak > 0 ? 20 * std::log10(peak / level) : 0.0;
}

}  // namespace orvane::test::reference
