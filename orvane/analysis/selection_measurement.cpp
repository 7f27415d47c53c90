#include "orvane/analysis/selection_measurement.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "orvane/analysis/magnitude_spectrum.h"
#include "orvane/analysis/programme_figures.h"
#include "orvane/analysis/programme_measurement.h"
#include "orvane/analysis/programme_view.h"
#include "orvane/core/decibels.h"
#include "orvane/core/loudness/loudness_grid.h"
#include "orvane/core/loudness/loudness_measurement.h"
#include "orvane/core/peak/true_peak_meter.h"
#include "orvane/platform/signal_kernels.h"
#include "orvane/speech/dialogue/dialogue_region.h"

namespace orvane::SelectionMeasurement {
namespace {

using TimedLevel = SelectionAnalysisResult::TimedLevel;
using Flags = std::optional<std::vector<bool>>;

using core::LoudnessGrid::kStepSeconds;
/// Blocks without speech that make a noise floor: half a second of them.
constexpr std::size_t kMinimumNoiseBlocks = 5;
constexpr float kSilence = -std::numeric_limits<float>::infinity();

/// A stretch of a buffer with the speech flags that belong to it.
struct Stretch {
  ProgrammeView view;
  double startSeconds;
  std::size_t stepFrames;
  Flags speech;
};

std::optional<Stretch> stretchOf(const PCMBuffer& buffer, std::int64_t startFrame,
                                 std::int64_t endFrame, const Flags& fileSpeechHistory,
                                 bool dualMono) {
  const auto length = static_cast<std::int64_t>(buffer.frameLength());
  startFrame = std::clamp<std::int64_t>(startFrame, 0, length);
  endFrame = std::clamp<std::int64_t>(endFrame, 0, length);
  if (endFrame <= startFrame || buffer.channelCount() == 0) return std::nullopt;
  const std::int64_t count = endFrame - startFrame;
  const double rate = buffer.sampleRate();
  return Stretch{
      .view = ProgrammeView::of(buffer, static_cast<std::size_t>(startFrame),
                                static_cast<std::size_t>(count), dualMono),
      .startSeconds = static_cast<double>(startFrame) / rate,
      .stepFrames =
          static_cast<std::size_t>(std::max(1.0, std::round(std::min(rate, 1e12) * kStepSeconds))),
      .speech = fileSpeechHistory
                    ? DialogueRegion::sliceHistory(*fileSpeechHistory, startFrame, count, rate)
                    : std::nullopt};
}

/// Energy mean of the blocks without speech, mean over the channels, in dB.
float noiseFloorOf(const Stretch& stretch) {
  if (!stretch.speech) return kSilence;
  double sum = 0;
  std::size_t blocks = 0;
  for (std::size_t block = 0; block < stretch.speech->size(); ++block) {
    const std::size_t begin = block * stretch.stepFrames;
    if ((*stretch.speech)[block] || begin >= stretch.view.audio.frameCount()) continue;
    const std::size_t frames =
        std::min(stretch.stepFrames, stretch.view.audio.frameCount() - begin);
    for (std::size_t channel = 0; channel < stretch.view.audio.channelCount(); ++channel)
      sum += SignalKernels::runStatistics(stretch.view.audio.channel(channel) + begin, frames)
                 .sumOfSquares /
             static_cast<double>(frames);
    ++blocks;
  }
  if (blocks < kMinimumNoiseBlocks) return kSilence;
  const auto values = static_cast<double>(blocks * stretch.view.audio.channelCount());
  return static_cast<float>(core::linearToDB(std::sqrt(sum / values)));
}

std::vector<TimedLevel> truePeakCurveOf(const Stretch& stretch) {
  std::vector<TimedLevel> curve;
  core::TruePeakMeter meter(stretch.view.sampleRate, stretch.view.audio.channelCount());
  for (std::size_t begin = 0; begin < stretch.view.audio.frameCount();
       begin += stretch.stepFrames) {
    const std::size_t frames =
        std::min(stretch.stepFrames, stretch.view.audio.frameCount() - begin);
    meter.process(stretch.view.audio.slice(begin, frames));
    if (begin + frames == stretch.view.audio.frameCount()) meter.flush();
    const auto peaks = meter.peaks();
    const double time = stretch.startSeconds + static_cast<double>(curve.size() + 1) * kStepSeconds;
    curve.push_back({time, core::linearToDB(*std::max_element(peaks.begin(), peaks.end()))});
    meter.resetPeaks();
  }
  return curve;
}

std::vector<ClosedTimeRange> speechRangesOf(const Stretch& stretch) {
  std::vector<ClosedTimeRange> ranges;
  if (!stretch.speech) return ranges;
  const double end = stretch.startSeconds +
                     static_cast<double>(stretch.view.audio.frameCount()) / stretch.view.sampleRate;
  for (const auto& region : DialogueRegion::fromHistory(*stretch.speech))
    ranges.push_back(
        {stretch.startSeconds + region.start, std::min(stretch.startSeconds + region.end, end)});
  return ranges;
}

void fillCurves(const ProgrammeFigures& figures, double startSeconds,
                SelectionAnalysisResult& result) {
  for (std::size_t i = 0; i < figures.history.size(); ++i) {
    const double time = startSeconds + static_cast<double>(i + 1) * kStepSeconds;
    result.momentaryCurve.push_back({time, figures.history[i].momentary});
    result.shortTermCurve.push_back({time, figures.history[i].shortTerm});
    result.integratedCurve.push_back({time, figures.history[i].integrated});
  }
}

ProgrammeFigures measureFigures(const Stretch& stretch, const Execution& execution) {
  auto measurement = measureProgramme(stretch.view, false, execution);
  measurement.loudness.setSpeechHistory(stretch.speech);
  return figuresOf(measurement);
}

std::optional<float> finite(float value) {
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<SelectionAnalysisResult> measure(const PCMBuffer& buffer, std::int64_t startFrame,
                                               std::int64_t endFrame,
                                               const Flags& fileSpeechHistory,
                                               const Execution& execution, bool dualMono) {
  const auto stretch = stretchOf(buffer, startFrame, endFrame, fileSpeechHistory, dualMono);
  if (!stretch) return std::nullopt;
  ProgrammeFigures figures = measureFigures(*stretch, execution);
  MagnitudeSpectra spectra = magnitudeSpectra(stretch->view);

  SelectionAnalysisResult result;
  const double seconds =
      static_cast<double>(stretch->view.audio.frameCount()) / stretch->view.sampleRate;
  result.timeRange = {stretch->startSeconds, stretch->startSeconds + seconds};
  result.samplePeakDB = figures.samplePeakDB;
  result.headroomDB = -figures.samplePeakDB;
  result.dynamicRange = figures.dynamicRange;
  result.integratedLUFS = figures.integratedLUFS;
  result.loudnessRange = figures.loudnessRange;
  result.truePeakDB = figures.truePeakDB;
  result.speechGatedLUFS = figures.speechGatedLUFS;
  result.speechPercentage = figures.speechPercentage;
  result.speechGatedNoiseFloorDBRMS = noiseFloorOf(*stretch);
  result.speechRanges = speechRangesOf(*stretch);
  result.truePeakCurve = truePeakCurveOf(*stretch);
  result.sampleRate = stretch->view.sampleRate;
  result.maxMomentaryLUFS = figures.maxMomentaryLUFS;
  result.maxShortTermLUFS = figures.maxShortTermLUFS;
  fillCurves(figures, stretch->startSeconds, result);
  result.fftSize = static_cast<std::int64_t>(spectra.fftSize);
  result.fftMagnitudes = std::move(spectra.channels);
  if (spectra.midSide)
    result.msFftMagnitudes = {std::move(spectra.midSide->first),
                              std::move(spectra.midSide->second)};
  result.peakDB = std::move(figures.channelPeakDB);
  result.truePeakDBByChannel = std::move(figures.channelTruePeakDB);
  result.rmsDB = std::move(figures.channelRMSDB);
  result.crestFactorDB = std::move(figures.channelCrestFactorDB);
  result.dcOffset = std::move(figures.channelDCOffset);
  result.channelDR = std::move(figures.channelDR);
  return result;
}

core::Chapter measureChapter(const PCMBuffer& buffer, const ChapterSpan& span,
                             const Flags& fileSpeechHistory, const Execution& execution,
                             bool dualMono) {
  core::Chapter chapter{
      .index = span.index, .name = span.name, .startSec = span.startSec, .endSec = span.endSec};
  // Clamped before they are made whole: chapter lists come from files.
  const auto frameAt = [&buffer](double seconds) {
    const auto length = static_cast<double>(buffer.frameLength());
    const double frame = std::round(seconds * buffer.sampleRate());
    return static_cast<std::int64_t>(frame > 0 ? std::min(frame, length) : 0.0);
  };
  const auto stretch =
      stretchOf(buffer, frameAt(span.startSec), frameAt(span.endSec), fileSpeechHistory, dualMono);
  if (!stretch) return chapter;
  const ProgrammeFigures figures = measureFigures(*stretch, execution);
  chapter.integratedLUFS = figures.integratedLUFS;
  chapter.rmsDBFS = core::LoudnessMeasurement::programRMSDBFS(figures.channelRMSDB);
  chapter.truePeakDBTP = figures.truePeakDB;
  chapter.samplePeakDBFS = figures.samplePeakDB;
  chapter.loudnessRange = figures.loudnessRange;
  chapter.maxMomentaryLUFS = figures.maxMomentaryLUFS;
  chapter.maxShortTermLUFS = figures.maxShortTermLUFS;
  chapter.speechGatedLUFS = finite(figures.speechGatedLUFS);
  chapter.noiseFloorDBRMS = finite(noiseFloorOf(*stretch));
  if (stretch->speech) chapter.speechPercentage = figures.speechPercentage / 100.0F;
  return chapter;
}

}  // namespace orvane::SelectionMeasurement
