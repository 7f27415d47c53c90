#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "orvane/analysis/selection_analysis.h"
#include "orvane/core/chapter.h"
#include "orvane/core/curve_points.h"
#include "orvane/core/targets/loudness_target.h"
#include "orvane/core/time_range.h"
#include "orvane/music/music_analysis_result.h"
#include "orvane/music/stem_gated_loudness.h"
#include "orvane/report/report_records.h"

namespace orvane {

/// Everything that a report is built from; `OrvaneReport::Inputs`. Levels that are undefined are
/// minus infinity; arrays per channel are in canonical channel order.
struct ReportInputs {
  std::string appVersion{};
  ReportFileInfo fileInfo{};
  std::vector<std::string> channelLayoutLabels{};
  std::vector<bool> channelClipping{};
  std::vector<LoudnessCurvePoint> fileLoudnessCurve{};
  std::optional<std::vector<bool>> fileSpeechHistory{};  ///< one flag per 100 ms
  float fileSamplePeakDB = 0;                            ///< dBFS
  float fileTruePeakDB = 0;                              ///< dBTP
  float fileLoudnessRange = 0;                           ///< LU
  float fileMaxMomentaryLUFS = 0;
  float fileMaxShortTermLUFS = 0;
  std::int64_t fileDynamicRange = 0;              ///< DR score
  std::vector<float> fileChannelPeakDB{};         ///< dBFS
  std::vector<float> fileChannelRMSDB{};          ///< dBFS
  std::vector<float> fileChannelCrestFactorDB{};  ///< dB
  std::vector<float> fileChannelDCOffset{};       ///< linear
  float fileSpeechGatedLUFS = 0;
  std::optional<SelectionAnalysisResult> selectionAnalysis{};
  std::vector<StereoWidthCurvePoint> fileStereoWidthCurve{};
  bool violationsEnabled = false;
  std::optional<float> momentaryThreshold{};  ///< LUFS
  std::optional<float> shortTermThreshold{};  ///< LUFS
  std::vector<HalfOpenTimeRange> momentaryViolations{};
  std::vector<HalfOpenTimeRange> shortTermViolations{};
  core::LoudnessTargetSelection loudnessTargetSelection{};
  std::vector<core::Chapter> chapters{};
  std::optional<float> chapterMedianLUFS{};
  float chapterDeviationThresholdLU = 0;
  std::string chapterOrigin{};
  std::optional<MusicAnalysisResult> musicAnalysis{};
  std::optional<StemGatedLoudness> stemGatedLoudness{};

  bool operator==(const ReportInputs&) const = default;
};

}  // namespace orvane
