#include "cli/commands/targets_command.h"

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "cli/options/target_options.h"
#include "cli/output/json_output.h"
#include "cli/terminal/terminal_text.h"
#include "cli/terminal/text_table.h"
#include "orvane/report/loudness_target_list.h"
#include "orvane/report/target_verdicts.h"

namespace orvane::cli {
namespace {

using core::LoudnessTarget;
using core::LoudnessTargetMode;

constexpr LoudnessTargetMode kModes[] = {LoudnessTargetMode::music, LoudnessTargetMode::podcast,
                                         LoudnessTargetMode::vod, LoudnessTargetMode::broadcast};

struct TargetsOptions {
  std::optional<LoudnessTargetMode> mode{};
  std::string file{};
  bool json = false;
};

/// What becomes of a file that does not meet the target.
std::string otherwise(const LoudnessTarget& target) {
  const auto* penalty = std::get_if<core::PenaltyTreatment>(&target.treatment);
  if (penalty == nullptr) return "refused";
  return penalty->boostBehaviour == core::BoostBehaviour::symmetric ? "turned up and down"
                                                                    : "turned down";
}

std::string table(const std::vector<LoudnessTarget>& targets, const Console& console) {
  TextTable table({{"ID"},
                   {"Name", TextTable::Alignment::left, 3, true},
                   {"Asks for", TextTable::Alignment::left, 3, true},
                   {"Otherwise", TextTable::Alignment::left, 3, true}},
                  2);
  for (const LoudnessTarget& target : targets)
    table.addRow(
        {{target.id, Style::bold},
         {TerminalText::escaped(target.name) + (target.isConfirmed ? "" : " (unconfirmed)")},
         {TargetVerdicts::demandText(target)},
         {otherwise(target)}});
  return table.text(console);
}

ExitCode runTargets(const TargetsOptions& options, Console& console) {
  std::string text;
  const auto list = [&](const std::string& title, const std::string& note,
                        const std::vector<LoudnessTarget>& targets) {
    if (options.json) {
      for (const auto& target : targets)
        text += LoudnessTargetList::text(target, JsonOutput::kRecordStyle) + "\n";
    } else if (!targets.empty()) {
      text += (text.empty() ? "" : "\n") + console.styled(Style::bold, title) + note + "\n" +
              table(targets, console);
    }
  };
  std::vector<LoudnessTarget> house;
  if (!options.file.empty()) house = readTargetFile(options.file);
  for (const LoudnessTargetMode mode : kModes) {
    if (options.mode && *options.mode != mode) continue;
    list(std::string(TargetVerdicts::modeTitle(mode)),
         "  (--mode " + std::string(rawValue(mode)) + ")",
         core::LoudnessTargetCatalog::targets(mode));
  }
  if (options.mode)
    std::erase_if(house, [&](const auto& target) { return target.mode != *options.mode; });
  list(TerminalText::escaped(options.file), "", house);
  console.print(text);
  return ExitCode::done;
}

}  // namespace

void completeTargetsCommand(CLI::App& command, ChosenCommand& chosen) {
  auto options = std::make_shared<TargetsOptions>();
  command
      .add_option_function<std::string>(
          "--mode", [options](const std::string& name) { options->mode = targetModeNamed(name); },
          "Only those for music, podcast, vod or broadcast")
      ->option_text("MODE")
      ->group("Output");
  addTargetFileOption(command, options->file, "List the targets of a JSON file too");
  command
      .add_flag("--json", options->json,
                "Print one JSON document per target and line, with the source of its figures")
      ->group("Output");
  command.callback([options, &chosen] {
    chosen = [options](Console& console) { return runTargets(*options, console); };
  });
}

}  // namespace orvane::cli
