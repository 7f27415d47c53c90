#include "orvane/core/targets/loudness_target_evaluator.h"

#include <array>
#include <charconv>
#include <cmath>

namespace orvane::core {
namespace {

/// Slack for comparisons of 32-bit figures around 20.
constexpr float kRounding = 0.0005F;

/// What lies at or below the absolute gate has no level to speak of.
constexpr float kQuietest = -70.0F;

bool exceeds(std::optional<float> value, std::optional<float> limit) {
  return value && limit && *value > *limit + kRounding;
}

LoudnessTargetEvaluation judgePenalty(const LoudnessTarget& target,
                                      const PenaltyTreatment& treatment, float level,
                                      std::optional<float> truePeak) {
  const float gain = target.referenceLUFS - level;
  const bool isApplied =
      gain < 0 || (gain > 0 && treatment.boostBehaviour == BoostBehaviour::symmetric);
  const float change = isApplied ? gain : 0.0F;
  const bool isClean = !truePeak || *truePeak + change <= target.truePeakCeilingDBTP + kRounding;
  return NormalizationVerdict{gain, isApplied, isClean};
}

LoudnessTargetEvaluation judgeCompliance(const LoudnessTarget& target,
                                         const ComplianceTreatment& treatment, float level,
                                         const LoudnessTargetMeasurement& measurement) {
  if (treatment.toleranceLU) {
    const float low = target.referenceLUFS - *treatment.toleranceLU;
    const float high = target.referenceLUFS + *treatment.toleranceLU;
    if (level > high + kRounding)
      return NonCompliantVerdict{NonComplianceReason::loudness, level, high};
    if (level < low - kRounding)
      return NonCompliantVerdict{NonComplianceReason::loudness, level, low};
  }
  if (exceeds(measurement.maxShortTermLUFS, target.maxShortTermLUFS))
    return NonCompliantVerdict{NonComplianceReason::shortTerm, *measurement.maxShortTermLUFS,
                               *target.maxShortTermLUFS};
  if (exceeds(measurement.noiseFloorDBRMS, target.noiseFloorMaxDBRMS))
    return NonCompliantVerdict{NonComplianceReason::noiseFloor, *measurement.noiseFloorDBRMS,
                               *target.noiseFloorMaxDBRMS};
  const bool isClean = !exceeds(measurement.truePeakDBTP, target.truePeakCeilingDBTP);
  const bool isCeilingTheOnlyRule =
      !treatment.toleranceLU && !target.maxShortTermLUFS && !target.noiseFloorMaxDBRMS;
  if (!isClean && isCeilingTheOnlyRule)
    return NonCompliantVerdict{NonComplianceReason::truePeak, *measurement.truePeakDBTP,
                               target.truePeakCeilingDBTP};
  return CompliantVerdict{isClean};
}

/// With one decimal, the same in every locale.
std::string text(float value) {
  std::array<char, 64> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value,
                                 std::chars_format::fixed, 1);
  return {digits.data(), end.ptr};
}

std::string_view sourceText(LoudnessTargetSource source) {
  switch (source) {
    case LoudnessTargetSource::integrated:
      return "integrated loudness";
    case LoudnessTargetSource::dialogGated:
      return "loudness of the dialogue";
    case LoudnessTargetSource::rms:
      return "RMS level";
  }
  return {};
}

std::string demandText(const LoudnessTarget& target) {
  const std::string unit = " " + std::string(unitText(target.source));
  std::string demand = target.name + ": " + std::string(sourceText(target.source)) + " " +
                       text(target.referenceLUFS);
  if (const auto* compliance = std::get_if<ComplianceTreatment>(&target.treatment)) {
    if (compliance->toleranceLU) demand += " ±" + text(*compliance->toleranceLU);
    demand += unit;
  } else {
    const bool isSymmetric =
        std::get<PenaltyTreatment>(target.treatment).boostBehaviour == BoostBehaviour::symmetric;
    demand += unit + (isSymmetric ? ", turned up and down" : ", turned down only");
  }
  demand += ", true peak at most " + text(target.truePeakCeilingDBTP) + " dBTP";
  if (target.maxShortTermLUFS)
    demand += ", short-term at most " + text(*target.maxShortTermLUFS) + " LUFS";
  if (target.noiseFloorMaxDBRMS)
    demand += ", noise floor at most " + text(*target.noiseFloorMaxDBRMS) + " dB RMS";
  return demand + ".";
}

std::string measuredText(const LoudnessTarget& target,
                         const LoudnessTargetMeasurement& measurement) {
  const auto level = LoudnessTargetEvaluator::judgedLevel(target, measurement);
  if (!level) return " Not measured.";
  std::string measured = " Measured: " + text(*level) + " " + std::string(unitText(target.source));
  if (measurement.truePeakDBTP) measured += ", " + text(*measurement.truePeakDBTP) + " dBTP";
  if (target.maxShortTermLUFS && measurement.maxShortTermLUFS)
    measured += ", short-term " + text(*measurement.maxShortTermLUFS) + " LUFS";
  if (target.noiseFloorMaxDBRMS && measurement.noiseFloorDBRMS)
    measured += ", noise floor " + text(*measurement.noiseFloorDBRMS) + " dB RMS";
  return measured + ".";
}

}  // namespace

std::string_view rawValue(NonComplianceReason reason) noexcept {
  switch (reason) {
    case NonComplianceReason::loudness:
      return "loudness";
    case NonComplianceReason::truePeak:
      return "truePeak";
    case NonComplianceReason::shortTerm:
      return "shortTerm";
    case NonComplianceReason::noiseFloor:
      return "noiseFloor";
  }
  return {};
}

std::optional<float> LoudnessTargetEvaluator::judgedLevel(
    const LoudnessTarget& target, const LoudnessTargetMeasurement& measurement) noexcept {
  switch (target.source) {
    case LoudnessTargetSource::integrated:
      return measurement.integratedLUFS;
    case LoudnessTargetSource::dialogGated:
      return measurement.speechGatedLUFS;
    case LoudnessTargetSource::rms:
      return measurement.programRMSDBFS;
  }
  return std::nullopt;
}

LoudnessTargetEvaluation LoudnessTargetEvaluator::evaluate(
    const LoudnessTarget& target, const LoudnessTargetMeasurement& measurement) noexcept {
  const auto level = judgedLevel(target, measurement);
  if (!level || !std::isfinite(*level) || *level <= kQuietest) return TooQuietVerdict{};
  if (const auto* penalty = std::get_if<PenaltyTreatment>(&target.treatment))
    return judgePenalty(target, *penalty, *level, measurement.truePeakDBTP);
  return judgeCompliance(target, *std::get_if<ComplianceTreatment>(&target.treatment), *level,
                         measurement);
}

bool LoudnessTargetEvaluator::isMissed(const LoudnessTargetEvaluation& evaluation) noexcept {
  if (const auto* normalization = std::get_if<NormalizationVerdict>(&evaluation))
    return normalization->isGainApplied && !normalization->isTruePeakClean;
  if (const auto* compliant = std::get_if<CompliantVerdict>(&evaluation))
    return !compliant->isTruePeakClean;
  return std::holds_alternative<NonCompliantVerdict>(evaluation);
}

std::string LoudnessTargetEvaluator::tooltipText(const LoudnessTarget& target,
                                                 const LoudnessTargetMeasurement& measurement) {
  std::string tooltip = demandText(target) + measuredText(target, measurement);
  if (!target.provenance.empty()) {
    tooltip += " Source: " + target.provenance;
    tooltip += target.isConfirmed ? "." : " (unconfirmed).";
  }
  return tooltip;
}

}  // namespace orvane::core
