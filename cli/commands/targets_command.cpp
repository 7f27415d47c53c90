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
using JsonOutput::Json;
using JsonOutput::number;

constexpr LoudnessTargetMode kModes[] = {LoudnessTargetMode::music, LoudnessTargetMode::podcast,
                                         LoudnessTargetMode::vod, LoudnessTargetMode::broadcast};

struct TargetsOptions {
  std::optional<LoudnessTargetMode> mode{};
  bool json = false;
};

/// Under the names that reports use, and where the figures come from.
Json targetJson(const LoudnessTarget& target) {
  Json document = {{"schemaVersion", JsonOutput::kSchemaVersion},
                   {"id", target.id},
                   {"name", target.name},
                   {"mode", rawValue(target.mode)},
                   {"source", rawValue(target.source)}};
  const auto* compliance = std::get_if<core::ComplianceTreatment>(&target.treatment);
  document["treatmentKind"] = compliance != nullptr ? "compliance" : "penalty";
  document["referenceLUFS"] = number(target.referenceLUFS);
  const auto add = [&document](const char* key, const std::optional<float>& value) {
    if (value) document[key] = number(*value);
  };
  if (compliance != nullptr) add("toleranceLU", compliance->toleranceLU);
  document["truePeakCeilingDBTP"] = number(target.truePeakCeilingDBTP);
  if (const auto* penalty = std::get_if<core::PenaltyTreatment>(&target.treatment))
    document["boostBehaviour"] = rawValue(penalty->boostBehaviour);
  add("noiseFloorMaxDBRMS", target.noiseFloorMaxDBRMS);
  add("maxShortTermLUFS", target.maxShortTermLUFS);
  document["provenance"] = target.provenance;
  document["isConfirmed"] = target.isConfirmed;
  return document;
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
                   {"Name", TextTable::Alignment::left, 3},
                   {"Asks for", TextTable::Alignment::left, 3},
                   {"Otherwise", TextTable::Alignment::left, 3}},
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
        text += JsonOutput::line(targetJson(target));
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
