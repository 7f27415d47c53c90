#include "orvane/core/targets/loudness_target_evaluator.h"

#include <algorithm>
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

struct NotJudgedText {
  NotJudgedReason reason;
  std::string_view name;
  std::string_view text;
};

constexpr NotJudgedText kNotJudgedTexts[] = {
    {NotJudgedReason::tooQuiet, "tooQuiet", "too quiet to judge"},
    {NotJudgedReason::speechUnknown, "speechUnknown", "not judged: no speech detection"},
    {NotJudgedReason::noSpeech, "noSpeech", "not judged: no speech found"},
    {NotJudgedReason::tooMuchSpeech, "tooMuchSpeech", "not judged: too much speech"},
    {NotJudgedReason::shortTermUnknown, "shortTermUnknown", "not judged: no short-term loudness"},
    {NotJudgedReason::noiseFloorUnknown, "noiseFloorUnknown", "not judged: no noise floor"},
    {NotJudgedReason::truePeakUnknown, "truePeakUnknown", "not judged: no true peak"},
};

const NotJudgedText& row(NotJudgedReason reason) {
  return *std::ranges::find(kNotJudgedTexts, reason, &NotJudgedText::reason);
}

/// What keeps a target from being judged at all.
std::optional<NotJudgedReason> obstacle(const LoudnessTarget& target,
                                        const LoudnessTargetMeasurement& measurement) {
  const auto& speech = measurement.speechPercentage;
  if (target.maxSpeechPercentage) {
    if (!speech) return NotJudgedReason::speechUnknown;
    if (*speech >= *target.maxSpeechPercentage) return NotJudgedReason::tooMuchSpeech;
  }
  const auto level = LoudnessTargetEvaluator::judgedLevel(target, measurement);
  if (level && std::isfinite(*level) && *level > kQuietest) return std::nullopt;
  if (level || target.source != LoudnessTargetSource::dialogGated) return NotJudgedReason::tooQuiet;
  if (!speech) return NotJudgedReason::speechUnknown;
  return *speech > 0 ? NotJudgedReason::tooQuiet : NotJudgedReason::noSpeech;
}

/// What a service makes of a level.
NormalizationVerdict normalized(const LoudnessTarget& target, const PenaltyTreatment& treatment,
                                float level, float truePeak) {
  const float gain = target.referenceLUFS - level;
  const bool isApplied =
      gain < 0 || (gain > 0 && treatment.boostBehaviour == BoostBehaviour::symmetric);
  const float change = isApplied ? gain : 0.0F;
  return {gain, isApplied, !exceeds(truePeak + change, target.truePeakCeilingDBTP)};
}

/// The loudness where it lies outside the tolerance, with the end that it has left.
std::optional<NonCompliantVerdict> brokenTolerance(const LoudnessTarget& target, float level) {
  const auto* compliance = std::get_if<ComplianceTreatment>(&target.treatment);
  if (compliance == nullptr || !compliance->toleranceLU) return std::nullopt;
  const float low = target.referenceLUFS - *compliance->toleranceLU;
  const float high = target.referenceLUFS + *compliance->toleranceLU;
  if (exceeds(level, high)) return NonCompliantVerdict{NonComplianceReason::loudness, level, high};
  if (level < low - kRounding)
    return NonCompliantVerdict{NonComplianceReason::loudness, level, low};
  return std::nullopt;
}

bool isCeilingTheOnlyRule(const LoudnessTarget& target) {
  const auto* compliance = std::get_if<ComplianceTreatment>(&target.treatment);
  return compliance != nullptr && !compliance->toleranceLU && !target.maxShortTermLUFS &&
         !target.noiseFloorMaxDBRMS;
}

/// With one decimal, the same in every locale.
std::string oneDecimal(float value) {
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
                       oneDecimal(target.referenceLUFS);
  if (const auto* compliance = std::get_if<ComplianceTreatment>(&target.treatment)) {
    if (compliance->toleranceLU) demand += " ±" + oneDecimal(*compliance->toleranceLU);
    demand += unit;
  } else {
    const bool isSymmetric =
        std::get<PenaltyTreatment>(target.treatment).boostBehaviour == BoostBehaviour::symmetric;
    demand += unit + (isSymmetric ? ", turned up and down" : ", turned down only");
  }
  demand += ", true peak at most " + oneDecimal(target.truePeakCeilingDBTP) + " dBTP";
  if (target.maxShortTermLUFS)
    demand += ", short-term at most " + oneDecimal(*target.maxShortTermLUFS) + " LUFS";
  if (target.maxSpeechPercentage)
    demand += ", for less than " + oneDecimal(*target.maxSpeechPercentage) + " % of speech";
  if (target.noiseFloorMaxDBRMS)
    demand += ", noise floor at most " + oneDecimal(*target.noiseFloorMaxDBRMS) + " dB RMS";
  return demand + ".";
}

