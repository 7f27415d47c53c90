#include "orvane/analysis/clipping_run_finder.h"

#include <algorithm>
#include <bit>
#include <tuple>

#include "orvane/platform/signal_kernels.h"

namespace orvane {

using OfflineAnalysisPipeline::ClippingRun;
using OfflineAnalysisPipeline::kClippingThreshold;
using OfflineAnalysisPipeline::kMaximumClippingRuns;
using OfflineAnalysisPipeline::kMinimumClippingRunFrames;

void ClippingRunFinder::process(std::uint32_t channel, const float* samples, std::size_t startFrame,
                                std::size_t frameCount, float peak) {
  if (frameCount == 0) return;
  if (peak < kClippingThreshold) {
    close(channel);
    return;
  }
  constexpr std::size_t kWord = 64;
  for (std::size_t i = 0; i < frameCount; i += kWord)
    take(channel, static_cast<std::int64_t>(startFrame + i), std::min(kWord, frameCount - i),
         SignalKernels::loudSamples(samples + i, std::min(kWord, frameCount - i),
                                    kClippingThreshold));
}

void ClippingRunFinder::take(std::uint32_t channel, std::int64_t startFrame, std::size_t frameCount,
                             std::uint64_t clipped) {
  OpenRun& run = openRuns_[channel];
  for (std::size_t i = 0; i < frameCount;) {
    const std::uint64_t rest = clipped >> i;
    const std::size_t left = frameCount - i;
    if ((rest & 1) != 0) {
      const auto length = std::min(left, static_cast<std::size_t>(std::countr_one(rest)));
      if (run.frameCount == 0) run.startFrame = startFrame + static_cast<std::int64_t>(i);
      run.frameCount += static_cast<std::int64_t>(length);
      i += length;
    } else {
      if (run.frameCount > 0) close(channel);
      i += std::min(left, static_cast<std::size_t>(std::countr_zero(rest)));
    }
  }
}

void ClippingRunFinder::close(std::uint32_t channel) {
  OpenRun& run = openRuns_[channel];
  if (run.frameCount >= kMinimumClippingRunFrames) {
    ++count;
    if (runs.size() < kMaximumClippingRuns)
      runs.push_back({channel, run.startFrame, run.frameCount});
  }
  run = {};
}

void ClippingRunFinder::finish() {
  for (std::size_t channel = 0; channel < openRuns_.size(); ++channel)
    close(static_cast<std::uint32_t>(channel));
  std::sort(runs.begin(), runs.end(), [](const ClippingRun& a, const ClippingRun& b) {
    return std::tie(a.startFrame, a.channel) < std::tie(b.startFrame, b.channel);
  });
}

}  // namespace orvane
