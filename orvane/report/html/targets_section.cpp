// One badge per delivery target.
#include <cmath>

#include "orvane/report/html/html_sections.h"
#include "orvane/report/html/html_text.h"
#include "orvane/report/report_text.h"
#include "orvane/report/target_verdicts.h"

namespace orvane::HTMLReportBuilder {
namespace {

std::string titled(std::string_view title, std::string_view note) {
  return element("div", "section-title", title) + element("p", "note", note);
}

bool hasIntegratedLoudness(const OrvaneReport& report) {
  return ReportText::finite(report.fullFile.integratedLUFS) ||
         (report.selection && std::isfinite(report.selection->integratedLUFS));
}

}  // namespace

std::string targetCard(const TargetVerdict& verdict) {
  const auto badge = TargetVerdicts::badge(verdict.target, verdict.evaluation);
  const std::string tooltip =
      core::LoudnessTargetEvaluator::tooltipText(verdict.target, verdict.measurement);
  std::string html = "<div class=\"badge ";
  html.append(badge.kind).append("\" title=\"").append(escaped(tooltip)).append("\">\n");
  html += element("div", "badge-platform", escaped(verdict.name));
  html += element("div", "badge-target", escaped(TargetVerdicts::demandText(verdict.target)));
  html += element("div", "badge-status", badge.status);
  return html + "</div>\n";
}

std::string targetsSection(const OrvaneReport& report, core::LoudnessTargetMode mode) {
  const auto& items = report.loudnessTargets.targets;
  if (items.empty())
    return titled("Loudness Targets",
                  "No targets selected. Pick up to " +
                      std::to_string(core::LoudnessTargetSelection::kMaximumActiveTargets) +
                      " in Orvane's Settings → Targets.");
  if (!hasIntegratedLoudness(report))
    return titled("Loudness Targets", "Run full-file analysis to evaluate targets.");

  std::string html =
      element("div", "section-title", "Loudness Targets: " + escaped(TargetVerdicts::modeTitle(mode)));
  html += "<div class=\"badges\">\n";
  for (const TargetVerdict& verdict : TargetVerdicts::of(report)) html += targetCard(verdict);
  return html + "</div>\n";
}

}  // namespace orvane::HTMLReportBuilder
