#include "orvane/report/target_items.h"

#include <cmath>
#include <limits>
#include <string>
#include <variant>

namespace orvane {
namespace {

constexpr std::string_view kCompliance = "compliance";
constexpr std::string_view kPenalty = "penalty";

std::optional<float> finite(std::optional<float> value) {
  return value && std::isfinite(*value) ? value : std::nullopt;
}

/// Fills in what belongs to one kind of evaluation.
struct VerdictWriter {
  ReportTargetVerdict& verdict;

  void operator()(const core::NormalizationVerdict& evaluation) const {
    verdict.status = "normalization";
    verdict.penaltyGainDB = evaluation.gainDB;
    verdict.penaltyApplies = evaluation.isGainApplied;
    verdict.truePeakClean = evaluation.isTruePeakClean;
  }
  void operator()(const core::CompliantVerdict& evaluation) const {
    verdict.status = "compliant";
    verdict.truePeakClean = evaluation.isTruePeakClean;
  }
  void operator()(const core::NonCompliantVerdict& evaluation) const {
    verdict.status = "nonCompliant";
    verdict.nonComplianceReason = std::string(rawValue(evaluation.reason));
    verdict.nonComplianceActual = evaluation.actual;
    verdict.nonComplianceLimit = evaluation.limit;
  }
  void operator()(const core::NotJudgedVerdict&) const { verdict.status = "tooQuiet"; }
};

}  // namespace

core::LoudnessTargetMeasurement targetMeasurement(const OrvaneReport& report) {
  const auto rms = finite(report.loudnessTargets.programRMSDBFS);
  // Only the file's tells whether speech was looked for.
  const auto speech = finite(report.fullFile.speechPercentage);
  if (const auto& selection = report.selection)
    return {.integratedLUFS = finite(selection->integratedLUFS),
            .truePeakDBTP = finite(selection->truePeakDB),
            .loudnessRange = finite(selection->loudnessRange),
            .maxShortTermLUFS = finite(selection->maxShortTermLUFS),
            .speechGatedLUFS = finite(selection->speechGatedLUFS),
            .speechPercentage = speech ? finite(selection->speechPercentage) : std::nullopt,
            .programRMSDBFS = rms,
            .noiseFloorDBRMS = finite(selection->speechGatedNoiseFloorDBRMS)};
  const ReportFullFileLoudness& file = report.fullFile;
  return {.integratedLUFS = finite(file.integratedLUFS),
          .truePeakDBTP = finite(file.truePeakDB),
          .loudnessRange = finite(file.loudnessRange),
          .maxShortTermLUFS = finite(file.maxShortTermLUFS),
          .speechGatedLUFS = finite(file.speechGatedLUFS),
          .speechPercentage = speech,
          .programRMSDBFS = rms};
}

ReportLoudnessTargetItem targetItem(const core::LoudnessTarget& target,
                                    const core::LoudnessTargetMeasurement& measurement) {
  ReportLoudnessTargetItem item{.id = target.id,
                                .name = target.name,
                                .mode = std::string(rawValue(target.mode)),
                                .source = std::string(rawValue(target.source)),
                                .referenceLUFS = target.referenceLUFS,
                                .truePeakCeilingDBTP = target.truePeakCeilingDBTP,
                                .noiseFloorMaxDBRMS = target.noiseFloorMaxDBRMS,
                                .maxShortTermLUFS = target.maxShortTermLUFS,
                                .maxSpeechPercentage = target.maxSpeechPercentage};
  if (const auto* penalty = std::get_if<core::PenaltyTreatment>(&target.treatment)) {
    item.treatmentKind = kPenalty;
    item.boostBehaviour = std::string(rawValue(penalty->boostBehaviour));
  } else {
    item.treatmentKind = kCompliance;
    item.toleranceLU = std::get<core::ComplianceTreatment>(target.treatment).toleranceLU;
  }
  const auto level = core::LoudnessTargetEvaluator::judgedLevel(target, measurement);
  ReportTargetVerdict verdict{.actualLUFS =
                                  level.value_or(-std::numeric_limits<float>::infinity())};
  std::visit(VerdictWriter{verdict}, core::LoudnessTargetEvaluator::evaluate(target, measurement));
  item.verdict = verdict;
  return item;
}

core::LoudnessTarget rehydrateTarget(const ReportLoudnessTargetItem& item) {
  core::LoudnessTarget target{.id = item.id,
                              .name = item.name,
                              .mode = core::loudnessTargetModeFromRawValue(item.mode).value_or(
                                  core::LoudnessTargetMode::music),
                              .source = core::loudnessTargetSourceFromRawValue(item.source)
                                            .value_or(core::LoudnessTargetSource::integrated),
                              .treatment = core::ComplianceTreatment{item.toleranceLU},
                              .referenceLUFS = item.referenceLUFS,
                              .truePeakCeilingDBTP = item.truePeakCeilingDBTP,
                              .noiseFloorMaxDBRMS = item.noiseFloorMaxDBRMS,
                              .maxShortTermLUFS = item.maxShortTermLUFS,
                              .maxSpeechPercentage = item.maxSpeechPercentage};
  if (item.treatmentKind == kPenalty)
    target.treatment =
        core::PenaltyTreatment{core::boostBehaviourFromRawValue(item.boostBehaviour.value_or(""))
                                   .value_or(core::BoostBehaviour::symmetric)};
  return target;
}

}  // namespace orvane
