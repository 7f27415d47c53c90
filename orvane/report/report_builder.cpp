#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

#include "orvane/core/loudness/loudness_measurement.h"
#include "orvane/report/orvane_report.h"
#include "orvane/report/target_verdicts.h"

namespace orvane {
namespace {

std::optional<float> finite(float value) {
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::vector<LoudnessSample> samples(const std::vector<LoudnessCurvePoint>& curve,
                                    float LoudnessCurvePoint::*level) {
  std::vector<LoudnessSample> result;
  result.reserve(curve.size());
  for (const LoudnessCurvePoint& point : curve) result.push_back({point.time, point.*level});
  return result;
}

std::vector<LoudnessSample> samples(const std::vector<SelectionAnalysisResult::TimedLevel>& curve) {
  std::vector<LoudnessSample> result;
  result.reserve(curve.size());
  for (const auto& point : curve) result.push_back({point.time, point.lufs});
  return result;
}

std::optional<float> speechPercentage(const std::optional<std::vector<bool>>& history) {
  if (!history || history->empty()) return std::nullopt;
  const auto count = std::count(history->begin(), history->end(), true);
  return static_cast<float>(static_cast<double>(count) / static_cast<double>(history->size()) *
                            100);
}

ReportFullFileLoudness fullFileLoudness(const ReportInputs& inputs,
                                        const ReportSettings& settings) {
  const auto& curve = inputs.fileLoudnessCurve;
  ReportFullFileLoudness result{
      .samplePeakDB = finite(inputs.fileSamplePeakDB),
      .truePeakDB = finite(inputs.fileTruePeakDB),
      .loudnessRange = finite(inputs.fileLoudnessRange),
      .maxMomentaryLUFS = finite(inputs.fileMaxMomentaryLUFS),
      .maxShortTermLUFS = finite(inputs.fileMaxShortTermLUFS),
      .dynamicRange = inputs.fileDynamicRange,
      .speechGatedLUFS = finite(inputs.fileSpeechGatedLUFS),
      .speechPercentage = speechPercentage(inputs.fileSpeechHistory),
  };
  if (!curve.empty()) result.integratedLUFS = finite(curve.back().integrated);
  if (settings.includeLoudnessCurve) {
    result.momentaryCurve = samples(curve, &LoudnessCurvePoint::momentary);
    result.shortTermCurve = samples(curve, &LoudnessCurvePoint::shortTerm);
    result.integratedCurve = samples(curve, &LoudnessCurvePoint::integrated);
  }
  return result;
}

std::optional<ReportSelectionLoudness> selectionLoudness(const ReportInputs& inputs,
                                                         const ReportSettings& settings) {
  if (!inputs.selectionAnalysis) return std::nullopt;
  const SelectionAnalysisResult& analysis = *inputs.selectionAnalysis;
  ReportSelectionLoudness result{
      .startTime = analysis.timeRange.lowerBound,
      .endTime = analysis.timeRange.upperBound,
      .integratedLUFS = analysis.integratedLUFS,
      .loudnessRange = analysis.loudnessRange,
      .truePeakDB = analysis.truePeakDB,
      .samplePeakDB = analysis.samplePeakDB,
      .headroomDB = analysis.headroomDB,
      .dynamicRange = analysis.dynamicRange,
      .speechGatedLUFS = analysis.speechGatedLUFS,
      .speechPercentage = analysis.speechPercentage,
      .speechGatedNoiseFloorDBRMS = analysis.speechGatedNoiseFloorDBRMS,
      .maxMomentaryLUFS = analysis.maxMomentaryLUFS,
      .maxShortTermLUFS = analysis.maxShortTermLUFS,
  };
  if (settings.includeLoudnessCurve) {
    result.momentaryCurve = samples(analysis.momentaryCurve);
    result.shortTermCurve = samples(analysis.shortTermCurve);
    result.integratedCurve = samples(analysis.integratedCurve);
  }
  return result;
}

struct WidthZone {
  float lowest;  ///< the correlation from which on it counts
  float ReportStereoWidth::*share;
};

/// A point belongs to the first zone that it reaches.
constexpr std::array<WidthZone, 5> kWidthZones = {
    {{0.95F, &ReportStereoWidth::monoPercent},
     {0.5F, &ReportStereoWidth::narrowPercent},
     {0.0F, &ReportStereoWidth::stereoPercent},
     {-0.5F, &ReportStereoWidth::widePercent},
     {-std::numeric_limits<float>::infinity(), &ReportStereoWidth::outOfPhasePercent}}};

std::size_t widthZoneIndex(float correlation) {
  std::size_t index = 0;
  while (index + 1 < kWidthZones.size() && !(correlation >= kWidthZones[index].lowest)) ++index;
  return index;
}

std::optional<ReportStereoWidth> measuredWidth(const ReportInputs& inputs,
                                               const ReportSettings& settings) {
  const auto& curve = inputs.fileStereoWidthCurve;
  if (!settings.includeStereoWidth || inputs.fileInfo.channelCount < 2 || curve.empty())
    return std::nullopt;
  ReportStereoWidth result;
  result.curve.reserve(curve.size());
  double sum = 0;
  std::array<std::size_t, kWidthZones.size()> counts{};
  for (const StereoWidthCurvePoint& point : curve) {
    result.curve.push_back({point.time, point.correlation});
    sum += static_cast<double>(point.correlation);
    ++counts[widthZoneIndex(point.correlation)];
  }
  const auto count = static_cast<double>(curve.size());
  result.averageCorrelation = static_cast<float>(sum / count);
  for (std::size_t i = 0; i < kWidthZones.size(); ++i)
    result.*kWidthZones[i].share = static_cast<float>(static_cast<double>(counts[i]) / count * 100);
  return result;
}

template <typename Value>
Value elementOr(const std::vector<Value>& values, std::size_t index, Value fallback) {
  return index < values.size() ? Value(values[index]) : fallback;
}

const std::vector<float>& channelRMS(const ReportInputs& inputs) {
  return inputs.selectionAnalysis ? inputs.selectionAnalysis->rmsDB : inputs.fileChannelRMSDB;
}

std::vector<ReportChannel> channelRows(const ReportInputs& inputs, const ReportSettings& settings) {
  if (!settings.includeChannels) return {};
  const auto& measured = inputs.selectionAnalysis;
  const auto& peak = measured ? measured->peakDB : inputs.fileChannelPeakDB;
  const auto& crest = measured ? measured->crestFactorDB : inputs.fileChannelCrestFactorDB;
  const auto& offset = measured ? measured->dcOffset : inputs.fileChannelDCOffset;
  const auto channelCount =
      static_cast<std::size_t>(std::max<std::int64_t>(inputs.fileInfo.channelCount, 0));
  constexpr float kSilence = -std::numeric_limits<float>::infinity();

  std::vector<ReportChannel> rows;
  for (std::size_t i = 0; i < std::min(channelCount, peak.size()); ++i)
    rows.push_back({.index = static_cast<std::int64_t>(i),
                    .label = elementOr(inputs.channelLayoutLabels, i, "Ch" + std::to_string(i + 1)),
                    .peakDB = peak[i],
                    .rmsDB = elementOr(channelRMS(inputs), i, kSilence),
                    .crestFactorDB = elementOr(crest, i, 0.0F),
                    .dcOffset = elementOr(offset, i, 0.0F),
                    .hasClipping = elementOr(inputs.channelClipping, i, false)});
  return rows;
}

std::vector<ReportTimeRange> timeRanges(const std::vector<HalfOpenTimeRange>& ranges) {
  std::vector<ReportTimeRange> result;
  for (const auto& range : ranges) result.push_back({range.lowerBound, range.upperBound});
  return result;
}

std::optional<ReportViolations> markedViolations(const ReportInputs& inputs,
                                                 const ReportSettings& settings) {
  const bool hasThreshold = inputs.momentaryThreshold || inputs.shortTermThreshold;
  if (!settings.includeViolations || !inputs.violationsEnabled || !hasThreshold)
    return std::nullopt;
  return ReportViolations{
      .momentaryThreshold = inputs.momentaryThreshold,
      .shortTermThreshold = inputs.shortTermThreshold,
      .momentaryCount = static_cast<std::int64_t>(inputs.momentaryViolations.size()),
      .shortTermCount = static_cast<std::int64_t>(inputs.shortTermViolations.size()),
      .momentaryRanges = timeRanges(inputs.momentaryViolations),
      .shortTermRanges = timeRanges(inputs.shortTermViolations)};
}

ReportChapterEntry chapterEntry(const core::Chapter& chapter, std::optional<float> median) {
  ReportChapterEntry entry{.index = chapter.index,
                           .name = chapter.name,
                           .startSec = chapter.startSec,
                           .endSec = chapter.endSec,
                           .integratedLUFS = chapter.integratedLUFS,
                           .rmsDBFS = chapter.rmsDBFS,
                           .truePeakDBTP = chapter.truePeakDBTP,
                           .samplePeakDBFS = chapter.samplePeakDBFS,
                           .loudnessRange = chapter.loudnessRange,
                           .maxMomentaryLUFS = chapter.maxMomentaryLUFS,
                           .maxShortTermLUFS = chapter.maxShortTermLUFS,
                           .speechGatedLUFS = chapter.speechGatedLUFS,
                           .noiseFloorDBRMS = chapter.noiseFloorDBRMS,
                           .speechPercentage = chapter.speechPercentage};
  if (median && chapter.integratedLUFS && std::isfinite(*chapter.integratedLUFS))
    entry.deviationFromMedianLU = *chapter.integratedLUFS - *median;
  return entry;
}

std::optional<ReportChapterTable> chapterTable(const ReportInputs& inputs) {
  if (inputs.chapters.empty()) return std::nullopt;
  ReportChapterTable table{.medianLUFS = inputs.chapterMedianLUFS,
                           .deviationThresholdLU = inputs.chapterDeviationThresholdLU,
                           .origin = inputs.chapterOrigin};
  for (const core::Chapter& chapter : inputs.chapters)
    table.entries.push_back(chapterEntry(chapter, inputs.chapterMedianLUFS));
  return table;
}

}  // namespace

OrvaneReport OrvaneReport::build(const Inputs& inputs, const ReportSettings& settings) {
  OrvaneReport report{.generatedAt = currentDate(),
                      .appVersion = inputs.appVersion,
                      .file = inputs.fileInfo,
                      .fullFile = fullFileLoudness(inputs, settings),
                      .selection = selectionLoudness(inputs, settings),
                      .stereoWidth = measuredWidth(inputs, settings),
                      .channels = channelRows(inputs, settings),
                      .violations = markedViolations(inputs, settings),
                      .chapters = chapterTable(inputs),
                      .musicAnalysis = inputs.musicAnalysis,
                      .stemGatedLoudness = inputs.stemGatedLoudness};
  report.loudnessTargets.programRMSDBFS =
      finite(core::LoudnessMeasurement::programRMSDBFS(channelRMS(inputs)));
  TargetVerdicts::judge(report, inputs.loudnessTargetSelection);
  return report;
}

}  // namespace orvane
