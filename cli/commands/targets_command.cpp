#include "cli/commands/targets_command.h"

#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "cli/options/target_options.h"
#include "cli/output/json_output.h"
#include "cli/terminal/text_table.h"
#include "orvane/report/target_verdicts.h"

namespace orvane::cli {
namespace {

using core::LoudnessTarget;
using core::LoudnessTargetMode;

constexpr LoudnessTargetMode kModes[] = {LoudnessTargetMode::music, LoudnessTargetMode::podcast,
                                         LoudnessTargetMode::vod, LoudnessTargetMode::broadcast};

struct TargetsOptions {
  std::optional<LoudnessTargetMode> mode{};
  bool json = false;
};

/// Under the names that reports use, and where the figures come from.
std::string targetJson(const LoudnessTarget& target) {
  const auto* compliance = std::get_if<core::ComplianceTreatment>(&target.treatment);
  const auto* penalty = std::get_if<core::PenaltyTreatment>(&target.treatment);
  JsonOutput::Document document;
  const auto addKnown = [&](const char* key, const std::optional<float>& value) {
    if (value) document.add(key, *value);
  };
  document.add("id", target.id);
  document.add("name", target.name);
  document.add("mode", rawValue(target.mode));
  document.add("source", rawValue(target.source));
  document.add("treatmentKind", compliance != nullptr ? "compliance" : "penalty");
  document.add("referenceLUFS", target.referenceLUFS);
  if (compliance != nullptr) addKnown("toleranceLU", compliance->toleranceLU);
  document.add("truePeakCeilingDBTP", target.truePeakCeilingDBTP);
  if (penalty != nullptr) document.add("boostBehaviour", rawValue(penalty->boostBehaviour));
  addKnown("noiseFloorMaxDBRMS", target.noiseFloorMaxDBRMS);
  addKnown("maxShortTermLUFS", target.maxShortTermLUFS);
  document.add("provenance", target.provenance);
  document.add("isConfirmed", target.isConfirmed);
  return document.takeLine();
}

/// What becomes of a file that does not meet the target.
std::string otherwise(const LoudnessTarget& target) {
  const auto* penalty = std::get_if<core::PenaltyTreatment>(&target.treatment);
  if (penalty == nullptr) return "refused";
  return penalty->boostBehaviour == core::BoostBehaviour::symmetric ? "turned up and down"
                                                                    : "turned down";
}

std::string table(LoudnessTargetMode mode, const Console& console) {
  TextTable table({{"ID"},
                   {"Name", TextTable::Alignment::left, 3, true},
                   {"Asks for", TextTable::Alignment::left, 3, true},
                   {"Otherwise", TextTable::Alignment::left, 3, true}},
                  2);
  for (const LoudnessTarget& target : core::LoudnessTargetCatalog::targets(mode))
    table.addRow({{target.id, Style::bold},
                  {target.name + (target.isConfirmed ? "" : " (unconfirmed)")},
                  {TargetVerdicts::demandText(target)},
                  {otherwise(target)}});
  return console.styled(Style::bold, TargetVerdicts::modeTitle(mode)) + "  (--mode " +
         std::string(rawValue(mode)) + ")\n" + table.text(console);
}

ExitCode runTargets(const TargetsOptions& options, Console& console) {
  std::string text;
  for (const LoudnessTargetMode mode : kModes) {
    if (options.mode && *options.mode != mode) continue;
    if (options.json) {
      for (const LoudnessTarget& target : core::LoudnessTargetCatalog::targets(mode))
        text += targetJson(target);
    } else {
      text += (text.empty() ? "" : "\n") + table(mode, console);
    }
  }
  console.print(text);
  return ExitCode::done;
}

}  // namespace

void addTargetsCommand(CLI::App& program, ChosenCommand& chosen) {
  auto options = std::make_shared<TargetsOptions>();
  CLI::App* command =
      program.add_subcommand("targets", "List the delivery targets that files can be judged by");
  command
      ->add_option_function<std::string>(
          "--mode", [options](const std::string& name) { options->mode = targetModeNamed(name); },
          "Only those for music, podcast, vod or broadcast")
      ->option_text("MODE")
      ->group("Output");
  command
      ->add_flag("--json", options->json,
                 "Print one JSON document per target and line, with the source of its figures")
      ->group("Output");
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runTargets(*options, console); };
  });
}

}  // namespace orvane::cli
