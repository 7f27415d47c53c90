#pragma once

#include <optional>
#include <string>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/report/report_inputs.h"
#include "orvane/report/report_records.h"
#include "orvane/text/iso8601_date.h"
#include "orvane/text/json/json_text.h"

namespace orvane {

/// What a report shows beside its figures.
struct ReportSettings {
  bool includeLoudnessCurve = true;
  bool includeStereoWidth = true;
  bool includeChannels = true;
  bool includeViolations = true;

  bool operator==(const ReportSettings&) const = default;
};

/// Everything that is known of one measured file; every report is rendered from it. Has a JSON
/// form: `encodeJSON(report)`, `decodeJSON<OrvaneReport>(text)`.
struct ORVANE_API OrvaneReport {
  using Inputs = ReportInputs;

  Date generatedAt{};
  std::string appVersion{};
  ReportFileInfo file{};
  ReportFullFileLoudness fullFile{};
  std::optional<ReportSelectionLoudness> selection{};
  std::optional<ReportStereoWidth> stereoWidth{};
  std::vector<ReportChannel> channels{};
  std::optional<ReportViolations> violations{};
  ReportLoudnessTargets loudnessTargets{};
  std::optional<ReportChapterTable> chapters{};
  std::optional<MusicAnalysisResult> musicAnalysis{};
  std::optional<StemGatedLoudness> stemGatedLoudness{};

  bool operator==(const OrvaneReport&) const = default;

  /// Made now, of what the settings ask for; nothing is rounded.
  static OrvaneReport build(const Inputs& inputs, const ReportSettings& settings);
};

}  // namespace orvane
