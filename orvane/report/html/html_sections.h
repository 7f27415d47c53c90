#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "orvane/core/targets/loudness_target.h"
#include "orvane/report/orvane_report.h"
#include "orvane/report/report_locale.h"
#include "orvane/report/target_verdicts.h"

/// The sections of the page, one source file each. A section that has nothing to show is empty
/// text.
namespace orvane::HTMLReportBuilder {

/// The figures of the metric cards; absent ones are shown as "-".
struct KeyMetrics {
  core::LoudnessTargetMode mode = core::LoudnessTargetMode::music;
  std::optional<float> integrated{};
  std::optional<float> truePeak{};
  std::optional<float> samplePeak{};
  std::optional<float> lra{};
  std::optional<std::int64_t> dr{};
  std::optional<float> maxM{};
  std::optional<float> maxS{};
  std::optional<float> speechGated{};
  std::optional<float> noiseFloor{};
};

/// Those of the selection when there is one, else those of the file.
KeyMetrics keyMetrics(const OrvaneReport& report);
std::string metricsBlock(const KeyMetrics& metrics);
std::string metricCard(std::string_view label, std::string_view value, std::string_view color);

std::string headerSection(const OrvaneReport& report, const ReportLocale& locale);
/// The icon as an image of its own; empty when there is none.
std::string appIconImgTag();
std::string footerSection();

std::string targetsSection(const OrvaneReport& report, core::LoudnessTargetMode mode);
std::string targetCard(const TargetVerdict& verdict);

/// `selection` is null for the curves of the whole file.
std::string loudnessCurveSection(std::span<const LoudnessSample> momentary,
                                 std::span<const LoudnessSample> shortTerm,
                                 std::span<const LoudnessSample> integrated, double duration,
                                 const ReportSelectionLoudness* selection);
std::string stereoWidthSection(const ReportStereoWidth& width, double duration);
std::string channelsSection(std::span<const ReportChannel> channels);
std::string violationsSection(const ReportViolations& violations);
std::string chaptersSection(const ReportChapterTable& table);
std::string musicSection(const MusicAnalysisResult* analysis, const StemGatedLoudness* gated);

}  // namespace orvane::HTMLReportBuilder
