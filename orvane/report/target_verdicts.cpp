#include "orvane/report/target_verdicts.h"

#include <cmath>
#include <utility>
#include <variant>

#include "orvane/report/report_text.h"
#include "orvane/report/target_items.h"

namespace orvane::TargetVerdicts {
namespace {

using ReportText::fixed;
using ReportText::signedFixed;

std::string ruleText(const core::NonCompliantVerdict& rule, std::string_view unit) {
  const std::string value = fixed(rule.actual, 1);
  switch (rule.reason) {
    case core::NonComplianceReason::loudness:
      return "L (" + value + " " + std::string(unit) + ")";
    case core::NonComplianceReason::truePeak:
      return "TP (" + value + " dBTP)";
    case core::NonComplianceReason::shortTerm:
      return "S↑ (" + value + " LUFS)";
    case core::NonComplianceReason::noiseFloor:
      return "NF (" + value + " dB)";
  }
  return {};
}

/// How an evaluation is shown.
struct BadgeWriter {
  std::string_view unit;

  Badge operator()(const core::NormalizationVerdict& verdict) const {
    if (!verdict.isGainApplied)
      return {"pass", "Plays as-is · " + fixed(verdict.gainDB, 1) + " dB under target"};
    const std::string gain = signedFixed(verdict.gainDB, 1) + " dB";
    if (verdict.isTruePeakClean) return {"normalize", gain + " · platform gain"};
    return {"fail", gain + " · TP over"};
  }
  Badge operator()(const core::CompliantVerdict& verdict) const {
    if (verdict.isTruePeakClean) return {"pass", "Compliant ✓"};
    return {"fail", "TP over ceiling"};
  }
  Badge operator()(const core::NonCompliantVerdict& verdict) const {
    return {"fail", "Not compliant · " + ruleText(verdict, unit)};
  }
  Badge operator()(const core::NotJudgedVerdict&) const { return {"low", "-"}; }
};

/// Without decimals when it is whole.
std::string shortNumber(float value) {
  return fixed(value, std::trunc(value) == value ? 0 : 1);
}

}  // namespace

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

std::vector<TargetVerdict> of(const OrvaneReport& report) {
  const auto measurement = targetMeasurement(report);
  std::vector<TargetVerdict> verdicts;
  for (const ReportLoudnessTargetItem& item : report.loudnessTargets.targets) {
    const auto known = core::LoudnessTargetCatalog::target(item.id);
    TargetVerdict verdict{.name = item.name,
                          .target = known ? *known : rehydrateTarget(item),
                          .measurement = measurement};
    verdict.evaluation = core::LoudnessTargetEvaluator::evaluate(verdict.target, measurement);
    verdict.brokenRules = core::LoudnessTargetEvaluator::brokenRules(verdict.target, measurement);
    verdict.notJudged = core::LoudnessTargetEvaluator::notJudged(verdict.target, measurement);
    verdicts.push_back(std::move(verdict));
  }
  return verdicts;
}

void judge(OrvaneReport& report, const core::LoudnessTargetSelection& selection) {
  const auto measurement = targetMeasurement(report);
  report.loudnessTargets.activeMode = rawValue(selection.mode);
  report.loudnessTargets.targets.clear();
  for (const core::LoudnessTarget& target : selection.activeTargets())
    report.loudnessTargets.targets.push_back(targetItem(target, measurement));
}

std::string demandText(const core::LoudnessTarget& target) {
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

Badge badge(const core::LoudnessTarget& target, const core::LoudnessTargetEvaluation& evaluation) {
  return std::visit(BadgeWriter{unitText(target.source)}, evaluation);
}

std::vector<std::string> lines(const TargetVerdict& verdict) {
  const auto* const open = std::get_if<core::NotJudgedVerdict>(&verdict.evaluation);
  std::vector<std::string> lines = {open != nullptr
                                        ? std::string(text(open->reason))
                                        : badge(verdict.target, verdict.evaluation).status};
  // The first of either is told by then.
  for (std::size_t i = open != nullptr ? 0 : 1; i < verdict.brokenRules.size(); ++i)
    lines.push_back(ruleText(verdict.brokenRules[i], unitText(verdict.target.source)));
  for (std::size_t i = open != nullptr ? 1 : 0; i < verdict.notJudged.size(); ++i)
    lines.emplace_back(text(verdict.notJudged[i]));
  return lines;
}

}  // namespace orvane::TargetVerdicts
