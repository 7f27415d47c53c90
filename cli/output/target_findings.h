#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/exit_code.h"
#include "cli/terminal/console.h"
#include "orvane/report/target_verdicts.h"

namespace orvane::cli {

namespace JsonOutput {
class Document;
}

/// How a report stands to its delivery targets, as the program tells it.
namespace TargetFindings {

/// On the target with that identifier; absent where it was not judged.
std::optional<TargetVerdict> of(const std::optional<OrvaneReport>& report, std::string_view id);

/// The verdict in a word: "pass", "normalize", "fail" or "unjudged".
std::string word(const TargetVerdict& verdict);

/// How far the level lies above the target's own, in its unit; absent without a level.
std::optional<float> deltaLU(const TargetVerdict& verdict);

/// A row per target, and one more for each further rule that it breaks; an empty line before.
std::string table(const OrvaneReport& report, const Console& console);

/// "loudnessTargets" as in the report, and "verdicts": an object per target, with the level judged,
/// every broken rule, and the reason why nothing could be judged.
void addJSON(JsonOutput::Document& document, const OrvaneReport& report);
/// The same as a document of its own, in one line.
std::string json(const OrvaneReport& report, const std::string& url);

/// What `--enforce` demands of a report.
enum class Demand { everyTarget, oneTarget };

struct Enforcement {
  bool isMet = false;
  std::vector<std::string> sentences{};  ///< which targets are missed, or which one suffices

  /// Prints them to standard error.
  ExitCode tell(Console& console) const;
};

/// `name` is what people call the file.
Enforcement enforce(const OrvaneReport& report, Demand demand, const std::string& name);

/// Likewise of a file that an earlier run has judged, by the words for these targets.
Enforcement enforceKept(std::span<const std::string> targetIDs, std::span<const std::string> words,
                        Demand demand, const std::string& name);

}  // namespace TargetFindings
}  // namespace orvane::cli
