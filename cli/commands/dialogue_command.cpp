#include "cli/commands/dialogue_command.h"

#include <cmath>
#include <memory>

#include "cli/commands/dialogue_commands.h"
#include "cli/commands/dialogue_sidecar_file.h"
#include "cli/commands/file_work.h"
#include "cli/output/dialogue_timeline.h"
#include "cli/output/number_text.h"
#include "cli/terminal/terminal_text.h"
#include "orvane/platform/error.h"
#include "orvane/speech/dialogue/dialogue_sidecar_io.h"

namespace orvane::cli {
namespace {

struct ShowOptions {
  FileList::Request files{};
  bool json = false;
};

/// A sentence when the audio is not what the regions were made for; empty also when it cannot be
/// told, as for headerless files.
std::string mismatch(const InputName& file, const DialogueSidecar& sidecar) {
  DialogueSidecar::AudioFileInfo now;
  try {
    now = DialogueSidecarFile::describe(file, std::nullopt, std::nullopt);
  } catch (const Error&) {
    return "";
  }
  constexpr double kTolerance = 0.001;  // seconds; less is a matter of rounding
  const auto& then = sidecar.audioFile;
  if (now.sampleRate == then.sampleRate &&
      std::abs(now.durationSeconds - then.durationSeconds) <= kTolerance)
    return "";
  const auto text = [](const DialogueSidecar::AudioFileInfo& info) {
    return NumberText::duration(info.durationSeconds) + " at " +
           NumberText::sampleRate(info.sampleRate);
  };
  return file.shown() + ": the regions were made for " + text(then) + ", the file has " + text(now);
}

ExitCode runShow(const ShowOptions& options, Console& console) {
  const auto files = DialogueSidecarFile::resolve(options.files);
  bool isFirst = true;
  return FileWork::run(
      files, {.json = options.json}, console, [&](const InputName& file) -> FileWork::Report {
        const auto sidecar = DialogueSidecarFile::load(file);
        const auto warning = mismatch(file, sidecar);
        const auto text = options.json ? DialogueTimeline::json(file, sidecar)
                                       : DialogueTimeline::block(file, sidecar, console);
        return [&, warning, text] {
          if (!warning.empty()) console.warning(warning);
          console.print(isFirst || options.json ? text : "\n" + text);
          isFirst = false;
        };
      });
}

ExitCode runClear(const FileList::Request& request, Console& console) {
  const auto files = DialogueSidecarFile::resolve(request);
  return FileWork::run(files, {}, console, [&](const InputName& file) -> FileWork::Report {
    const auto url = DialogueSidecarIO::sidecarURL(file.path);
    std::error_code ignored;
    const bool isThere = std::filesystem::exists(url, ignored);
    DialogueSidecarIO::deleteForAudio(file.path);
    return [&, isThere] {
      console.print(TerminalText::escaped(file.shown()) +
                    (isThere ? ": removed the dialogue regions\n" : ": no dialogue regions\n"));
    };
  });
}

}  // namespace

void addDialogueShowCommand(CLI::App& dialogue, ChosenCommand& chosen) {
  auto options = std::make_shared<ShowOptions>();
  CLI::App* command = dialogue.add_subcommand("show", "Show the regions as a timeline and a list");
  addFileArguments(*command, options->files);
  command->add_flag("--json", options->json, "Print one JSON document per file and line")
      ->group("Output");
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runShow(*options, console); };
  });
}

void addDialogueClearCommand(CLI::App& dialogue, ChosenCommand& chosen) {
  auto request = std::make_shared<FileList::Request>();
  CLI::App* command = dialogue.add_subcommand("clear", "Remove the regions kept beside files");
  addFileArguments(*command, *request);
  command->callback([request, &chosen] {
    chosen = [request](Console& console) { return runClear(*request, console); };
  });
}

void addDialogueCommand(CLI::App& program, ChosenCommand& chosen) {
  CLI::App* command = program.add_subcommand(
      "dialogue",
      "Find, show and exchange the stretches of speech that are kept beside a file, in "
      "FILE.dlg.json");
  command->require_subcommand(1);
  addDialogueDetectCommand(*command, chosen);
  addDialogueShowCommand(*command, chosen);
  addDialogueImportCommand(*command, chosen);
  addDialogueExportCommand(*command, chosen);
  addDialogueClearCommand(*command, chosen);
}

}  // namespace orvane::cli
