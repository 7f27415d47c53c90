#include "cli/commands/dialogue_command.h"

#include <memory>

#include "cli/commands/dialogue_commands.h"
#include "cli/commands/dialogue_sidecars.h"
#include "cli/commands/file_work.h"
#include "cli/output/dialogue_timeline.h"
#include "cli/terminal/terminal_text.h"
#include "orvane/platform/error.h"

namespace orvane::cli {
namespace {

struct ShowOptions {
  FileList::Request files{};
  DialogueSidecars sidecars{};
  bool json = false;
};

struct ClearOptions {
  FileList::Request files{};
  DialogueSidecars sidecars{};
};

/// As `otherAudioNote`; empty also when it cannot be told, as for headerless files.
std::string noteOf(const InputName& file, const DialogueSidecar& sidecar) {
  try {
    const auto audio = describeAudio(file, std::nullopt, std::nullopt);
    return otherAudioNote(sidecar.audioFile, audio.durationSeconds, audio.sampleRate);
  } catch (const Error&) {
    return "";
  }
}

ExitCode runShow(const ShowOptions& options, Console& console) {
  const auto files = filesWithSidecars(options.files);
  bool isFirst = true;
  return FileWork::run(
      files, {.json = options.json}, console, [&](const InputName& file) -> FileWork::Report {
        const auto sidecar = options.sidecars.load(file);
        const auto note = noteOf(file, sidecar);
        const auto text = options.json ? DialogueTimeline::json(file, sidecar)
                                       : DialogueTimeline::block(file, sidecar, console);
        return [&, note, text] {
          if (!note.empty()) console.warning(file.shown() + ": " + note);
          console.print(isFirst || options.json ? text : "\n" + text);
          isFirst = false;
        };
      });
}

ExitCode runClear(const ClearOptions& options, Console& console) {
  const auto files = filesWithSidecars(options.files);
  return FileWork::run(files, {}, console, [&](const InputName& file) -> FileWork::Report {
    const bool wasThere = options.sidecars.remove(file);
    return [&, wasThere] {
      console.print(TerminalText::escaped(file.shown()) +
                    (wasThere ? ": removed the dialogue regions\n" : ": no dialogue regions\n"));
    };
  });
}

}  // namespace

void addDialogueShowCommand(CLI::App& dialogue, ChosenCommand& chosen) {
  auto options = std::make_shared<ShowOptions>();
  CLI::App* command = dialogue.add_subcommand("show", "Show the regions as a timeline and a list");
  addFileArguments(*command, options->files);
  addSidecarsOption(*command, options->sidecars, "Input");
  command->add_flag("--json", options->json, "Print one JSON document per file and line")
      ->group("Output");
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runShow(*options, console); };
  });
}

void addDialogueClearCommand(CLI::App& dialogue, ChosenCommand& chosen) {
  auto options = std::make_shared<ClearOptions>();
  CLI::App* command = dialogue.add_subcommand("clear", "Remove the regions kept beside files");
  addFileArguments(*command, options->files);
  addSidecarsOption(*command, options->sidecars, "Input");
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runClear(*options, console); };
  });
}

void completeDialogueCommand(CLI::App& command, ChosenCommand& chosen) {
  command.require_subcommand(1);
  addDialogueDetectCommand(command, chosen);
  addDialogueShowCommand(command, chosen);
  addDialogueImportCommand(command, chosen);
  addDialogueExportCommand(command, chosen);
  addDialogueClearCommand(command, chosen);
}

}  // namespace orvane::cli
