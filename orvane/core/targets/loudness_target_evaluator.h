#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "orvane/core/targets/loudness_target.h"

namespace orvane::core {

/// The figures that targets are judged on; absent where a figure is unknown or not finite.
struct LoudnessTargetMeasurement {
  std::optional<float> integratedLUFS{};
  std::optional<float> truePeakDBTP{};
  std::optional<float> loudnessRange{};  ///< LU
  std::optional<float> maxShortTermLUFS{};
  std::optional<float> speechGatedLUFS{};
  std::optional<float> speechPercentage{};  ///< 0 … 100; absent when speech was not looked for
  std::optional<float> programRMSDBFS{};
  std::optional<float> noiseFloorDBRMS{};

  bool operator==(const LoudnessTargetMeasurement&) const = default;
};

/// Why a delivery rule is missed.
enum class NonComplianceReason { loudness, truePeak, shortTerm, noiseFloor };

/// "loudness", "truePeak", "shortTerm", "noiseFloor".
ORVANE_API std::string_view rawValue(NonComplianceReason reason) noexcept;

/// The service changes the level.
struct NormalizationVerdict {
  float gainDB = 0;             ///< from the measured level to the reference
  bool isGainApplied = false;   ///< false: plays as it is
  bool isTruePeakClean = true;  ///< whether the true peak stays within the ceiling

  bool operator==(const NormalizationVerdict&) const = default;
};

/// Every rule but perhaps the ceiling is met.
struct CompliantVerdict {
  bool isTruePeakClean = true;

  bool operator==(const CompliantVerdict&) const = default;
};

/// A rule is missed.
struct NonCompliantVerdict {
  NonComplianceReason reason = NonComplianceReason::loudness;
  float actual = 0;  ///< the measured value
  float limit = 0;   ///< the limit it breaks

  bool operator==(const NonCompliantVerdict&) const = default;
};

/// Why nothing can be said about a target.
enum class NotJudgedReason {
  tooQuiet,       ///< the level is unknown or lies at or below −70
  speechUnknown,  ///< speech was not looked for
  noSpeech,       ///< and none was found
  tooMuchSpeech,  ///< the target is for programmes with less
  shortTermUnknown,
  noiseFloorUnknown,
  truePeakUnknown,
};

/// The enumerator's name.
ORVANE_API std::string_view rawValue(NotJudgedReason reason) noexcept;
/// For people: "too quiet to judge", "not judged: no speech found".
ORVANE_API std::string_view text(NotJudgedReason reason) noexcept;

/// What is known breaks no rule, and something that a rule is about is not known.
struct NotJudgedVerdict {
  NotJudgedReason reason = NotJudgedReason::tooQuiet;

  bool operator==(const NotJudgedVerdict&) const = default;
};

using LoudnessTargetEvaluation =
    std::variant<NormalizationVerdict, CompliantVerdict, NonCompliantVerdict, NotJudgedVerdict>;

namespace LoudnessTargetEvaluator {

/// The level that the target is judged on; absent when it was not measured.
ORVANE_API std::optional<float> judgedLevel(const LoudnessTarget& target,
                                            const LoudnessTargetMeasurement& measurement) noexcept;

/// Every rule that the measurement breaks, in the order loudness, short-term loudness, noise floor,
/// true peak. Penalty targets have one: the true peak at the level that the service gives. Levels
/// may exceed a limit by 0.0005, the rounding of 32-bit figures. What was not measured breaks none.
ORVANE_API std::vector<NonCompliantVerdict> brokenRules(
    const LoudnessTarget& target, const LoudnessTargetMeasurement& measurement);

/// Why rules of the target cannot be judged, every reason once, what concerns the level first.
ORVANE_API std::vector<NotJudgedReason> notJudged(const LoudnessTarget& target,
                                                  const LoudnessTargetMeasurement& measurement);

/// Judges a measurement. Penalty targets give a `NormalizationVerdict`: loud material is always
/// turned down, quiet material turned up by symmetric services alone. Compliance targets give the
/// first broken rule; the ceiling is a reason of its own only where it is the target's sole rule.
/// What was not measured is never passed.
ORVANE_API LoudnessTargetEvaluation evaluate(const LoudnessTarget& target,
                                             const LoudnessTargetMeasurement& measurement);

/// Whether the delivery target is met: it was judged, no rule is broken, and the true peak stays
/// within the ceiling where it counts.
ORVANE_API bool isMet(const LoudnessTargetEvaluation& evaluation) noexcept;

/// What the target asks, what was measured, and where the figures come from; plain text.
ORVANE_API std::string tooltipText(const LoudnessTarget& target,
                                   const LoudnessTargetMeasurement& measurement);

}  // namespace LoudnessTargetEvaluator

}  // namespace orvane::core
