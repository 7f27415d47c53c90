#include "orvane/analysis/offline_analysis_pipeline.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>

#include "orvane/analysis/programme_statistics.h"
#include "orvane/audio/audio_source_reader.h"
#include "orvane/core/channel_order.h"
#include "orvane/core/decibels.h"
#include "orvane/core/dr_processor.h"
#include "orvane/core/loudness_processor.h"
#include "orvane/platform/parallel.h"
#include "orvane/platform/stage_progress.h"

namespace orvane::OfflineAnalysisPipeline {
namespace {

/// Frames that a meter takes at a time, between two looks at the observer: about a minute and a
/// half at 48 kHz. Longer pieces measure no faster.
constexpr std::size_t kSliceFrames = std::size_t{1} << 22;

/// Peaks and mean squares are not taken below this before their logarithms.
constexpr double kStatisticsFloor = 1e-12;

constexpr float kSilence = -std::numeric_limits<float>::infinity();

using Channels = std::vector<const float*>;

/// Offers a buffer to a meter slice by slice.
void inSlices(const PCMBuffer& buffer, StageProgress& progress,
              const std::function<void(const Channels&, std::size_t)>& meter) {
  const std::size_t frames = buffer.frameLength();
  Channels channels = buffer.constChannels();
  for (std::size_t offset = 0; offset < frames; offset += kSliceFrames) {
    const std::size_t count = std::min(kSliceFrames, frames - offset);
    meter(channels, count);
    for (const float*& channel : channels) channel += count;
    progress.advance(count);
  }
}

/// Runs the loudness meter, the true-peak meter and the statistics over the buffer.
ProgrammeStatistics measure(const PCMBuffer& buffer, bool computeStereoWidth,
                            const Execution& execution, core::LoudnessProcessor& processor) {
  const std::size_t frames = buffer.frameLength();
  StageProgress progress(execution.observer, "Measuring", 3 * frames);
  ProgrammeStatistics statistics;
  const std::array<std::function<void()>, 3> tasks = {
      [&] {
        inSlices(buffer, progress, [&](const Channels& channels, std::size_t count) {
          processor.process(channels, count);
        });
      },
      [&] {
        std::size_t reported = 0;
        statistics =
            measureProgrammeStatistics(buffer, computeStereoWidth, [&](std::size_t framesDone) {
              if (framesDone - reported < kSliceFrames && framesDone < frames) return;
              progress.advance(framesDone - reported);
              reported = framesDone;
            });
      },
      [&] {
        inSlices(buffer, progress, [&](const Channels& channels, std::size_t count) {
          processor.updateTruePeak(channels, count);
        });
      }};
  parallelFor(execution.threadCount, tasks.size(), [&](std::size_t task) { tasks[task](); });
  processor.flushPartialBlock();
  return statistics;
}

void fillLoudness(const core::LoudnessProcessor& processor, Result& result) {
  result.integratedLUFS = processor.integratedLUFS();
  result.loudnessRange = processor.loudnessRange();
  result.truePeakDB = processor.truePeakDB();
  result.speechGatedLUFS = processor.speechGatedLUFS();
  result.speechPercentage = processor.speechPercentage();

  result.maxMomentaryLUFS = kSilence;
  result.maxShortTermLUFS = kSilence;
  const auto history = processor.history();
  result.loudnessCurve.reserve(history.size());
  for (std::size_t k = 1; k <= history.size(); ++k) {
    const auto& entry = history[k - 1];
    result.loudnessCurve.push_back(
        {static_cast<double>(k) * 0.1, entry.momentary, entry.shortTerm, entry.integrated});
    if (std::isfinite(entry.momentary))
      result.maxMomentaryLUFS = std::max(result.maxMomentaryLUFS, entry.momentary);
    if (std::isfinite(entry.shortTerm))
      result.maxShortTermLUFS = std::max(result.maxShortTermLUFS, entry.shortTerm);
  }
}

/// A value not below the floor; NaN stays NaN, so that a broken channel does not look silent.
double floored(double value) {
  return value < kStatisticsFloor ? kStatisticsFloor : value;
}

void fillStatistics(ProgrammeStatistics statistics, Result& result) {
  const auto frames = static_cast<double>(result.buffer->frameLength());
  float highestPeak = 0;
  std::vector<double> channelDR;
  for (std::size_t channel = 0; channel < statistics.channels.size(); ++channel) {
    const auto& figures = statistics.channels[channel];
    const auto peakDB =
        static_cast<float>(20.0 * std::log10(floored(static_cast<double>(figures.peak))));
    const auto rmsDB =
        static_cast<float>(20.0 * std::log10(std::sqrt(floored(figures.sumOfSquares / frames))));
    result.channelPeakDB.push_back(peakDB);
    result.channelRMSDB.push_back(rmsDB);
    result.channelCrestFactorDB.push_back(peakDB - rmsDB);
    result.channelDCOffset.push_back(static_cast<float>(figures.sum / frames));
    result.channelHasClipping.push_back(figures.peak >= kClippingThreshold);
    highestPeak = std::max(highestPeak, figures.peak);
    channelDR.push_back(core::DRProcessor::channelDR(statistics.drBlocks[channel]));
  }
  result.samplePeakDB = core::linearToDB(highestPeak);
  result.dynamicRange = core::DRProcessor::score(channelDR);
  result.stereoWidthCurve = std::move(statistics.stereoWidthCurve);
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

  core::LoudnessProcessor processor(buffer.sampleRate(), buffer.channelCount(), std::nullopt,
                                    core::ChannelOrder::bs1770Weights(buffer));
  processor.isRecording = true;
  ProgrammeStatistics statistics =
      measure(buffer, options.computeStereoWidth, execution, processor);

  if (detail != nullptr) {
    detail->blockPowers = processor.blockPowers();
    detail->warnings = std::move(warnings);
    detail->nonFiniteSampleCount = statistics.nonFiniteSampleCount;
    detail->clippingRuns = std::move(statistics.clippingRuns);
    detail->clippingRunCount = statistics.clippingRunCount;
  }
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
  fillLoudness(processor, result);
  fillStatistics(std::move(statistics), result);
  return result;
}

}  // namespace orvane::OfflineAnalysisPipeline
