// One badge per delivery target.
#include <cmath>
#include <variant>

#include "orvane/report/html/html_sections.h"
#include "orvane/report/html/html_text.h"
#include "orvane/report/report_text.h"
#include "orvane/report/target_items.h"

namespace orvane::HTMLReportBuilder {
namespace {

using ReportText::fixed;
using ReportText::signedFixed;

struct BadgeText {
  std::string_view cssClass;
  std::string status;
};

/// How an evaluation is shown.
struct BadgeWriter {
  std::string_view unit;

  BadgeText operator()(const core::NormalizationVerdict& verdict) const {
    if (!verdict.isGainApplied)
      return {"pass", "Plays as-is · " + fixed(verdict.gainDB, 1) + " dB under target"};
    const std::string gain = signedFixed(verdict.gainDB, 1) + " dB";
    if (verdict.isTruePeakClean) return {"normalize", gain + " · platform gain"};
    return {"fail", gain + " · TP over"};
  }
  BadgeText operator()(const core::CompliantVerdict& verdict) const {
    if (verdict.isTruePeakClean) return {"pass", "Compliant ✓"};
    return {"fail", "TP over ceiling"};
  }
  BadgeText operator()(const core::NonCompliantVerdict& verdict) const {
    const std::string value = fixed(verdict.actual, 1);
    switch (verdict.reason) {
      case core::NonComplianceReason::loudness:
        return {"fail", "Not compliant · L (" + value + " " + std::string(unit) + ")"};
      case core::NonComplianceReason::truePeak:
        return {"fail", "Not compliant · TP (" + value + " dBTP)"};
      case core::NonComplianceReason::shortTerm:
        return {"fail", "Not compliant · S↑ (" + value + " LUFS)"};
      case core::NonComplianceReason::noiseFloor:
        return {"fail", "Not compliant · NF (" + value + " dB)"};
    }
    return {"fail", ""};
  }
  BadgeText operator()(const core::TooQuietVerdict&) const {
    return {"low", std::string(kMissing)};
  }
};

std::string_view modeTitle(core::LoudnessTargetMode mode) {
  switch (mode) {
    case core::LoudnessTargetMode::music:
      return "Music / Streaming";
    case core::LoudnessTargetMode::podcast:
      return "Podcast / Spoken Word";
    case core::LoudnessTargetMode::vod:
      return "VOD";
    case core::LoudnessTargetMode::broadcast:
      return "Broadcast";
  }
  return {};
}

/// Without decimals when it is whole.
std::string shortNumber(float value) {
  return fixed(value, std::trunc(value) == value ? 0 : 1);
}

/// What the target asks, in one line.
std::string targetLine(const core::LoudnessTarget& target) {
  const std::string unit(unitText(target.source));
  std::string line = target.source == core::LoudnessTargetSource::dialogGated ? "dialog · " : "";
  const auto* const compliance = std::get_if<core::ComplianceTreatment>(&target.treatment);
  if (compliance != nullptr && compliance->toleranceLU) {
    line += shortNumber(target.referenceLUFS) + "±" + shortNumber(*compliance->toleranceLU);
  } else {
    line += "ref " + fixed(target.referenceLUFS, 0);
  }
  line += " " + unit + " · ≤ " + fixed(target.truePeakCeilingDBTP, 0) + " dBTP";
  if (target.noiseFloorMaxDBRMS) line += " · NF ≤ " + fixed(*target.noiseFloorMaxDBRMS, 0) + " dB";
  if (target.maxShortTermLUFS) line += " · S ≤ " + fixed(*target.maxShortTermLUFS, 0) + " LUFS";
  return line;
}

std::string titled(std::string_view title, std::string_view note) {
  return element("div", "section-title", title) + element("p", "note", note);
}

bool hasIntegratedLoudness(const OrvaneReport& report) {
  return ReportText::finite(report.fullFile.integratedLUFS) ||
         (report.selection && std::isfinite(report.selection->integratedLUFS));
}

}  // namespace

std::string targetCard(const ReportLoudnessTargetItem& item,
                       const core::LoudnessTargetEvaluation& evaluation,
                       const core::LoudnessTarget& target,
                       const core::LoudnessTargetMeasurement& measurement) {
  const BadgeText badge = std::visit(BadgeWriter{unitText(target.source)}, evaluation);
  const std::string tooltip = core::LoudnessTargetEvaluator::tooltipText(target, measurement);
  std::string html = "<div class=\"badge ";
  html.append(badge.cssClass).append("\" title=\"").append(escaped(tooltip)).append("\">\n");
  html += element("div", "badge-platform", escaped(item.name));
  html += element("div", "badge-target", escaped(targetLine(target)));
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

  const auto measurement = targetMeasurement(report);
  std::string html =
      element("div", "section-title", "Loudness Targets: " + escaped(modeTitle(mode)));
  html += "<div class=\"badges\">\n";
  for (const ReportLoudnessTargetItem& item : items) {
    const auto known = core::LoudnessTargetCatalog::target(item.id);
    const core::LoudnessTarget target = known ? *known : rehydrateTarget(item);
    html += targetCard(item, core::LoudnessTargetEvaluator::evaluate(target, measurement), target,
                       measurement);
  }
  return html + "</div>\n";
}

}  // namespace orvane::HTMLReportBuilder
