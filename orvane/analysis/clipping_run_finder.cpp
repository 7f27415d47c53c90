#include "orvane/analysis/clipping_run_finder.h"

#include <algorithm>
#include <cmath>
#include <tuple>

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
  OpenRun& run = openRuns_[channel];
  for (std::size_t i = 0; i < frameCount; ++i) {
    if (std::fabs(samples[i]) >= kClippingThreshold) {
      if (run.frameCount == 0) run.startFrame = static_cast<std::int64_t>(startFrame + i);
      ++run.frameCount;
    } else if (run.frameCount > 0) {
      close(channel);
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
