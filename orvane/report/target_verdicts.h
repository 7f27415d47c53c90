#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "orvane/core/targets/loudness_target.h"
#include "orvane/core/targets/loudness_target_evaluator.h"
#include "orvane/platform/export.h"
#include "orvane/report/orvane_report.h"

namespace orvane {

/// One of a report's targets, judged on the report's figures.
struct TargetVerdict {
  std::string name{};             ///< as the report has it
  core::LoudnessTarget target{};  ///< the catalogue's, else what the report kept of it
  core::LoudnessTargetMeasurement measurement{};
  core::LoudnessTargetEvaluation evaluation{};
  std::vector<core::NonCompliantVerdict> brokenRules{};  ///< all of them
  std::vector<core::NotJudgedReason> notJudged{};        ///< why rules could not be judged

  bool operator==(const TargetVerdict&) const = default;
};

/// What reports and programs show of delivery targets.
namespace TargetVerdicts {

/// "Music / Streaming", "Podcast / Spoken Word", "VOD", "Broadcast".
ORVANE_API std::string_view modeTitle(core::LoudnessTargetMode mode);

/// In the order of the report. The figures are those of the selection when the report has one.
ORVANE_API std::vector<TargetVerdict> of(const OrvaneReport& report);

/// Judges a report anew, by other targets than before, on the figures that it holds.
ORVANE_API void judge(OrvaneReport& report, const core::LoudnessTargetSelection& selection);

/// What a target asks, in one line: "-23±0.5 LUFS · ≤ -1 dBTP".
ORVANE_API std::string demandText(const core::LoudnessTarget& target);

/// A verdict in a word and a short line.
struct Badge {
  std::string_view kind{};  ///< "pass", "normalize", "fail" or "low" (too quiet to judge)
  std::string status{};     ///< "Compliant ✓"; "-" for "low"

  bool operator==(const Badge&) const = default;
};

ORVANE_API Badge badge(const core::LoudnessTarget& target,
                       const core::LoudnessTargetEvaluation& evaluation);

/// A verdict at full length: the badge's status, or why there is none, and in a line each what that
/// leaves out: broken rules, "TP (-0.1 dBTP)", and why others could not be judged.
ORVANE_API std::vector<std::string> lines(const TargetVerdict& verdict);

}  // namespace TargetVerdicts
}  // namespace orvane
