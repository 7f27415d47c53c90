#include <algorithm>
#include <memory>

#include "cli/commands/dialogue_commands.h"
#include "cli/commands/dialogue_sidecars.h"
#include "cli/options/source_options.h"
#include "cli/options/text_input.h"
#include "cli/output/abandoned_files.h"
#include "cli/output/dialogue_timeline.h"
#include "cli/output/text_output.h"
#include "cli/terminal/terminal_text.h"
#include "cli/usage_error.h"
#include "orvane/edit/edit_output_guard.h"
#include "orvane/platform/error.h"
#include "orvane/speech/dialogue/dialogue_timeline_formats.h"

namespace orvane::cli {
namespace {

namespace formats = DialogueTimelineFormats;

constexpr const char* kStandardStream = "-";

struct ImportOptions {
  std::string list{};
  std::string file{};
  std::string format{};
  SourceOptions source{};
  DialogueSidecars sidecars{};
  bool force = false;
  bool quiet = false;
};

struct ExportOptions {
  std::string file{};
  std::string format{};
  DialogueSidecars sidecars{};
  TextOutputOptions output{};
};

/// Asks for the same errors as commands that read many files.
InputName audioNamed(const std::string& name) {
  return filesWithSidecars({.names = {name}}).front();
}

std::vector<DialogueRegion> regionsIn(const ImportOptions& options) {
  const auto text = readTextInput(options.list);
  const auto format = formats::formatFromName(options.format).value_or(formats::formatOf(text));
  try {
    return formats::regions(text, format);
  } catch (const DialogueTimelineError& error) {
    throw PlatformError(shownTextInput(options.list), error.errorDescription());
  }
}

ExitCode runImport(const ImportOptions& options, Console& console) {
  const auto file = audioNamed(options.file);
  auto regions = regionsIn(options);
  const auto audio = describeAudio(file, options.source.rawFormat, options.source.streamIndex);
  if (options.list != kStandardStream)
    EditOutputGuard::assertNotInPlace(options.list, options.sidecars.urlOf(file));
  options.sidecars.requireReplaceable(file, options.force, !regions.empty());
  warnOfAbandonedFiles(options.sidecars.urls({file}), console);
  const auto isOutside = [&](const auto& region) { return region.end > audio.durationSeconds; };
  if (std::any_of(regions.begin(), regions.end(), isOutside))
    console.warning(file.shown() + ": some regions reach beyond the end of the file");
  const auto sidecar =
      options.sidecars.save(file, audio, std::move(regions), DialogueRegionSource::imported);
  if (!options.quiet)
    console.print(TerminalText::escaped(file.shown()) + ": " + DialogueTimeline::summary(sidecar) +
                  "\n");
  return ExitCode::done;
}

/// By `--format`, else by the name of the output.
formats::Format exportFormat(const ExportOptions& options) {
  if (const auto named = formats::formatFromName(options.format)) return *named;
  const bool isText = std::filesystem::path(options.output.file).extension() == ".txt";
  return isText ? formats::Format::audacityLabels : formats::Format::csv;
}

ExitCode runExport(const ExportOptions& options, Console& console) {
  const auto file = audioNamed(options.file);
  const auto text = formats::text(options.sidecars.load(file).regions, exportFormat(options));
  if (!options.output.isStandardOutput()) {
    EditOutputGuard::assertNotInPlace(file.path, options.output.file);
    EditOutputGuard::assertNotInPlace(options.sidecars.urlOf(file), options.output.file);
  }
  writeText(options.output, text, console);
  return ExitCode::done;
}

CLI::Option* addFormat(CLI::App& command, std::string& format, const std::string& description) {
  return command.add_option("--format", format, description)
      ->option_text("csv|audacity")
      ->check(CLI::IsMember({"csv", "audacity"}));
}

}  // namespace

void addDialogueImportCommand(CLI::App& dialogue, ChosenCommand& chosen) {
  auto options = std::make_shared<ImportOptions>();
  CLI::App* command = dialogue.add_subcommand(
      "import", "Take the regions of FILE from LIST, a CSV file or an Audacity label track");
  command->add_option("LIST", options->list, "Start, end and label of each region, in seconds")
      ->required();
  command->add_option("FILE", options->file, "The audio that they belong to")->required();
  addFormat(*command, options->format, "What LIST is, when its content does not tell it right")
      ->group("Input");
  addSourceOptions(*command, options->source);
  addSidecarsOption(*command, options->sidecars, "Output");
  command->add_flag("--force", options->force, "Replace regions that were changed or imported, too")
      ->group("Output");
  command->add_flag("-q,--quiet", options->quiet, "No summary")->group("Output");
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runImport(*options, console); };
  });
}

void addDialogueExportCommand(CLI::App& dialogue, ChosenCommand& chosen) {
  auto options = std::make_shared<ExportOptions>();
  CLI::App* command =
      dialogue.add_subcommand("export", "Write the regions as CSV or as an Audacity label track");
  command->add_option("FILE", options->file, "The audio that they belong to")->required();
  addFormat(*command, options->format, "How to write; by default labels to NAME.txt, else CSV")
      ->group("Output");
  addSidecarsOption(*command, options->sidecars, "Input");
  addTextOutputOptions(*command, options->output);
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runExport(*options, console); };
  });
}

}  // namespace orvane::cli
