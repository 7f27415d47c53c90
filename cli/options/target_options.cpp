#include "cli/options/target_options.h"

#include <algorithm>

#include "cli/options/text_input.h"
#include "cli/usage_error.h"
#include "orvane/platform/error.h"
#include "orvane/report/loudness_target_list.h"

namespace orvane::cli {
namespace {

constexpr const char* kGroup = "Delivery targets";

void setTargets(const std::string& list, std::vector<std::string>& ids) {
  for (const auto& id : CLI::detail::split(list, ','))
    if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
}

}  // namespace

std::vector<core::LoudnessTarget> readTargetFile(const std::string& name) {
  try {
    return LoudnessTargetList::read(readTextInput(name));
  } catch (const DecodingError& error) {
    throw PlatformError(shownTextInput(name), error.errorDescription());
  }
}

std::vector<std::filesystem::path> TargetOptions::filesRead() const {
  if (file.empty()) return {};
  return {file};
}

void TargetOptions::settle() {
  if (enforce && !areRequested())
    throw UsageError("--enforce needs --targets, --mode or --target-file");
  if (!file.empty()) house_ = readTargetFile(file);
  const bool isChosen = !ids.empty();
  if (!isChosen)
    for (const auto& target : house_) ids.push_back(target.id);
  for (const auto& id : ids)
    if (!selection().target(id))
      throw UsageError("--targets: unknown target '" + id + "'; \"orvane targets\" lists them");
  constexpr auto kMost = core::LoudnessTargetSelection::kMaximumActiveTargets;
  if (ids.size() > kMost)
    throw UsageError(isChosen ? "--targets takes at most " + std::to_string(kMost) + " targets"
                              : "'" + file + "' holds more than " + std::to_string(kMost) +
                                    " targets; --targets chooses from them");
}

core::LoudnessTargetSelection TargetOptions::selection() const {
  core::LoudnessTargetSelection selection{.mode = mode.value_or(core::LoudnessTargetMode::music),
                                          .houseTargets = house_};
  if (ids.empty()) return selection;
  selection.targetIDs = ids;
  const auto first = selection.target(ids.front());
  if (!mode && first) selection.mode = first->mode;
  return selection;
}

bool TargetOptions::needSpeech() const {
  return std::ranges::any_of(selection().activeTargets(), &core::LoudnessTarget::needsSpeech);
}

bool TargetOptions::needNoiseFloor() const {
  return std::ranges::any_of(selection().activeTargets(), [](const core::LoudnessTarget& target) {
    return target.noiseFloorMaxDBRMS.has_value();
  });
}

std::optional<TargetFindings::Demand> TargetOptions::enforced() const {
  if (!enforce) return std::nullopt;
  return ids.empty() ? TargetFindings::Demand::oneTarget : TargetFindings::Demand::everyTarget;
}

core::LoudnessTargetMode targetModeNamed(const std::string& name) {
  const auto mode = core::loudnessTargetModeFromRawValue(name);
  if (!mode)
    throw UsageError("--mode is one of music, podcast, vod, broadcast, not '" + name + "'");
  return *mode;
}

void addTargetFileOption(CLI::App& command, std::string& file, const char* description) {
  command
      .add_option_function<std::string>(
          "--target-file",
          [&file](const std::string& name) {
            if (name.empty() || name == "-") throw UsageError("--target-file names no file");
            file = name;
          },
          description)
      ->option_text("F")
      ->group(kGroup);
}

void addTargetOptions(CLI::App& command, TargetOptions& options) {
  command
      .add_option_function<std::string>(
          "--targets", [&options](const std::string& list) { setTargets(list, options.ids); },
          "Judge by these targets; \"orvane targets\" lists them")
      ->option_text("ID,…")
      ->group(kGroup);
  addTargetFileOption(command, options.file,
                      "Judge by the targets of a JSON file, or by those of them that --targets "
                      "names");
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
                "End with exit code 3 unless every target is met; of a mode alone one suffices")
      ->group(kGroup);
}

}  // namespace orvane::cli
