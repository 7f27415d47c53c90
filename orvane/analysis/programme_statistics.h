#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/analysis/programme_view.h"
#include "orvane/core/dr_processor.h"
#include "orvane/platform/export.h"
#include "orvane/platform/signal_kernels.h"

namespace orvane {

/// What one pass over a buffer gives beside loudness and true peak.
struct ProgrammeStatistics {
  std::vector<SignalKernels::RunStatistics> channels{};           ///< of the whole programme
  std::vector<std::vector<core::DRProcessor::Block>> drBlocks{};  ///< per channel
  std::vector<StereoWidthCurvePoint> stereoWidthCurve{};
  std::vector<OfflineAnalysisPipeline::ClippingRun> clippingRuns{};
  std::int64_t clippingRunCount = 0;
  std::int64_t nonFiniteSampleCount = 0;
};

/// Measures a stretch in one pass, so that an hour of audio is read from memory once. The stereo
/// curve is made when asked for and there are two channels: one point per window of trunc(sample
/// rate × 0.1) frames over the first two channels, a trailing partial window dropped. `onProgress`,
/// when set, is called now and then with the frames done; it may throw to stop.
ORVANE_TESTING_API ProgrammeStatistics
measureProgrammeStatistics(const ProgrammeView& programme, bool computeStereoWidth,
                           const std::function<void(std::size_t)>& onProgress = {});

}  // namespace orvane
