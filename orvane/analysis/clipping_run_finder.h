#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Finds runs of clipped samples in the channels of a programme whose pieces come in order.
class ORVANE_TESTING_API ClippingRunFinder {
 public:
  explicit ClippingRunFinder(std::size_t channelCount) : openRuns_(channelCount) {}

  /// The next piece of a channel, `startFrame` frames into the programme; `peak` is its largest
  /// magnitude, so that pieces without clipping cost nothing.
  void process(std::uint32_t channel, const float* samples, std::size_t startFrame,
               std::size_t frameCount, float peak);

  /// Ends all runs. Afterwards `runs` are in order of time.
  void finish();

  std::vector<OfflineAnalysisPipeline::ClippingRun> runs{};  ///< the first ones
  std::int64_t count = 0;                                    ///< of all runs

 private:
  struct OpenRun {
    std::int64_t startFrame = 0;
    std::int64_t frameCount = 0;
  };
  /// At most 64 frames with a bit for each that is clipped.
  void take(std::uint32_t channel, std::int64_t startFrame, std::size_t frameCount,
            std::uint64_t clipped);
  void close(std::uint32_t channel);

  std::vector<OpenRun> openRuns_;
};

}  // namespace orvane
