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
  Badge operator()(const core::TooQuietVerdict&) const { return {"low", "-"}; }
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
    verdicts.push_back(std::move(verdict));
  }
  return verdicts;
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

}  // namespace orvane::TargetVerdicts
