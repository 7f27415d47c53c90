#include "orvane/report/analysis_report_inputs.h"

#include "orvane/platform/full_path.h"
#include "orvane/text/utf8.h"

namespace orvane::OfflineAnalysisPipeline {
namespace {

std::vector<std::string> numberedLabels(std::int64_t channelCount) {
  std::vector<std::string> labels;
  for (std::int64_t i = 1; i <= channelCount; ++i) labels.push_back("Ch" + std::to_string(i));
  return labels;
}

std::string joined(const std::vector<std::string>& labels) {
  std::string text;
  for (const std::string& label : labels) {
    if (&label != &labels.front()) text += ' ';
    text += label;
  }
  return text;
}

ReportFileInfo fileInfo(const Result& result, const std::vector<std::string>& labels) {
  return {.fileName = wellFormedUTF8(result.url.filename().native()),
          .filePath = wellFormedUTF8(fullPath(result.url).native()),
          .fileFormat = result.fileFormat,
          .fileSize = result.fileSize,
          .duration = result.durationSeconds,
          .sampleRate = result.sampleRate,
          .channelCount = result.channelCount,
          .channelLayout = joined(labels),
          .bitDepth = result.bitDepth,
          .rawFormat = result.rawFormat};
}

}  // namespace

ReportInputs toReportInputs(const Result& result, const std::string& appVersion,
                            const core::LoudnessTargetSelection& loudnessTargetSelection,
                            const std::optional<std::vector<std::string>>& channelLayoutLabels) {
  const std::vector<std::string> labels =
      channelLayoutLabels ? *channelLayoutLabels : numberedLabels(result.channelCount);
  return {.appVersion = appVersion,
          .fileInfo = fileInfo(result, labels),
          .channelLayoutLabels = labels,
          .channelClipping = result.channelHasClipping,
          .fileLoudnessCurve = result.loudnessCurve,
          .fileSpeechHistory = result.speechHistory,
          .fileSamplePeakDB = result.samplePeakDB,
          .fileTruePeakDB = result.truePeakDB,
          .fileLoudnessRange = result.loudnessRange,
          .fileMaxMomentaryLUFS = result.maxMomentaryLUFS,
          .fileMaxShortTermLUFS = result.maxShortTermLUFS,
          .fileDynamicRange = result.dynamicRange,
          .fileChannelPeakDB = result.channelPeakDB,
          .fileChannelRMSDB = result.channelRMSDB,
          .fileChannelCrestFactorDB = result.channelCrestFactorDB,
          .fileChannelDCOffset = result.channelDCOffset,
          .fileSpeechGatedLUFS = result.speechGatedLUFS,
          .fileStereoWidthCurve = result.stereoWidthCurve,
          .loudnessTargetSelection = loudnessTargetSelection};
}

}  // namespace orvane::OfflineAnalysisPipeline
