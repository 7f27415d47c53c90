#include "orvane/analysis/offline_analysis_pipeline.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orvane/analysis/programme_figures.h"
#include "orvane/analysis/programme_measurement.h"
#include "orvane/analysis/programme_summary.h"
#include "orvane/audio/audio_source.h"
#include "orvane/audio/audio_source_reader.h"
#include "orvane/core/loudness/loudness_grid.h"
#include "orvane/speech/detector/silero_vad_analyser.h"
#include "orvane/speech/detector/speech_input_maker.h"

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

using SpeechHistory = std::optional<std::vector<bool>>;

/// What one reading of a source gives.
struct MeasuredSource {
  std::shared_ptr<PCMBuffer> buffer{};  ///< when it is kept
  ProgrammeMeasurement measurement;
  SpeechHistory speechHistory{};  ///< when speech is detected
};

MeasuredSource measureLoaded(AudioSource& source, const Options& options, bool isSpeechWanted,
                             const Choices& choices) {
  auto buffer = source.load();
  auto measurement =
      measureProgramme(ProgrammeView::of(*buffer, choices.dualMono), options.computeStereoWidth,
                       choices.execution, storedBits(source));
  SpeechHistory speechHistory;
  if (isSpeechWanted)
    if (const auto input = SileroVADAnalyser::prepareInput(*buffer, choices.execution.threadCount))
      speechHistory =
          SileroVADAnalyser::shared().classify(*input, options.vadTuning, choices.execution);
  return {std::move(buffer), std::move(measurement), std::move(speechHistory)};
}

MeasuredSource measureInPassing(AudioSource& source, const Options& options, bool isSpeechWanted,
                                const Choices& choices) {
  const AudioFormat& format = source.format();
  const auto speech = isSpeechWanted
                          ? SileroVADAnalyser::shared().begin(
                                format.sampleRate, format.channelCount, options.vadTuning)
                          : nullptr;
  auto measurement = measureProgramme(source, options.computeStereoWidth, choices.dualMono,
                                      choices.execution, speech.get());
  return {.measurement = std::move(measurement),
          .speechHistory = speech ? speech->finish() : std::nullopt};
}

/// The flags of a caller's regions.
std::vector<bool> historyOf(const std::vector<DialogueRegion>& regions, double durationSeconds) {
  const auto blocks = std::max(1LL, std::llround(durationSeconds / DialogueRegion::blockDuration));
  return DialogueRegion::toHistory(withoutTouchingNeighbours(regions), blocks);
}

std::vector<LoudnessCurvePoint> curveOf(const std::vector<core::LoudnessHistoryEntry>& history) {
  std::vector<LoudnessCurvePoint> curve;
  curve.reserve(history.size());
  for (const auto& entry : history)
    curve.push_back({core::LoudnessGrid::stepEnd(static_cast<std::int64_t>(curve.size())),
                     entry.momentary, entry.shortTerm, entry.integrated});
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
  return analyzeFile(url, options, Choices{});
}

Result analyzeFile(const std::filesystem::path& url, const Options& options, const Choices& choices,
                   AnalysisDetail* detail) {
  const auto source = AudioSource::open(
      url, options.rawFormat, {.streamIndex = choices.streamIndex, .execution = choices.execution});
  return analyze(*source, options, choices, detail);
}

Result analyze(AudioSource& source, const Options& options, const Choices& choices,
               AnalysisDetail* detail) {
  const bool isSpeechWanted = options.enableSileroVAD && !choices.dialogueRegions;
  auto measured = (choices.keepsBuffer ? measureLoaded : measureInPassing)(source, options,
                                                                           isSpeechWanted, choices);
  ProgrammeMeasurement& measurement = measured.measurement;
  if (measurement.frameCount == 0)
    throw AudioSourceReader::Failure(AudioSourceReader::Failure::Case::empty, source.url());

  Result result;
  result.sampleRate = source.format().sampleRate;
  result.durationSeconds = static_cast<double>(measurement.frameCount) / result.sampleRate;
  SpeechHistory& speechHistory = measured.speechHistory;
  if (choices.dialogueRegions)
    speechHistory = historyOf(*choices.dialogueRegions, result.durationSeconds);
  measurement.loudness.setSpeechHistory(speechHistory);

  result.url = source.url();
  result.channelCount = source.format().channelCount;
  result.fileFormat = source.fileFormatLabel();
  result.fileSize = sizeOnDisk(source.url());
  result.bitDepth = source.bitDepth();
  result.rawFormat = source.rawFormat();
  result.buffer = std::move(measured.buffer);
  result.speechHistory = std::move(speechHistory);
  fill(result, figuresOf(measurement));
  result.stereoWidthCurve = std::move(measurement.statistics.stereoWidthCurve);

  if (detail != nullptr) {
    detail->blockPowers = measurement.loudness.blockPowers();
    detail->warnings = source.warnings();
    detail->layout = source.format().layout;
    detail->isDualMono =
        choices.dualMono && isMono(detail->layout, static_cast<std::size_t>(result.channelCount));
    detail->isSpeechDetectionMissing = options.enableSileroVAD && !result.speechHistory;
    detail->nonFiniteSampleCount = measurement.statistics.nonFiniteSampleCount;
    detail->clippingRuns = std::move(measurement.statistics.clippingRuns);
    detail->clippingRunCount = measurement.statistics.clippingRunCount;
    detail->quality = std::move(measurement.statistics.quality);
  }
  return result;
}

}  // namespace orvane::OfflineAnalysisPipeline