std::string measuredText(const LoudnessTarget& target,
                         const LoudnessTargetMeasurement& measurement) {
  const auto level = LoudnessTargetEvaluator::judgedLevel(target, measurement);
  if (!level) return " Not measured.";
  std::string measured =
      " Measured: " + oneDecimal(*level) + " " + std::string(unitText(target.source));
  if (measurement.truePeakDBTP) measured += ", " + oneDecimal(*measurement.truePeakDBTP) + " dBTP";
  if (target.maxShortTermLUFS && measurement.maxShortTermLUFS)
    measured += ", short-term " + oneDecimal(*measurement.maxShortTermLUFS) + " LUFS";
  if (target.noiseFloorMaxDBRMS && measurement.noiseFloorDBRMS)
    measured += ", noise floor " + oneDecimal(*measurement.noiseFloorDBRMS) + " dB RMS";
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

std::string_view rawValue(NotJudgedReason reason) noexcept {
  return row(reason).name;
}

std::string_view text(NotJudgedReason reason) noexcept {
  return row(reason).text;
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

std::vector<NonCompliantVerdict> LoudnessTargetEvaluator::brokenRules(
    const LoudnessTarget& target, const LoudnessTargetMeasurement& measurement) {
  const auto unjudged = obstacle(target, measurement);
  if (unjudged == NotJudgedReason::tooMuchSpeech) return {};
  const auto level = judgedLevel(target, measurement);
  const auto& truePeak = measurement.truePeakDBTP;
  const float ceiling = target.truePeakCeilingDBTP;
  if (const auto* penalty = std::get_if<PenaltyTreatment>(&target.treatment)) {
    if (unjudged || !truePeak) return {};
    const auto verdict = normalized(target, *penalty, *level, *truePeak);
    if (isMet(verdict)) return {};
    return {{NonComplianceReason::truePeak, *truePeak + verdict.gainDB, ceiling}};
  }
  std::vector<NonCompliantVerdict> broken;
  if (const auto loudness = unjudged ? std::nullopt : brokenTolerance(target, *level))
    broken.push_back(*loudness);
  const auto check = [&](NonComplianceReason reason, std::optional<float> actual,
                         std::optional<float> limit) {
    if (exceeds(actual, limit)) broken.push_back({reason, *actual, *limit});
  };
  check(NonComplianceReason::shortTerm, measurement.maxShortTermLUFS, target.maxShortTermLUFS);
  check(NonComplianceReason::noiseFloor, measurement.noiseFloorDBRMS, target.noiseFloorMaxDBRMS);
  check(NonComplianceReason::truePeak, truePeak, ceiling);
  return broken;
}

std::vector<NotJudgedReason> LoudnessTargetEvaluator::notJudged(
    const LoudnessTarget& target, const LoudnessTargetMeasurement& measurement) {
  std::vector<NotJudgedReason> reasons;
  const auto obstacle = core::obstacle(target, measurement);
  if (obstacle) reasons.push_back(*obstacle);
  if (obstacle == NotJudgedReason::tooMuchSpeech) return reasons;
  if (std::holds_alternative<ComplianceTreatment>(target.treatment)) {
    if (target.maxShortTermLUFS && !measurement.maxShortTermLUFS)
      reasons.push_back(NotJudgedReason::shortTermUnknown);
    if (target.noiseFloorMaxDBRMS && !measurement.noiseFloorDBRMS) {
      if (!measurement.speechPercentage && obstacle != NotJudgedReason::speechUnknown)
        reasons.push_back(NotJudgedReason::speechUnknown);
      reasons.push_back(NotJudgedReason::noiseFloorUnknown);
    }
  }
  // Silence has none, and that is no news.
  if (!measurement.truePeakDBTP && obstacle != NotJudgedReason::tooQuiet)
    reasons.push_back(NotJudgedReason::truePeakUnknown);
  return reasons;
}

LoudnessTargetEvaluation LoudnessTargetEvaluator::evaluate(
    const LoudnessTarget& target, const LoudnessTargetMeasurement& measurement) {
  if (const auto reason = obstacle(target, measurement)) return NotJudgedVerdict{*reason};
  const auto reasons = notJudged(target, measurement);
  if (const auto* penalty = std::get_if<PenaltyTreatment>(&target.treatment)) {
    if (!reasons.empty()) return NotJudgedVerdict{reasons.front()};
    return normalized(target, *penalty, *judgedLevel(target, measurement),
                      *measurement.truePeakDBTP);
  }
  const auto broken = brokenRules(target, measurement);
  if (broken.empty()) {
    if (!reasons.empty()) return NotJudgedVerdict{reasons.front()};
    return CompliantVerdict{};
  }
  if (broken.front().reason != NonComplianceReason::truePeak || isCeilingTheOnlyRule(target))
    return broken.front();
  return CompliantVerdict{.isTruePeakClean = false};
}

bool LoudnessTargetEvaluator::isMet(const LoudnessTargetEvaluation& evaluation) noexcept {
  if (const auto* normalization = std::get_if<NormalizationVerdict>(&evaluation))
    return !normalization->isGainApplied || normalization->isTruePeakClean;
  const auto* compliant = std::get_if<CompliantVerdict>(&evaluation);
  return compliant != nullptr && compliant->isTruePeakClean;
}

std::string LoudnessTargetEvaluator::tooltipText(const LoudnessTarget& target,
                                                 const LoudnessTargetMeasurement& measurement) {
  std::string tooltip = demandText(target) + measuredText(target, measurement);
  const auto evaluation = evaluate(target, measurement);
  std::string_view lead =
      std::holds_alternative<NotJudgedVerdict>(evaluation) ? " Verdict: " : " Also ";
  for (const NotJudgedReason reason : notJudged(target, measurement)) {
    tooltip += std::string(lead) + std::string(text(reason)) + ".";
    lead = " Also ";
  }
  if (!target.provenance.empty()) {
    tooltip += " Source: " + target.provenance;
    tooltip += target.isConfirmed ? "." : " (unconfirmed).";
  }
  return tooltip;
}

}  // namespace orvane::core
