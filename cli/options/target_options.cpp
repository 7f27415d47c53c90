#include "cli/options/target_options.h"

#include <algorithm>

#include "cli/usage_error.h"

namespace orvane::cli {
namespace {

constexpr const char* kGroup = "Delivery targets";

void setTargets(const std::string& list, std::vector<std::string>& ids) {
  for (const auto& id : CLI::detail::split(list, ',')) {
    if (!core::LoudnessTargetCatalog::target(id))
      throw UsageError("--targets: unknown target '" + id + "'; \"orvane targets\" lists them");
    if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
  }
}

}  // namespace

core::LoudnessTargetSelection TargetOptions::selection() const {
  if (ids.empty()) return {.mode = mode.value_or(core::LoudnessTargetMode::music)};
  const auto first = core::LoudnessTargetCatalog::target(ids.front());
  return {.mode = mode.value_or(first->mode), .targetIDs = ids};
}

void TargetOptions::requireSense(bool isSpeechKnown) const {
  constexpr auto kMost = core::LoudnessTargetSelection::kMaximumActiveTargets;
  if (ids.size() > kMost)
    throw UsageError("--targets takes at most " + std::to_string(kMost) + " targets");
  if (!enforce) return;
  if (!areRequested()) throw UsageError("--enforce needs --targets or --mode");
  // What is not measured is not missed either, so the check would pass whatever the file holds.
  if (!isSpeechKnown && needSpeech())
    throw UsageError("the targets are about dialogue; --enforce needs --speech or --dialogue");
}

bool TargetOptions::needSpeech() const {
  const auto targets = selection().activeTargets();
  return std::any_of(targets.begin(), targets.end(), [](const core::LoudnessTarget& target) {
    return target.source == core::LoudnessTargetSource::dialogGated;
  });
}

core::LoudnessTargetMode targetModeNamed(const std::string& name) {
  const auto mode = core::loudnessTargetModeFromRawValue(name);
  if (!mode)
    throw UsageError("--mode is one of music, podcast, vod, broadcast, not '" + name + "'");
  return *mode;
}

void addTargetOptions(CLI::App& command, TargetOptions& options) {
  command
      .add_option_function<std::string>(
          "--targets", [&options](const std::string& list) { setTargets(list, options.ids); },
          "Judge by these targets; \"orvane targets\" lists them")
      ->option_text("ID,…")
      ->group(kGroup);
  command
      .add_option_function<std::string>(
          "--mode", [&options](const std::string& name) { options.mode = targetModeNamed(name); },
          "Judge by the first targets for music, podcast, vod or broadcast, and report what "
          "matters "
          "there")
      ->option_text("MODE")
      ->group(kGroup);
  command
      .add_flag("--enforce", options.enforce,
                "End with exit code 3 when a requested target is missed")
      ->group(kGroup);
}

}  // namespace orvane::cli
