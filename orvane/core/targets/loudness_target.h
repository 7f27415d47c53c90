#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane::core {

/// What kind of delivery a target belongs to.
enum class LoudnessTargetMode { music, podcast, vod, broadcast };

/// "music", "podcast", "vod", "broadcast".
ORVANE_API std::string_view rawValue(LoudnessTargetMode mode) noexcept;
ORVANE_API std::optional<LoudnessTargetMode> loudnessTargetModeFromRawValue(
    std::string_view text) noexcept;

/// The measure a target is judged on.
enum class LoudnessTargetSource {
  integrated,   ///< programme loudness, LUFS
  dialogGated,  ///< loudness of the speech, shown as LKFS
  rms,          ///< programme RMS, dB
};

/// "integrated", "dialogGated", "rms".
ORVANE_API std::string_view rawValue(LoudnessTargetSource source) noexcept;
ORVANE_API std::optional<LoudnessTargetSource> loudnessTargetSourceFromRawValue(
    std::string_view text) noexcept;
/// "LUFS", "LKFS" or "dB RMS".
ORVANE_API std::string_view unitText(LoudnessTargetSource source) noexcept;

/// What a service that changes the level does with quiet material.
enum class BoostBehaviour { symmetric, turnsDownOnly };

/// "symmetric", "turnsDownOnly".
ORVANE_API std::string_view rawValue(BoostBehaviour behaviour) noexcept;
ORVANE_API std::optional<BoostBehaviour> boostBehaviourFromRawValue(std::string_view text) noexcept;

/// A delivery rule that is passed or failed.
struct ComplianceTreatment {
  /// Allowed deviation from the reference, in LU (dB for RMS targets). Without one the reference is
  /// advice and only the limits are rules.
  std::optional<float> toleranceLU{};

  bool operator==(const ComplianceTreatment&) const = default;
};

/// The service changes the level of what does not meet the reference.
struct PenaltyTreatment {
  BoostBehaviour boostBehaviour = BoostBehaviour::symmetric;

  bool operator==(const PenaltyTreatment&) const = default;
};

using LoudnessTargetTreatment = std::variant<ComplianceTreatment, PenaltyTreatment>;

/// One delivery specification.
struct LoudnessTarget {
  std::string id{};
  std::string name{};
  LoudnessTargetMode mode = LoudnessTargetMode::music;
  LoudnessTargetSource source = LoudnessTargetSource::integrated;
  LoudnessTargetTreatment treatment{};
  float referenceLUFS = 0;        ///< LUFS, LKFS or dB RMS, by `source`
  float truePeakCeilingDBTP = 0;  ///< dBTP
  std::optional<float> noiseFloorMaxDBRMS{};
  std::optional<float> maxShortTermLUFS{};
  /// The target is for programmes with less speech than this share alone, 0 … 100.
  std::optional<float> maxSpeechPercentage{};
  /// Where the figures come from and when they were published or read, one clause for people.
  std::string provenance{};
  /// False: the source is second-hand or incomplete, and the tooltip says so.
  bool isConfirmed = true;

  bool operator==(const LoudnessTarget&) const = default;

  /// It cannot be judged unless speech was looked for.
  bool needsSpeech() const noexcept {
    return source == LoudnessTargetSource::dialogGated || noiseFloorMaxDBRMS || maxSpeechPercentage;
  }
};

/// The delivery specifications that the product knows.
namespace LoudnessTargetCatalog {

/// All targets, by mode, in the order in which they are listed everywhere.
ORVANE_API const std::vector<LoudnessTarget>& all();
ORVANE_API std::vector<LoudnessTarget> targets(LoudnessTargetMode mode);
/// Absent for an identifier that is not in the catalogue.
ORVANE_API std::optional<LoudnessTarget> target(std::string_view id);

}  // namespace LoudnessTargetCatalog

/// The user's choice of targets.
struct LoudnessTargetSelection {
  /// Targets that a report shows at most.
  static constexpr std::size_t kMaximumActiveTargets = 4;

  LoudnessTargetMode mode = LoudnessTargetMode::music;
  /// Identifiers; absent for the first ones of the mode.
  std::optional<std::vector<std::string>> targetIDs{};
  /// Targets that stand behind those of the catalogue, with identifiers of their own.
  std::vector<LoudnessTarget> houseTargets{};

  bool operator==(const LoudnessTargetSelection&) const = default;

  /// Absent for an identifier that neither the catalogue nor the house has.
  ORVANE_API std::optional<LoudnessTarget> target(std::string_view id) const;

  /// The chosen targets in catalogue order, each once, at most `kMaximumActiveTargets`. Identifiers
  /// that nobody has are passed over.
  ORVANE_API std::vector<LoudnessTarget> activeTargets() const;
};

}  // namespace orvane::core
