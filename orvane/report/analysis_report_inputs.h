#pragma once

#include <optional>
#include <string>
#include <vector>

#include "orvane/analysis/offline_analysis_pipeline.h"
#include "orvane/core/targets/loudness_target.h"
#include "orvane/platform/export.h"
#include "orvane/report/report_inputs.h"

namespace orvane::OfflineAnalysisPipeline {

/// What a report needs of a measured file. Channels are labelled "Ch1", "Ch2" … when no labels are
/// given. Everything that the pipeline does not measure (selection, violations, chapters, music)
/// starts empty, for `gatherReport` or the caller to fill in. A file name or path that is no UTF-8
/// has U+FFFD in the place of the wrong bytes.
ORVANE_API ReportInputs
toReportInputs(const Result& result, const std::string& appVersion,
               const core::LoudnessTargetSelection& loudnessTargetSelection,
               const std::optional<std::vector<std::string>>& channelLayoutLabels);

}  // namespace orvane::OfflineAnalysisPipeline
