#include "cli/commands/music_command.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "cli/options/music_input.h"
#include "cli/options/number_option.h"
#include "cli/options/text_input.h"
#include "cli/output/music_overview.h"
#include "cli/output/output_file.h"
#include "cli/output/text_output.h"
#include "cli/usage_error.h"
#include "orvane/music/music_coding.h"
#include "orvane/music/music_grid_snap.h"
#include "orvane/music/music_section_chapters.h"
#include "orvane/platform/error.h"
#include "orvane/text/time_text.h"

namespace orvane::cli {

/// As chapter lists name them.
struct ListedChapter {
  std::string name{};
  double startSec = 0;
  double endSec = 0;
};

}  // namespace orvane::cli

namespace orvane::json {
ORVANE_JSON_FIELDS(cli::ListedChapter, name, startSec, endSec);
}

namespace orvane::cli {
namespace {

constexpr json::Style kFileStyle{.isPretty = true, .numbers = json::Style::Numbers::plain};

struct MusicOptions {
  std::string file{};
  bool json = false;
  double minimumLength = 10;
  MusicGridSnap::Mode snap = MusicGridSnap::Mode::off;
  double length = 0;
  TextOutputOptions output{};
};

/// Keeps the output from the analysis that is read.
void write(const MusicOptions& options, const std::string& text, Console& console) {
  if (!options.output.isStandardOutput()) {
    ReadFiles read;
    read.add(options.file);
    read.requireNone(options.output.file);
  }
  writeText(options.output, text, console);
}

ExitCode runShow(const MusicOptions& options, Console& console) {
  const auto analysis = readMusicAnalysis(options.file);
  const std::string name = shownTextInput(options.file);
  console.print(options.json ? MusicOverview::json(options.file, analysis)
                             : MusicOverview::block(name, analysis, console));
  return ExitCode::done;
}

/// The sections with their starts on the grid that was asked for, if any.
std::vector<MusicAnalysisResult::TimeSpan> sectionsOf(const MusicAnalysisResult& analysis,
                                                      MusicGridSnap::Mode mode) {
  auto sections = analysis.sections;
  if (mode == MusicGridSnap::Mode::off) return sections;
  const auto& grid = mode == MusicGridSnap::Mode::beat ? analysis.beats : analysis.bars;
  for (auto& section : sections)
    if (section.start > 0)
      section.start = MusicGridSnap::nearest(section.start, grid).value_or(section.start);
  return sections;
}

ExitCode runChapters(const MusicOptions& options, Console& console) {
  const auto analysis = readMusicAnalysis(options.file);
  std::vector<ListedChapter> chapters;
  for (const auto& tile : MusicSectionChapters::tile(sectionsOf(analysis, options.snap),
                                                     analysis.duration, options.minimumLength))
    chapters.push_back({"Section " + std::to_string(chapters.size() + 1), tile.start, tile.end});
  if (chapters.empty())
    throw PlatformError(shownTextInput(options.file), "the analysis has no sections");
  write(options, json::encode(chapters, kFileStyle), console);
  return ExitCode::done;
}

ExitCode runClip(const MusicOptions& options, Console& console) {
  auto analysis = readMusicAnalysis(options.file).clipped(options.length);
  analysis.duration = std::min(analysis.duration, options.length);
  write(options, json::encode(analysis, kFileStyle), console);
  return ExitCode::done;
}

double lengthIn(const std::string& text) {
  if (const auto seconds = secondsFromTimeText(text)) return *seconds;
  throw UsageError("--length: '" + text + "' is no time; times are seconds or [h:]mm:ss[.fff]");
}

MusicGridSnap::Mode snapNamed(const std::string& name) {
  if (const auto mode = MusicGridSnap::modeFromRawValue(name)) return *mode;
  throw UsageError("--snap takes off, beat or bar, not '" + name + "'");
}

using Run = ExitCode (*)(const MusicOptions&, Console&);

CLI::App* addCommand(CLI::App& music, ChosenCommand& chosen,
                     const std::shared_ptr<MusicOptions>& options, const char* name,
                     const char* description, Run run) {
  CLI::App* command = music.add_subcommand(name, description);
  command->add_option("FILE", options->file, "The analysis (JSON); - is standard input")
      ->required();
  command->callback([options, &chosen, run] {
    chosen = [options, run](Console& console) { return run(*options, console); };
  });
  return command;
}

}  // namespace

void completeMusicCommand(CLI::App& command, ChosenCommand& chosen) {
  command.require_subcommand(1);
  const auto options = std::make_shared<MusicOptions>();

  CLI::App* show = addCommand(command, chosen, options, "show",
                              "Show key, tempo, stems over time and sections", runShow);
  show->add_flag("--json", options->json, "Print one JSON document")->group("Output");

  CLI::App* chapters = addCommand(command, chosen, options, "chapters",
                                  "Make a chapter list of the sections", runChapters);
  addNumberOption(*chapters,
                  {.name = "--minimum-length",
                   .argument = "S",
                   .group = "Chapters",
                   .highest = 86400,
                   .description = "Join what is shorter than this to its neighbour (10)"},
                  [options](double seconds) { options->minimumLength = seconds; });
  chapters
      ->add_option_function<std::string>(
          "--snap", [options](const std::string& name) { options->snap = snapNamed(name); },
          "Start chapters at the nearest beat or bar (off)")
      ->option_text("off|beat|bar")
      ->group("Chapters");
  addTextOutputOptions(*chapters, options->output);

  CLI::App* clip = addCommand(command, chosen, options, "clip",
                              "Cut the analysis of a file that has been cut itself", runClip);
  clip->add_option_function<std::string>(
          "--length", [options](const std::string& text) { options->length = lengthIn(text); },
          "What is left of the file from its start")
      ->option_text("TIME")
      ->required()
      ->group("Output");
  addTextOutputOptions(*clip, options->output);
}

}  // namespace orvane::cli
