#pragma once

#include "orvane/music/music_coding.h"
#include "orvane/rawpcm/raw_pcm_coding.h"
#include "orvane/report/orvane_report.h"
#include "orvane/text/json/json_coding.h"

// JSON forms of the report and its parts.
namespace orvane::json {

template <>
struct Coding<ReportFileInfo> {
  using Record = ReportFileInfo;
  static constexpr std::tuple fields{
      Field{"fileName", &Record::fileName},         Field{"filePath", &Record::filePath},
      Field{"fileFormat", &Record::fileFormat},     Field{"fileSize", &Record::fileSize},
      Field{"duration", &Record::duration},         Field{"sampleRate", &Record::sampleRate},
      Field{"channelCount", &Record::channelCount}, Field{"channelLayout", &Record::channelLayout},
      Field{"bitDepth", &Record::bitDepth},         Field{"rawFormat", &Record::rawFormat}};
};

template <>
struct Coding<LoudnessSample> {
  using Record = LoudnessSample;
  static constexpr std::tuple fields{Field{"time", &Record::time}, Field{"lufs", &Record::lufs}};
};

template <>
struct Coding<ReportFullFileLoudness> {
  using Record = ReportFullFileLoudness;
  static constexpr std::tuple fields{Field{"integratedLUFS", &Record::integratedLUFS},
                                     Field{"samplePeakDB", &Record::samplePeakDB},
                                     Field{"truePeakDB", &Record::truePeakDB},
                                     Field{"loudnessRange", &Record::loudnessRange},
                                     Field{"maxMomentaryLUFS", &Record::maxMomentaryLUFS},
                                     Field{"maxShortTermLUFS", &Record::maxShortTermLUFS},
                                     Field{"dynamicRange", &Record::dynamicRange},
                                     Field{"speechGatedLUFS", &Record::speechGatedLUFS},
                                     Field{"speechPercentage", &Record::speechPercentage},
                                     Field{"momentaryCurve", &Record::momentaryCurve},
                                     Field{"shortTermCurve", &Record::shortTermCurve},
                                     Field{"integratedCurve", &Record::integratedCurve}};
};

template <>
struct Coding<ReportSelectionLoudness> {
  using Record = ReportSelectionLoudness;
  static constexpr std::tuple fields{
      Field{"startTime", &Record::startTime},
      Field{"endTime", &Record::endTime},
      Field{"integratedLUFS", &Record::integratedLUFS},
      Field{"loudnessRange", &Record::loudnessRange},
      Field{"truePeakDB", &Record::truePeakDB},
      Field{"samplePeakDB", &Record::samplePeakDB},
      Field{"headroomDB", &Record::headroomDB},
      Field{"dynamicRange", &Record::dynamicRange},
      Field{"speechGatedLUFS", &Record::speechGatedLUFS},
      Field{"speechPercentage", &Record::speechPercentage},
      Field{"speechGatedNoiseFloorDBRMS", &Record::speechGatedNoiseFloorDBRMS},
      Field{"maxMomentaryLUFS", &Record::maxMomentaryLUFS},
      Field{"maxShortTermLUFS", &Record::maxShortTermLUFS},
      Field{"momentaryCurve", &Record::momentaryCurve},
      Field{"shortTermCurve", &Record::shortTermCurve},
      Field{"integratedCurve", &Record::integratedCurve}};
};

template <>
struct Coding<LoudnessCurvePoint> {
  using Record = LoudnessCurvePoint;
  static constexpr std::tuple fields{
      Field{"time", &Record::time}, Field{"momentary", &Record::momentary},
      Field{"shortTerm", &Record::shortTerm}, Field{"integrated", &Record::integrated}};
};

template <>
struct Coding<StereoWidthCurvePoint> {
  using Record = StereoWidthCurvePoint;
  static constexpr std::tuple fields{Field{"time", &Record::time},
                                     Field{"correlation", &Record::correlation}};
};

template <>
struct Coding<StereoWidthSample> {
  using Record = StereoWidthSample;
  static constexpr std::tuple fields{Field{"time", &Record::time},
                                     Field{"correlation", &Record::correlation}};
};

template <>
struct Coding<ReportStereoWidth> {
  using Record = ReportStereoWidth;
  static constexpr std::tuple fields{Field{"curve", &Record::curve},
                                     Field{"averageCorrelation", &Record::averageCorrelation},
                                     Field{"monoPercent", &Record::monoPercent},
                                     Field{"narrowPercent", &Record::narrowPercent},
                                     Field{"stereoPercent", &Record::stereoPercent},
                                     Field{"widePercent", &Record::widePercent},
                                     Field{"outOfPhasePercent", &Record::outOfPhasePercent}};
};

template <>
struct Coding<ReportChannel> {
  using Record = ReportChannel;
  static constexpr std::tuple fields{Field{"index", &Record::index},
                                     Field{"label", &Record::label},
                                     Field{"peakDB", &Record::peakDB},
                                     Field{"rmsDB", &Record::rmsDB},
                                     Field{"crestFactorDB", &Record::crestFactorDB},
                                     Field{"dcOffset", &Record::dcOffset},
                                     Field{"hasClipping", &Record::hasClipping}};
};

template <>
struct Coding<ReportTimeRange> {
  using Record = ReportTimeRange;
  static constexpr std::tuple fields{Field{"start", &Record::start}, Field{"end", &Record::end}};
};

template <>
struct Coding<ReportViolations> {
  using Record = ReportViolations;
  static constexpr std::tuple fields{Field{"momentaryThreshold", &Record::momentaryThreshold},
                                     Field{"shortTermThreshold", &Record::shortTermThreshold},
                                     Field{"momentaryCount", &Record::momentaryCount},
                                     Field{"shortTermCount", &Record::shortTermCount},
                                     Field{"momentaryRanges", &Record::momentaryRanges},
                                     Field{"shortTermRanges", &Record::shortTermRanges}};
};

template <>
struct Coding<ReportTargetVerdict> {
  using Record = ReportTargetVerdict;
  static constexpr std::tuple fields{Field{"status", &Record::status},
                                     Field{"actualLUFS", &Record::actualLUFS},
                                     Field{"penaltyGainDB", &Record::penaltyGainDB},
                                     Field{"penaltyApplies", &Record::penaltyApplies},
                                     Field{"truePeakClean", &Record::truePeakClean},
                                     Field{"nonComplianceReason", &Record::nonComplianceReason},
                                     Field{"nonComplianceActual", &Record::nonComplianceActual},
                                     Field{"nonComplianceLimit", &Record::nonComplianceLimit}};
};

template <>
struct Coding<ReportLoudnessTargetItem> {
  using Record = ReportLoudnessTargetItem;
  static constexpr std::tuple fields{Field{"id", &Record::id},
                                     Field{"name", &Record::name},
                                     Field{"mode", &Record::mode},
                                     Field{"source", &Record::source},
                                     Field{"treatmentKind", &Record::treatmentKind},
                                     Field{"referenceLUFS", &Record::referenceLUFS},
                                     Field{"toleranceLU", &Record::toleranceLU},
                                     Field{"truePeakCeilingDBTP", &Record::truePeakCeilingDBTP},
                                     Field{"boostBehaviour", &Record::boostBehaviour},
                                     Field{"noiseFloorMaxDBRMS", &Record::noiseFloorMaxDBRMS},
                                     Field{"maxShortTermLUFS", &Record::maxShortTermLUFS},
                                     Field{"verdict", &Record::verdict}};
};

template <>
struct Coding<ReportLoudnessTargets> {
  using Record = ReportLoudnessTargets;
  static constexpr std::tuple fields{Field{"activeMode", &Record::activeMode},
                                     Field{"targets", &Record::targets},
                                     Field{"programRMSDBFS", &Record::programRMSDBFS}};
};

template <>
struct Coding<ReportChapterEntry> {
  using Record = ReportChapterEntry;
  static constexpr std::tuple fields{Field{"index", &Record::index},
                                     Field{"name", &Record::name},
                                     Field{"startSec", &Record::startSec},
                                     Field{"endSec", &Record::endSec},
                                     Field{"integratedLUFS", &Record::integratedLUFS},
                                     Field{"rmsDBFS", &Record::rmsDBFS},
                                     Field{"deviationFromMedianLU", &Record::deviationFromMedianLU},
                                     Field{"truePeakDBTP", &Record::truePeakDBTP},
                                     Field{"samplePeakDBFS", &Record::samplePeakDBFS},
                                     Field{"loudnessRange", &Record::loudnessRange},
                                     Field{"maxMomentaryLUFS", &Record::maxMomentaryLUFS},
                                     Field{"maxShortTermLUFS", &Record::maxShortTermLUFS},
                                     Field{"speechGatedLUFS", &Record::speechGatedLUFS},
                                     Field{"noiseFloorDBRMS", &Record::noiseFloorDBRMS},
                                     Field{"speechPercentage", &Record::speechPercentage}};
};

template <>
struct Coding<ReportChapterTable> {
  using Record = ReportChapterTable;
  static constexpr std::tuple fields{Field{"medianLUFS", &Record::medianLUFS},
                                     Field{"deviationThresholdLU", &Record::deviationThresholdLU},
                                     Field{"origin", &Record::origin},
                                     Field{"entries", &Record::entries}};
};

template <>
struct Coding<OrvaneReport> {
  using Record = OrvaneReport;
  static constexpr std::tuple fields{Field{"generatedAt", &Record::generatedAt},
                                     Field{"appVersion", &Record::appVersion},
                                     Field{"file", &Record::file},
                                     Field{"fullFile", &Record::fullFile},
                                     Field{"selection", &Record::selection},
                                     Field{"stereoWidth", &Record::stereoWidth},
                                     Field{"channels", &Record::channels},
                                     Field{"violations", &Record::violations},
                                     Field{"loudnessTargets", &Record::loudnessTargets},
                                     Field{"chapters", &Record::chapters},
                                     Field{"musicAnalysis", &Record::musicAnalysis},
                                     Field{"stemGatedLoudness", &Record::stemGatedLoudness}};
};

}  // namespace orvane::json
