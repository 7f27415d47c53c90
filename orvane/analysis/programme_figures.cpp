#include "orvane/analysis/programme_figures.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "orvane/core/decibels.h"
#include "orvane/core/loudness/dr_processor.h"

namespace orvane {
namespace {

/// Peaks and mean squares are not taken below this before their logarithms.
constexpr double kStatisticsFloor = 1e-12;

constexpr float kSilence = -std::numeric_limits<float>::infinity();

/// A value not below the floor; NaN stays NaN, so that a broken channel does not look silent.
double floored(double value) {
  return value < kStatisticsFloor ? kStatisticsFloor : value;
}

void fillLoudness(const core::LoudnessProcessor& loudness, ProgrammeFigures& figures) {
  figures.integratedLUFS = loudness.integratedLUFS();
  figures.loudnessRange = loudness.loudnessRange();
  figures.truePeakDB = loudness.truePeakDB();
  figures.channelTruePeakDB = loudness.channelTruePeaksDB();
  figures.speechGatedLUFS = loudness.speechGatedLUFS();
  figures.speechPercentage = loudness.speechPercentage();
  figures.history = loudness.history();
  figures.maxMomentaryLUFS = kSilence;
  figures.maxShortTermLUFS = kSilence;
  for (const auto& entry : figures.history) {
    if (std::isfinite(entry.momentary))
      figures.maxMomentaryLUFS = std::max(figures.maxMomentaryLUFS, entry.momentary);
    if (std::isfinite(entry.shortTerm))
      figures.maxShortTermLUFS = std::max(figures.maxShortTermLUFS, entry.shortTerm);
  }
}

void fillChannels(const ProgrammeStatistics& statistics, double frames, ProgrammeFigures& figures) {
  float highestPeak = 0;
  std::vector<double> channelDR;
  for (std::size_t channel = 0; channel < statistics.channels.size(); ++channel) {
    const auto& run = statistics.channels[channel];
    const auto peakDB =
        static_cast<float>(20.0 * std::log10(floored(static_cast<double>(run.peak))));
    const auto rmsDB =
        static_cast<float>(20.0 * std::log10(std::sqrt(floored(run.sumOfSquares / frames))));
    figures.channelPeakDB.push_back(peakDB);
    figures.channelRMSDB.push_back(rmsDB);
    figures.channelCrestFactorDB.push_back(peakDB - rmsDB);
    figures.channelDCOffset.push_back(static_cast<float>(run.sum / frames));
    figures.channelHasClipping.push_back(run.peak >= OfflineAnalysisPipeline::kClippingThreshold);
    highestPeak = std::max(highestPeak, run.peak);
    channelDR.push_back(core::DRProcessor::channelDR(statistics.drBlocks[channel]));
    figures.channelDR.push_back(core::DRProcessor::score({&channelDR.back(), 1}));
  }
  figures.samplePeakDB = core::linearToDB(highestPeak);
  figures.dynamicRange = core::DRProcessor::score(channelDR);
}

}  // namespace

ProgrammeFigures figuresOf(const ProgrammeMeasurement& measurement) {
  ProgrammeFigures figures;
  fillLoudness(measurement.loudness, figures);
  fillChannels(measurement.statistics, static_cast<double>(measurement.frameCount), figures);
  return figures;
}

}  // namespace orvane
