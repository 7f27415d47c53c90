#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include "cli/commands/raw_commands.h"
#include "cli/options/source_options.h"
#include "cli/output/abandoned_files.h"
#include "cli/output/json_output.h"
#include "cli/terminal/terminal_text.h"
#include "cli/terminal/text_table.h"
#include "cli/usage_error.h"
#include "orvane/platform/error.h"
#include "orvane/rawpcm/raw_pcm_coding.h"
#include "orvane/rawpcm/raw_pcm_preset_store.h"
#include "orvane/text/caseless.h"
#include "orvane/text/utf8.h"

namespace orvane::cli {
namespace {

using Presets = std::vector<RawPCMPreset>;

struct PresetOptions {
  std::string name{};
  std::optional<RawPCMFormat> format{};
  bool force = false;
  bool json = false;
};

RawPCMPresetStore store() {
  return RawPCMPresetStore(RawPCMPresetStore::defaultDirectory());
}

/// The first of that name.
template <typename List>
auto find(List& presets, const std::string& name) {
  return std::find_if(presets.begin(), presets.end(),
                      [&](const auto& each) { return areCaselessEqual(each.name, name); });
}

template <typename List>
auto require(List& presets, const std::string& name) {
  const auto found = find(presets, name);
  if (found == presets.end())
    throw PlatformError(store().fileURL, "there is no preset called '" + name + "'");
  return found;
}

/// Lets `change` edit the list that is kept.
template <typename Change>
void update(Console& console, Change change) {
  warnOfAbandonedFiles({store().fileURL}, console);
  store().update(change);
}

std::string presetJson(const RawPCMPreset& preset) {
  JsonOutput::Document document;
  document.addJSON("preset", json::encode(preset, JsonOutput::kRecordStyle));
  return document.takeLine();
}

/// In one line, what became of it included.
void tell(const RawPCMPreset& preset, const char* what, const PresetOptions& options,
          Console& console) {
  console.print(options.json ? presetJson(preset)
                             : TerminalText::escaped(preset.name) + ": " + what +
                                   preset.format.summary() + "\n");
}

ExitCode runList(const PresetOptions& options, Console& console) {
  const Presets presets = store().loadIntact();
  if (options.json) {
    JsonOutput::Document document;
    document.addJSON("presets", json::encode(presets, JsonOutput::kRecordStyle));
    console.print(document.takeLine());
    return ExitCode::done;
  }
  TextTable table({{"Name"}, {"Format"}});
  for (const auto& preset : presets)
    table.addRow({{TerminalText::escaped(preset.name), Style::bold}, {preset.format.summary()}});
  console.print(presets.empty() ? "There are no presets; \"orvane raw presets save\" makes one.\n"
                                : table.text(console));
  return ExitCode::done;
}

ExitCode runShow(const PresetOptions& options, Console& console) {
  const Presets presets = store().loadIntact();
  const auto& preset = *require(presets, options.name);
  tell(preset, "", options, console);
  if (!options.json) console.print("--raw " + rawOptionText(preset.format) + "\n");
  return ExitCode::done;
}

ExitCode runSave(const PresetOptions& options, Console& console) {
  if (options.name.empty()) throw UsageError("a preset needs a name");
  if (!options.format) throw UsageError("--raw is missing; it says what is saved");
  RawPCMPreset saved{UUID::random(), wellFormedUTF8(options.name), *options.format};
  update(console, [&](Presets& presets) {
    const auto existing = find(presets, saved.name);
    if (existing == presets.end()) return presets.push_back(saved);
    if (!options.force)
      throw PlatformError(store().fileURL, "there is a preset called '" + existing->name +
                                               "' already; --force replaces it");
    saved.id = existing->id;
    *existing = saved;
  });
  tell(saved, "saved, ", options, console);
  return ExitCode::done;
}

ExitCode runRemove(const PresetOptions& options, Console& console) {
  RawPCMPreset removed;
  update(console, [&](Presets& presets) {
    const auto found = require(presets, options.name);
    removed = *found;
    presets.erase(found);
  });
  tell(removed, "removed, ", options, console);
  return ExitCode::done;
}

using Run = ExitCode (*)(const PresetOptions&, Console&);

CLI::App* addCommand(CLI::App& presets, ChosenCommand& chosen,
                     const std::shared_ptr<PresetOptions>& options, const char* name,
                     const char* description, Run run) {
  CLI::App* command = presets.add_subcommand(name, description);
  if (run != runList)
    command->add_option("NAME", options->name, "Its name, in any case of letters")->required();
  command->add_flag("--json", options->json, "Print one JSON document")->group("Output");
  command->callback([options, &chosen, run] {
    chosen = [options, run](Console& console) { return run(*options, console); };
  });
  return command;
}

}  // namespace

void addRawPresetsCommand(CLI::App& raw, ChosenCommand& chosen) {
  CLI::App* presets =
      raw.add_subcommand("presets", "Keep formats of headerless PCM under names, for --preset");
  presets->require_subcommand(1);
  const auto options = std::make_shared<PresetOptions>();
  addCommand(*presets, chosen, options, "list", "List all presets", runList);
  CLI::App* save = addCommand(*presets, chosen, options, "save", "Keep a format", runSave);
  addRawOptions(*save, options->format);
  save->add_flag("--force", options->force, "Replace a preset of that name")->group("Output");
  addCommand(*presets, chosen, options, "show", "Show a preset", runShow);
  addCommand(*presets, chosen, options, "remove", "Forget a preset", runRemove);
}

}  // namespace orvane::cli
