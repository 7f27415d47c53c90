#include "orvane/report/html/html_report_builder.h"

#include <string_view>
#include <utility>
#include <vector>

#include "orvane/platform/precondition.h"
#include "orvane/report/html/html_sections.h"
#include "orvane/report/html/html_text.h"
#include "orvane/report/html/report_assets.h"

namespace orvane::HTMLReportBuilder {
namespace {

/// Room for the fixed parts: style sheet, icon, charts of 1,500 points.
constexpr std::size_t kExpectedSize = 192 * 1024;

std::string loudnessCurves(const OrvaneReport& report) {
  const double duration = report.file.duration;
  if (const auto& selection = report.selection)
    return loudnessCurveSection(selection->momentaryCurve, selection->shortTermCurve,
                                selection->integratedCurve, duration, &*selection);
  const ReportFullFileLoudness& file = report.fullFile;
  return loudnessCurveSection(file.momentaryCurve, file.shortTermCurve, file.integratedCurve,
                              duration, nullptr);
}

/// What the report has beside its key figures.
std::string detailSections(const OrvaneReport& report) {
  std::string html = loudnessCurves(report);
  if (report.stereoWidth) html += stereoWidthSection(*report.stereoWidth, report.file.duration);
  html += channelsSection(report.channels);
  if (report.violations) html += violationsSection(*report.violations);
  if (report.chapters) html += chaptersSection(*report.chapters);
  html += musicSection(report.musicAnalysis ? &*report.musicAnalysis : nullptr,
                       report.stemGatedLoudness ? &*report.stemGatedLoudness : nullptr);
  return html;
}

using Contents = std::vector<std::pair<std::string_view, std::string>>;

const std::string& contentOf(const Contents& contents, std::string_view name) {
  for (const auto& [candidate, content] : contents)
    if (candidate == name) return content;
  precondition(false, "every placeholder of the page has a content");
  return contents.front().second;
}

/// The frame with its placeholders replaced; what is inserted is not looked into again.
std::string filled(std::string_view frame, const Contents& contents) {
  std::string page;
  page.reserve(kExpectedSize);
  while (true) {
    const auto start = frame.find("{{");
    page += frame.substr(0, start);
    if (start == std::string_view::npos) return page;
    frame.remove_prefix(start + 2);
    const auto end = frame.find("}}");
    page += contentOf(contents, frame.substr(0, end));
    frame.remove_prefix(end + 2);
  }
}

}  // namespace

std::string build(const OrvaneReport& report) {
  return build(report, {});
}

std::string build(const OrvaneReport& report, const ReportLocale& locale) {
  const KeyMetrics metrics = keyMetrics(report);
  return filled(pageFrame(), {{"title", escaped(report.file.fileName)},
                              {"style", std::string(styleSheet())},
                              {"header", headerSection(report, locale)},
                              {"metrics", metricsBlock(metrics)},
                              {"targets", targetsSection(report, metrics.mode)},
                              {"details", detailSections(report)},
                              {"footer", footerSection()}});
}

}  // namespace orvane::HTMLReportBuilder
