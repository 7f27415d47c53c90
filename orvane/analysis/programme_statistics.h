#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "orvane/analysis/clipping_run_finder.h"
#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/analysis/programme_quality_meter.h"
#include "orvane/core/loudness/dr_processor.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"
#include "orvane/platform/signal_kernels.h"

namespace orvane {

/// What one pass over a programme gives beside loudness and true peak.
struct ProgrammeStatistics {
  std::vector<SignalKernels::RunStatistics> channels{};           ///< of the whole programme
  std::vector<std::vector<core::DRProcessor::Block>> drBlocks{};  ///< per channel
  std::vector<StereoWidthCurvePoint> stereoWidthCurve{};
  std::vector<OfflineAnalysisPipeline::ClippingRun> clippingRuns{};
  std::int64_t clippingRunCount = 0;
  std::int64_t nonFiniteSampleCount = 0;
  ProgrammeQuality quality{};
};

/// Gathers a programme's statistics in one pass. The figures do not depend on how the programme is
/// cut where the cuts lie at multiples of `kPieceFrames`.
class ORVANE_TESTING_API ProgrammeStatisticsMeter {
 public:
  /// Pieces are measured whole at most this long: short enough to be rescanned for clipping from
  /// the cache.
  static constexpr std::size_t kPieceFrames = 8192;

  /// The stereo curve is made when asked for and there are two channels: one point per window of
  /// trunc(sample rate × 0.1) frames over the first two channels, a trailing partial window
  /// dropped. `storedBits` as in `ProgrammeQualityMeter`.
  ProgrammeStatisticsMeter(double sampleRate, std::size_t channelCount, bool computeStereoWidth,
                           int storedBits = 0);

  /// The next frames.
  void process(PlanarView audio);

  /// Ends the programme.
  ProgrammeStatistics finish();

 private:
  std::size_t pieceEnd() const;
  void measurePiece(PlanarView piece);
  void takePiece(std::size_t channel, const float* samples, std::size_t frames,
                 const SignalKernels::RunStatistics& piece);
  void closeBlock(std::size_t frames);
  void closeWindow();

  std::size_t drFrames_;
  std::size_t windowFrames_ = 0;  ///< 0: no stereo curve
  std::size_t position_ = 0;      ///< frames measured
  ClippingRunFinder clipping_;
  ProgrammeQualityMeter quality_;
  std::vector<SignalKernels::RunStatistics> drBlock_;
  std::vector<float> piecePeaks_;  ///< per channel
  SignalKernels::PairStatistics window_{};
  SignalKernels::PairStatistics stereo_{};  ///< of all windows
  ProgrammeStatistics result_{};
};

}  // namespace orvane
