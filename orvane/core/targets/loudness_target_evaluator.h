#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "orvane/core/targets/loudness_target.h"

namespace orvane::core {

/// The figures that targets are judged on; absent where a figure is unknown or not finite.
struct LoudnessTargetMeasurement {
  std::optional<float> integratedLUFS{};
  std::optional<float> truePeakDBTP{};
  std::optional<float> loudnessRange{};  ///< LU
  std::optional<float> maxShortTermLUFS{};
  std::optional<float> speechGatedLUFS{};
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

/// The judged level is unknown or lies at or below −70.
struct TooQuietVerdict {
  bool operator==(const TooQuietVerdict&) const = default;
};

using LoudnessTargetEvaluation =
    std::variant<NormalizationVerdict, CompliantVerdict, NonCompliantVerdict, TooQuietVerdict>;

namespace LoudnessTargetEvaluator {

/// The level that the target is judged on; absent when it was not measured.
ORVANE_API std::optional<float> judgedLevel(const LoudnessTarget& target,
                                            const LoudnessTargetMeasurement& measurement) noexcept;

/// Judges a measurement. Penalty targets give a `NormalizationVerdict`: loud material is always
/// turned down, quiet material turned up by symmetric services alone. Compliance targets check
/// loudness, short-term loudness and noise floor in this order; what was not measured breaks no
/// rule. The ceiling is a reason of its own only where it is the target's sole rule. Levels may
/// exceed a limit by 0.0005, the rounding of 32-bit figures.
ORVANE_API LoudnessTargetEvaluation evaluate(const LoudnessTarget& target,
                                             const LoudnessTargetMeasurement& measurement) noexcept;

/// Whether the delivery target is missed: a rule is broken, or the true peak exceeds the ceiling
/// where it counts. What is too quiet to judge misses nothing.
ORVANE_API bool isMissed(const LoudnessTargetEvaluation& evaluation) noexcept;

/// What the target asks, what was measured, and where the figures come from; plain text.
ORVANE_API std::string tooltipText(const LoudnessTarget& target,
                                   const LoudnessTargetMeasurement& measurement);

}  // namespace LoudnessTargetEvaluator

}  // namespace orvane::core
