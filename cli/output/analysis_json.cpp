#include "cli/output/analysis_json.h"

#include <limits>
#include <string_view>

#include "cli/output/json_output.h"
#include "cli/output/target_findings.h"
#include "orvane/analysis/programme_summary.h"
#include "orvane/report/report_coding.h"

namespace orvane::cli {
namespace {

using JsonOutput::Document;

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

void addFormat(Document& document, const MeasuredFile& file) {
  const auto& result = file.result;
  document.add("sampleRate", result.sampleRate);
  document.add("channelCount", result.channelCount);
  document.add("channelLabels", file.channelNames());
  document.add("durationSeconds", result.durationSeconds);
  if (!file.streams.empty()) document.add("streams", file.streams);
  document.add("streamCount", file.streamCount);
  document.add("fileFormat", result.fileFormat);
  if (file.identity) document.add("encodingName", file.encodingText());
  document.add("fileSize", result.fileSize);
  document.add("bitDepth", result.bitDepth);
  if (result.rawFormat) document.add("rawFormat", *result.rawFormat);
}

void addFigures(Document& document, const MeasuredFile& file) {
  const auto& result = file.result;
  document.add("dualMono", file.detail.isDualMono);
  document.add("integratedLUFS", result.integratedLUFS);
  document.add("loudnessRange", result.loudnessRange);
  document.add("truePeakDB", result.truePeakDB);
  document.add("samplePeakDB", result.samplePeakDB);
  document.add("maxMomentaryLUFS", result.maxMomentaryLUFS);
  document.add("maxShortTermLUFS", result.maxShortTermLUFS);
  document.add("dynamicRange", result.dynamicRange);
  // What was not looked for is null, as every number that is none.
  constexpr float kUnknown = std::numeric_limits<float>::quiet_NaN();
  const bool isSpeechKnown = result.speechHistory.has_value();
  document.add("speechGatedLUFS", isSpeechKnown ? result.speechGatedLUFS : kUnknown);
  document.add("speechPercentage", isSpeechKnown ? result.speechPercentage : kUnknown);
  const auto correlation = audibleCorrelation(result);
  document.add("averageCorrelation", correlation ? correlation->mean : kUnknown);
  document.add("lowestCorrelation", correlation ? correlation->lowest : kUnknown);
  if (file.speechModel) document.add("speechModel", *file.speechModel);
  document.add("channelPeakDB", result.channelPeakDB);
  document.add("channelRMSDB", result.channelRMSDB);
  document.add("channelCrestFactorDB", result.channelCrestFactorDB);
  document.add("channelDCOffset", result.channelDCOffset);
  document.add("channelHasClipping", result.channelHasClipping);
}

void addQuality(Document& document, const MeasuredFile& file) {
  const ProgrammeQuality& quality = file.detail.quality;
  const auto seconds = [&](std::int64_t frames) {
    return static_cast<double>(frames) / file.result.sampleRate;
  };
  const auto addPairs = [&](const char* key, const auto& pairs) {
    document.addObjects(key, pairs, [&](const ProgrammeQuality::ChannelPair& pair) {
      document.add("first", pair.first);
      document.add("second", pair.second);
    });
  };
  document.add("headSilenceSeconds", seconds(quality.headSilenceFrames));
  document.add("tailSilenceSeconds", seconds(quality.tailSilenceFrames));
  const auto gap = quality.longestGap.value_or(ProgrammeQuality::Gap{});
  document.add("longestGapSeconds", seconds(gap.frameCount));
  if (quality.longestGap) document.add("longestGapStartSeconds", seconds(gap.startFrame));
  document.add("silentChannels", quality.silentChannels);
  addPairs("identicalChannels", quality.identicalChannels);
  addPairs("invertedChannels", quality.invertedChannels);
  if (quality.bitDepth) document.add("effectiveBitDepth", quality.bitDepth->effective);
}

void addFindings(Document& document, const MeasuredFile& file) {
  document.add("clippingRunCount", file.detail.clippingRunCount);
  document.addObjects("clippingRuns", file.detail.clippingRuns, [&](const auto& run) {
    document.add("channel", run.channel);
    document.add("startFrame", run.startFrame);
    document.add("frameCount", run.frameCount);
    document.add("startSeconds", static_cast<double>(run.startFrame) / file.result.sampleRate);
  });
  document.add("nonFiniteSampleCount", file.detail.nonFiniteSampleCount);
  addQuality(document, file);
  document.addObjects("warnings", file.detail.warnings, [&](const AudioFileWarning& warning) {
    document.add("code", codeText(warning.code));
    document.add("text", warning.text);
  });
  document.add("notes", file.notes);
}

void addCurves(Document& document, const OfflineAnalysisPipeline::Result& result) {
  if (result.speechHistory) document.add("speechHistory", *result.speechHistory);
  document.add("loudnessCurve", result.loudnessCurve);
  document.add("stereoWidthCurve", result.stereoWidthCurve);
}

/// A record of the report as it stands there, so that both have the same keys. Its curves come on
/// request only.
template <typename Record>
std::string recordJson(const Record& record, bool withCurves) {
  json::Writer writer(JsonOutput::kRecordStyle);
  json::writeRecord(writer, record, [withCurves](std::string_view key) {
    return withCurves || !key.ends_with("Curve");
  });
  return writer.take();
}

void addReportParts(Document& document, const MeasuredFile& file, bool withCurves) {
  const auto add = [&](const char* key, const auto& part) {
    if (part) document.addJSON(key, recordJson(*part, withCurves));
  };
  const OrvaneReport& report = *file.report;
  if (file.isJudged) TargetFindings::addJSON(document, report);
  add("selection", report.selection);
  add("violations", report.violations);
  add("chapters", report.chapters);
  add("stemGatedLoudness", report.stemGatedLoudness);
  add("sectionLoudness", file.sectionLoudness);
}

}  // namespace

std::string analysisJson(const MeasuredFile& file, bool withCurves) {
  Document document;
  document.addName(file.name.display);
  document.add("appVersion", ORVANE_VERSION);
  addFormat(document, file);
  addFigures(document, file);
  if (file.report) addReportParts(document, file, withCurves);
  addFindings(document, file);
  if (withCurves) addCurves(document, file.result);
  return document.takeLine();
}

std::string albumJson(const MeasuredFile& album, std::size_t fileCount) {
  Document document;
  document.add("fileCount", fileCount);
  document.add("durationSeconds", album.result.durationSeconds);
  addFigures(document, album);
  std::string line = document.takeLine();
  line.pop_back();
  return "{\"album\":" + line + "}\n";
}

}  // namespace orvane::cli
