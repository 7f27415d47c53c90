#include "cli/program.h"

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/command.h"
#include "cli/commands/analyze_command.h"
#include "cli/commands/dialogue_command.h"
#include "cli/commands/diff_command.h"
#include "cli/commands/edit_command.h"
#include "cli/commands/generate_command.h"
#include "cli/commands/identify_command.h"
#include "cli/commands/music_command.h"
#include "cli/commands/raw_command.h"
#include "cli/commands/report_command.h"
#include "cli/commands/speech_model.h"
#include "cli/commands/splice_command.h"
#include "cli/commands/targets_command.h"
#include "cli/interruption.h"
#include "cli/options/nearest_word.h"
#include "cli/terminal/help_formatter.h"
#include "cli/usage_error.h"
#include "cli/write_signals.h"
#include "orvane/container/audio_file.h"
#include "orvane/platform/error.h"

namespace orvane::cli {
namespace {

constexpr const char* kFooter =
    "\"orvane help COMMAND\" lists the options of a command.\n"
    "--color auto|always|never goes with each; NO_COLOR is heeded.\n\n"
    "Results go to standard output, everything else to standard error.\n"
    "Exit codes: 0 all done, 1 a file failed, 2 wrong usage, 3 a requested target is\n"
    "missed, 129, 130, 143 stopped by a hang-up, Ctrl-C or a request to end.";

/// The commands in the order in which the help lists them. Only the one that is asked for is given
/// its options: making those of all takes longer than measuring a second of audio.
struct Command {
  const char* name;
  const char* description;
  void (*complete)(CLI::App& command, ChosenCommand& chosen);
};
constexpr Command kCommands[] = {
    {"analyze", "Measure loudness, true peak, dynamics and channel statistics",
     completeAnalyzeCommand},
    {"identify", "Tell what files really hold: container, codec, rate and channels",
     completeIdentifyCommand},
    {"dialogue",
     "Find, show and exchange the stretches of speech that are kept beside a file, in "
     "FILE.dlg.json",
     completeDialogueCommand},
    {"report", "Render a record of \"analyze --report\", or judge it, again",
     completeReportCommand},
    {"targets", "List the delivery targets that files can be judged by", completeTargetsCommand},
    {"diff", "Subtract one file from another and measure what remains", completeDiffCommand},
    {"edit",
     "Edit the audio of a file and write it to another one or into the "
     "file itself. A TIME is in seconds, "
     "[h:]mm:ss[.fff] or #FRAME",
     completeEditCommand},
    {"splice",
     "Join a new take to a recording, at its rate and with its channels, and write both to "
     "another file or into the recording. A TIME is in seconds, [h:]mm:ss[.fff] or #FRAME",
     completeSpliceCommand},
    {"generate", "Write a test signal", completeGenerateCommand},
    {"raw", "Work with headerless PCM", completeRawCommand},
    {"music", "Work with music analyses (JSON)", completeMusicCommand},
};

std::string versionText() {
  const auto model = nameOfSpeechModel();
  return "orvane " ORVANE_VERSION "\nFFmpeg " + ffmpegVersion().value_or("is not installed") +
         "\nSpeech model " +
         (model ? "Silero VAD " + model->version + ", SHA-256 " + model->sha256
                : "is not installed");
}

void nameHelpOfSubcommands(CLI::App& command) {
  for (CLI::App* each : command.get_subcommands([](CLI::App*) { return true; })) {
    each->get_help_ptr()->description("Print this help");
    if (each->get_footer() == kFooter) each->footer("");  // the program's, which is inherited
    nameHelpOfSubcommands(*each);
  }
}

/// The program with the command that is `asked` for.
std::unique_ptr<CLI::App> makeProgram(std::string_view asked, ChosenCommand& chosen) {
  auto program = std::make_unique<CLI::App>(
      "Measures, compares and edits audio files. Goes by what a file holds, not by its "
      "name.",
      "orvane");
  program->require_subcommand(1);
  program->set_version_flag("--version", versionText, "Print the versions of the program's parts");
  program->get_help_ptr()->description("Print this help");
  program->formatter(std::make_shared<HelpFormatter>());
  program->footer(kFooter);
  for (const Command& each : kCommands) {
    CLI::App* const command = program->add_subcommand(each.name, each.description);
    if (each.name == asked) each.complete(*command, chosen);
  }
  nameHelpOfSubcommands(*program);
  return program;
}

/// The name behind "orvane " for hints; empty when no command was recognised.
std::string commandName(const CLI::App& program) {
  const auto chosen = program.get_subcommands();
  return chosen.empty() ? "" : " " + chosen.front()->get_name() + commandName(*chosen.front());
}

std::string usageText(const CLI::App& program, std::string text) {
  while (!text.empty() && text.back() == '\n') text.pop_back();
  return text + " (see orvane" + commandName(program) + " --help)";
}

/// The engine's sentence with the path that was typed in the place of its last part; as it is where
/// two paths among the words end alike.
std::string withTypedPath(const std::string& sentence, const std::vector<std::string>& words) {
  std::set<std::string> sentences;
  for (const std::string& word : words) {
    const std::size_t start = word.starts_with("--")  ? word.find('=') + 1
                              : word.starts_with('-') ? std::min<std::size_t>(2, word.size())
                                                      : 0;
    const std::string path = word.substr(start);
    if (auto named = InputName{path, path}.message(sentence); named != sentence)
      sentences.insert(std::move(named));
  }
  return sentences.size() == 1 ? *sentences.begin() : sentence;
}

ExitCode runChosen(const CLI::App& program, const ChosenCommand& chosen,
                   const std::vector<std::string>& words, Console& console) {
  try {
    return chosen(console);
  } catch (const UsageError& error) {
    console.error(usageText(program, error.what()));
    return ExitCode::usage;
  } catch (const Cancelled&) {
    console.status("");
    return Interruption::exitCode();
  } catch (const OutputFailure&) {
    throw;
  } catch (const Error& error) {
    console.error(withTypedPath(error.errorDescription(), words));
  } catch (const std::bad_alloc&) {
    console.error("not enough memory");
  } catch (const std::exception& error) {
    console.error(error.what());
  }
  return ExitCode::fileFailed;
}

std::vector<CLI::App*> commandsOf(CLI::App& program) {
  return program.get_subcommands([](CLI::App*) { return true; });
}

/// What is wrong with a word that must name a command, as far as commands have commands.
std::optional<std::string> unknownCommand(CLI::App& program, std::span<const std::string> words) {
  const auto commands = commandsOf(program);
  if (commands.empty() || words.empty() || words.front().starts_with('-')) return std::nullopt;
  std::vector<std::string> names;
  for (CLI::App* command : commands) {
    if (command->get_name() == words.front()) return unknownCommand(*command, words.subspan(1));
    names.push_back(command->get_name());
  }
  const std::string what = "unknown command '" + words.front() + "'";
  if (const auto meant = nearestWord(words.front(), names))
    return what + "; did you mean " + *meant + "?";
  return what + ", the commands are " + CLI::detail::join(names, ", ");
}

/// The option that a misspelt one may have meant, among those of the command that the words name.
std::optional<std::string> meantOption(CLI::App& program, std::span<const std::string> words) {
  CLI::App* command = &program;
  for (const std::string& word : words) {
    for (CLI::App* each : commandsOf(*command))
      if (each->get_name() == word) command = each;
    if (word == "--") return std::nullopt;
    if (!word.starts_with("--")) continue;
    std::vector<std::string> names;
    for (const CLI::Option* option : command->get_options())
      for (const auto& name : option->get_lnames()) names.push_back("--" + name);
    const std::string written = word.substr(0, word.find('='));
    if (std::ranges::find(names, written) == names.end()) return nearestWord(written, names);
  }
  return std::nullopt;
}

/// The arguments behind the program's name. Negative numbers are values, also those that begin with
/// a point, which would be taken for options.
std::vector<std::string> wordsOf(int count, const char* const* arguments) {
  std::vector<std::string> words(arguments + std::min(count, 1), arguments + count);
  for (std::string& word : words)
    if (word.size() > 2 && word.starts_with("-.") && word[2] >= '0' && word[2] <= '9')
      word.insert(1, "0");
  return words;
}

/// The word that names the command; empty without one.
std::string_view commandIn(std::span<const std::string> words) {
  if (!words.empty() && words.front() == "help") words = words.subspan(1);
  return words.empty() ? std::string_view() : words.front();
}

/// Takes `--color` from the words, which may stand anywhere; a sentence when it makes no sense.
std::optional<std::string> applyColour(std::vector<std::string>& words, ConsoleTraits& traits) {
  constexpr std::string_view kName = "--color";
  const auto end = std::ranges::find(words, "--");
  const auto option = std::find_if(words.begin(), end, [&](const std::string& word) {
    return word == kName || word.starts_with(std::string(kName) + "=");
  });
  if (option == end) return std::nullopt;
  const bool isApart = *option == kName;
  const auto last = isApart && option + 1 != end ? option + 1 : option;
  const std::string choice =
      isApart ? (last == option ? "" : *last) : option->substr(kName.size() + 1);
  words.erase(option, last + 1);
  if (choice == "always")
    traits.isColourForced = true;
  else if (choice == "never")
    traits.allowsColour = false;
  else if (choice != "auto")
    return "--color is one of auto, always, never, not '" + choice + "'";
  return std::nullopt;
}

/// Reads the arguments; a code when the program is over after that.
std::optional<ExitCode> parse(CLI::App& program, std::vector<std::string> words, Console& console) {
  const bool asksForHelp = !words.empty() && words.front() == "help";
  if (asksForHelp) words.erase(words.begin());
  try {
    if (const auto unknown = asksForHelp ? unknownCommand(program, words) : std::nullopt)
      throw UsageError(*unknown);
    if (asksForHelp) words.emplace_back("--help");
    program.parse(std::vector<std::string>(words.rbegin(), words.rend()));  // as CLI11 takes them
    return std::nullopt;
  } catch (const CLI::CallForHelp&) {
    console.print(program.help());
    return ExitCode::done;
  } catch (const CLI::CallForVersion&) {
    console.print(versionText() + "\n");
    return ExitCode::done;
  } catch (const CLI::ParseError& error) {
    std::string text = unknownCommand(program, words).value_or(error.what());
    if (const auto meant = meantOption(program, words)) text += "; did you mean " + *meant + "?";
    console.error(usageText(program, text));
  } catch (const UsageError& error) {
    console.error(usageText(program, error.what()));
  }
  return ExitCode::usage;
}

}  // namespace

int runProgram(int argumentCount, const char* const* arguments) {
  openMissingStandardStreams();
  Interruption::install();
  WriteSignals::install();
  ConsoleTraits traits = ConsoleTraits::ofProcess();
  auto words = wordsOf(argumentCount, arguments);
  const auto misuse = applyColour(words, traits);
  Console console(traits);
  ChosenCommand chosen;
  const auto program = makeProgram(commandIn(words), chosen);
  try {
    if (misuse) {
      console.error(usageText(*program, *misuse));
      return static_cast<int>(ExitCode::usage);
    }
    const auto over = parse(*program, words, console);
    return static_cast<int>(over ? *over : runChosen(*program, chosen, words, console));
  } catch (const OutputFailure& error) {
    if (error.isBrokenPipe()) WriteSignals::endByBrokenPipe();
    console.error(error.what());
    return static_cast<int>(ExitCode::fileFailed);
  }
}

}  // namespace orvane::cli
