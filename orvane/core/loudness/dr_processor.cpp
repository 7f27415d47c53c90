#include "orvane/core/loudness/dr_processor.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>

#include "orvane/platform/signal_kernels.h"

namespace orvane::core::DRProcessor {

std::size_t blockFrames(double sampleRate) noexcept {
  // The procedure gives its block length for 44.1 kHz, a little more than 3 s.
  if (sampleRate == 44100) return 132480;
  // A raw file may be declared at any rate; past this one no file fills a block.
  constexpr double kHighestRate = 1e12;
  return static_cast<std::size_t>(
      std::max<long long>(1, std::llround(3.0 * std::min(sampleRate, kHighestRate))));
}

double channelDR(std::span<const Block> blocks) {
  if (blocks.empty()) return 0.0;
  std::vector<double> meanSquares;
  std::vector<float> peaks;
  for (const Block& block : blocks) {
    if (!std::isfinite(block.meanSquare)) return 0.0;  // has no rank among the others
    meanSquares.push_back(block.meanSquare);
    peaks.push_back(block.peak);
  }
  std::sort(meanSquares.begin(), meanSquares.end(), std::greater<>());
  std::sort(peaks.begin(), peaks.end(), std::greater<>());
  const std::size_t loudest = std::max<std::size_t>(1, blocks.size() / 5);
  const double loudestMean =
      std::accumulate(meanSquares.begin(),
                      meanSquares.begin() + static_cast<std::ptrdiff_t>(loudest), 0.0) /
      static_cast<double>(loudest);
  const double rms = std::sqrt(2.0 * loudestMean);
  const double peak = static_cast<double>(peaks.size() > 1 ? peaks[1] : peaks[0]);
  if (!(rms > 0) || !(peak > 0)) return 0.0;
  const double value = -20.0 * std::log10(rms / peak);
  return std::isfinite(value) ? value : 0.0;
}

std::int64_t score(std::span<const double> channelValues) noexcept {
  if (channelValues.empty()) return 0;
  const double sum = std::accumulate(channelValues.begin(), channelValues.end(), 0.0);
  return std::llround(sum / static_cast<double>(channelValues.size()));
}

std::vector<double> computeChannelDR(std::span<const float* const> channelData,
                                     std::size_t channelCount, std::size_t frameCount,
                                     double sampleRate) {
  const std::size_t whole = blockFrames(sampleRate);
  std::vector<double> values;
  for (std::size_t channel = 0; channel < channelCount; ++channel) {
    std::vector<Block> blocks;
    for (std::size_t begin = 0; begin < frameCount; begin += whole) {
      const std::size_t frames = std::min(whole, frameCount - begin);
      const auto run = SignalKernels::runStatistics(channelData[channel] + begin, frames);
      blocks.push_back({run.sumOfSquares / static_cast<double>(frames), run.peak});
    }
    values.push_back(channelDR(blocks));
  }
  return values;
}

std::int64_t computeDR(std::span<const float* const> channelData, std::size_t channelCount,
                       std::size_t frameCount, double sampleRate) {
  return score(computeChannelDR(channelData, channelCount, frameCount, sampleRate));
}

}  // namespace orvane::core::DRProcessor
