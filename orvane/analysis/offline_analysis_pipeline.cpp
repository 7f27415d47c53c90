#include "orvane/analysis/offline_analysis_pipeline.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orvane/analysis/programme_figures.h"
#include "orvane/analysis/programme_measurement.h"
#include "orvane/audio/audio_source_reader.h"
#include "orvane/speech/silero_vad_analyser.h"

namespace orvane::OfflineAnalysisPipeline {
namespace {

/// The regions, each narrower by far less than a sample at either end. Block edges have no exact
/// binary form, so an edge that stands on one may lie a hair beyond it and would make the
/// neighbouring block count as touched: the detector's own regions would gate other blocks than it.
std::vector<DialogueRegion> withoutTouchingNeighbours(std::vector<DialogueRegion> regions) {
  constexpr double kHair = 1e-9;  // seconds
  for (auto& region : regions) {
    if (region.duration() <= 2 * kHair) continue;
    region.start += kHair;
    region.end -= kHair;
  }
  return regions;
}

/// Speech flags for the whole file: from the caller's regions, else from the detector.
std::optional<std::vector<bool>> speechHistoryOf(const PCMBuffer& buffer, const Options& options,
                                                 const Execution& execution) {
  if (execution.dialogueRegions) {
    const double seconds = static_cast<double>(buffer.frameLength()) / buffer.sampleRate();
    const auto blocks = std::max(1LL, std::llround(seconds / DialogueRegion::blockDuration));
    return DialogueRegion::toHistory(withoutTouchingNeighbours(*execution.dialogueRegions), blocks);
  }
  if (!options.enableSileroVAD) return std::nullopt;
  const auto input = SileroVADAnalyser::prepareInput(buffer, execution.threadCount);
  if (!input) return std::nullopt;
  return SileroVADAnalyser::shared().classify(
      *input, options.vadTuning,
      {.threadCount = execution.threadCount, .observer = execution.observer});
}

std::vector<LoudnessCurvePoint> curveOf(const std::vector<core::LoudnessHistoryEntry>& history) {
  std::vector<LoudnessCurvePoint> curve;
  curve.reserve(history.size());
  for (const auto& entry : history)
    curve.push_back({static_cast<double>(curve.size() + 1) * 0.1, entry.momentary, entry.shortTerm,
                     entry.integrated});
  return curve;
}

void fill(Result& result, ProgrammeFigures figures) {
  result.integratedLUFS = figures.integratedLUFS;
  result.loudnessRange = figures.loudnessRange;
  result.truePeakDB = figures.truePeakDB;
  result.samplePeakDB = figures.samplePeakDB;
  result.maxMomentaryLUFS = figures.maxMomentaryLUFS;
  result.maxShortTermLUFS = figures.maxShortTermLUFS;
  result.dynamicRange = figures.dynamicRange;
  result.speechGatedLUFS = figures.speechGatedLUFS;
  result.speechPercentage = figures.speechPercentage;
  result.loudnessCurve = curveOf(figures.history);
  result.channelPeakDB = std::move(figures.channelPeakDB);
  result.channelRMSDB = std::move(figures.channelRMSDB);
  result.channelCrestFactorDB = std::move(figures.channelCrestFactorDB);
  result.channelDCOffset = std::move(figures.channelDCOffset);
  result.channelHasClipping = std::move(figures.channelHasClipping);
}

std::int64_t sizeOnDisk(const std::filesystem::path& url) {
  std::error_code error;
  const auto size = std::filesystem::file_size(url, error);
  return error ? 0 : static_cast<std::int64_t>(size);
}

}  // namespace

Result analyzeFile(const std::filesystem::path& url, const Options& options) {
  return analyzeFile(url, options, Execution{});
}

Result analyzeFile(const std::filesystem::path& url, const Options& options,
                   const Execution& execution, AnalysisDetail* detail) {
  std::vector<AudioFileWarning> warnings;
  auto loaded = AudioSourceReader::load(url, options.rawFormat,
                                        {.threadCount = execution.threadCount,
                                         .observer = execution.observer,
                                         .streamIndex = execution.streamIndex,
                                         .warnings = &warnings});
  const PCMBuffer& buffer = *loaded.buffer;
  if (buffer.channelCount() == 0 || buffer.frameLength() == 0)
    throw AudioSourceReader::Failure(AudioSourceReader::Failure::Case::empty, url);

  // Speech flags choose among finished gating blocks, so that they may come last: a caller that
  // has to wait for the detector has measured everything else meanwhile.
  ProgrammeMeasurement measurement =
      measureProgramme(ProgrammeView::of(buffer), options.computeStereoWidth, execution.threadCount,
                       execution.observer);
  auto speechHistory = speechHistoryOf(buffer, options, execution);
  measurement.loudness.setSpeechHistory(speechHistory);

  Result result;
  result.url = url;
  result.sampleRate = buffer.sampleRate();
  result.channelCount = buffer.channelCount();
  result.durationSeconds = static_cast<double>(buffer.frameLength()) / buffer.sampleRate();
  result.fileFormat = std::move(loaded.fileFormatLabel);
  result.fileSize = sizeOnDisk(url);
  result.bitDepth = loaded.bitDepth;
  result.rawFormat = loaded.rawFormat;
  result.buffer = std::move(loaded.buffer);
  result.speechHistory = std::move(speechHistory);
  fill(result, figuresOf(measurement, result.buffer->frameLength()));
  result.stereoWidthCurve = std::move(measurement.statistics.stereoWidthCurve);

  if (detail != nullptr) {
    detail->blockPowers = measurement.loudness.blockPowers();
    detail->warnings = std::move(warnings);
    detail->isSpeechDetectionMissing = options.enableSileroVAD && !result.speechHistory;
    detail->nonFiniteSampleCount = measurement.statistics.nonFiniteSampleCount;
    detail->clippingRuns = std::move(measurement.statistics.clippingRuns);
    detail->clippingRunCount = measurement.statistics.clippingRunCount;
  }
  return result;
}

}  // namespace orvane::OfflineAnalysisPipeline
