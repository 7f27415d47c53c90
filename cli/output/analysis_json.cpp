#include "cli/output/analysis_json.h"

#include <string_view>

namespace orvane::cli {
namespace {

using JsonOutput::Json;
using JsonOutput::number;

Json numbers(const std::vector<float>& values) {
  Json array = Json::array();
  for (const float value : values) array.push_back(number(value));
  return array;
}

Json rawFormatJson(const RawPCMFormat& format) {
  return {{"sampleRate", number(format.sampleRate)},
          {"channelCount", format.channelCount},
          {"encoding", rawValue(format.encoding)},
          {"endianness", rawValue(format.endianness)},
          {"isPlanar", format.isPlanar},
          {"headerSkipBytes", format.headerSkipBytes},
          {"trailingBytesTolerance", format.trailingBytesTolerance}};
}

std::string_view codeText(AudioFileWarning::Code code) {
  switch (code) {
    case AudioFileWarning::Code::truncatedAudio:
      return "truncatedAudio";
    case AudioFileWarning::Code::openDataSize:
      return "openDataSize";
    case AudioFileWarning::Code::severalDataChunks:
      return "severalDataChunks";
    case AudioFileWarning::Code::damagedAudio:
      return "damagedAudio";
    case AudioFileWarning::Code::unusualLayout:
      return "unusualLayout";
  }
  return "other";
}

Json warningsJson(const std::vector<AudioFileWarning>& warnings) {
  Json array = Json::array();
  for (const auto& warning : warnings)
    array.push_back({{"code", codeText(warning.code)}, {"text", warning.text}});
  return array;
}

Json clippingRunsJson(const MeasuredFile& file) {
  Json array = Json::array();
  for (const auto& run : file.detail.clippingRuns) {
    array.push_back(
        {{"channel", run.channel},
         {"startFrame", run.startFrame},
         {"frameCount", run.frameCount},
         {"startSeconds", number(static_cast<double>(run.startFrame) / file.result.sampleRate)}});
  }
  return array;
}

void addFormat(Json& document, const MeasuredFile& file) {
  const auto& result = file.result;
  document["sampleRate"] = number(result.sampleRate);
  document["channelCount"] = result.channelCount;
  document["channelLabels"] = file.channelNames();
  document["durationSeconds"] = number(result.durationSeconds);
  document["fileFormat"] = result.fileFormat;
  if (file.identity) document["encodingName"] = file.encodingText();
  document["fileSize"] = result.fileSize;
  document["bitDepth"] = result.bitDepth;
  if (result.rawFormat) document["rawFormat"] = rawFormatJson(*result.rawFormat);
}

void addFigures(Json& document, const MeasuredFile& file) {
  const auto& result = file.result;
  document["dualMono"] = file.detail.isDualMono;
  document["integratedLUFS"] = number(result.integratedLUFS);
  document["loudnessRange"] = number(result.loudnessRange);
  document["truePeakDB"] = number(result.truePeakDB);
  document["samplePeakDB"] = number(result.samplePeakDB);
  document["maxMomentaryLUFS"] = number(result.maxMomentaryLUFS);
  document["maxShortTermLUFS"] = number(result.maxShortTermLUFS);
  document["dynamicRange"] = result.dynamicRange;
  document["speechGatedLUFS"] = number(result.speechGatedLUFS);
  document["speechPercentage"] = number(result.speechPercentage);
  document["channelPeakDB"] = numbers(result.channelPeakDB);
  document["channelRMSDB"] = numbers(result.channelRMSDB);
  document["channelCrestFactorDB"] = numbers(result.channelCrestFactorDB);
  document["channelDCOffset"] = numbers(result.channelDCOffset);
  document["channelHasClipping"] = result.channelHasClipping;
}

void addFindings(Json& document, const MeasuredFile& file) {
  document["clippingRunCount"] = file.detail.clippingRunCount;
  document["clippingRuns"] = clippingRunsJson(file);
  document["nonFiniteSampleCount"] = file.detail.nonFiniteSampleCount;
  document["warnings"] = warningsJson(file.detail.warnings);
}

void addCurves(Json& document, const OfflineAnalysisPipeline::Result& result) {
  if (result.speechHistory) document["speechHistory"] = *result.speechHistory;
  Json& loudness = document["loudnessCurve"] = Json::array();
  for (const auto& point : result.loudnessCurve) {
    loudness.push_back({{"time", number(point.time)},
                        {"momentary", number(point.momentary)},
                        {"shortTerm", number(point.shortTerm)},
                        {"integrated", number(point.integrated)}});
  }
  Json& width = document["stereoWidthCurve"] = Json::array();
  for (const auto& point : result.stereoWidthCurve)
    width.push_back({{"time", number(point.time)}, {"correlation", number(point.correlation)}});
}

/// A record of the report as it stands there, so that both have the same keys. Its curves come on
/// request only.
template <typename Record>
Json recordJson(const Record& record, bool withCurves) {
  Json document = Json::parse(encodeJSON(record));
  if (!withCurves)
    for (const char* curve : {"momentaryCurve", "shortTermCurve", "integratedCurve"})
      document.erase(curve);
  return document;
}

void addReportParts(Json& document, const MeasuredFile& file, bool withCurves) {
  const auto add = [&](const char* key, const auto& part) {
    if (part) document[key] = recordJson(*part, withCurves);
  };
  const OrvaneReport& report = *file.report;
  if (file.isJudged) document["loudnessTargets"] = recordJson(report.loudnessTargets, false);
  add("selection", report.selection);
  add("violations", report.violations);
  add("chapters", report.chapters);
  add("stemGatedLoudness", report.stemGatedLoudness);
  add("sectionLoudness", file.sectionLoudness);
}

}  // namespace

Json analysisJson(const MeasuredFile& file, bool withCurves) {
  Json document = {{"schemaVersion", JsonOutput::kSchemaVersion}, {"url", file.name.display}};
  addFormat(document, file);
  addFigures(document, file);
  if (file.report) addReportParts(document, file, withCurves);
  addFindings(document, file);
  if (withCurves) addCurves(document, file.result);
  return document;
}

}  // namespace orvane::cli
