#include "cli/commands/report_parts.h"

#include <algorithm>
#include <utility>

#include "cli/options/music_input.h"
#include "cli/options/number_option.h"
#include "cli/options/selection_option.h"
#include "cli/options/text_input.h"
#include "cli/output/number_text.h"
#include "cli/usage_error.h"
#include "orvane/audio/chapter_list.h"
#include "orvane/platform/error.h"
#include "orvane/text/utf8.h"

namespace orvane::cli {
namespace {

constexpr const char* kGroup = "Parts of the report";
/// Far beyond any programme, on either side.
constexpr double kHighestLevel = 100;

void addLevel(CLI::App& command, const char* name, std::optional<float>& target,
              const char* description) {
  addNumberOption(command,
                  {.name = name,
                   .argument = "LUFS",
                   .group = kGroup,
                   .lowest = -kHighestLevel,
                   .highest = kHighestLevel,
                   .description = description},
                  [&target](double value) { target = static_cast<float>(value); });
}

void readChapters(const std::string& name, ReportParts& parts) {
  const auto text = readTextInput(name);
  const auto format = ChapterList::formatOf(text);
  try {
    parts.chapterMarks = ChapterList::read(text, format);
  } catch (const ChapterListError& error) {
    throw PlatformError(shownTextInput(name), error.errorDescription());
  }
  parts.chapterOrigin = ChapterList::origin(format);
}

void addChapterOptions(CLI::App& command, ReportPartOptions& options) {
  constexpr double kLargestTolerance = 100;
  auto* list = command
                   .add_option("--chapters", options.chapterFile,
                               "Measure each chapter of a list: JSON, CSV, Audacity labels or a "
                               "cue sheet")
                   ->option_text("F")
                   ->group(kGroup);
  auto* own = command
                  .add_flag("--chapters-from-file", options.chaptersAreInFile,
                            "Measure each chapter, cue point or marker that the file itself holds")
                  ->excludes(list)
                  ->group(kGroup);
  command
      .add_flag("--chapters-from-music", options.parts.chaptersFromMusic,
                "With --music: measure each section as a chapter, none shorter than ten seconds")
      ->needs(command.get_option("--music"))
      ->excludes(list)
      ->excludes(own)
      ->group(kGroup);
  addNumberOption(
      command,
      {.name = "--chapter-tolerance",
       .argument = "LU",
       .group = kGroup,
       .highest = kLargestTolerance,
       .description = "Flag chapters that differ by more than this from the median (2)"},
      [&options](double value) { options.parts.chapterToleranceLU = static_cast<float>(value); });
}

void requireLabelPerChannel(const MeasuredFile& file) {
  const auto count = static_cast<std::size_t>(file.result.channelCount);
  if (file.channelLabels.empty() || file.channelLabels.size() == count) return;
  throw PlatformError(file.name.shown(), "--channel-labels names " +
                                             std::to_string(file.channelLabels.size()) +
                                             " channels, the file has " + std::to_string(count));
}

/// The sentence for the chapters that are missing from the report.
std::string leftOutNote(const std::vector<ChapterMark>& chapters) {
  constexpr std::size_t kNamed = 5;
  std::string text = std::to_string(chapters.size()) + " of the chapters " +
                     (chapters.size() == 1 ? "has no audio and is" : "have no audio and are") +
                     " left out: ";
  for (std::size_t i = 0; i < std::min(chapters.size(), kNamed); ++i) {
    const auto& [start, end, name] = chapters[i];
    text += i == 0 ? "" : ", ";
    text += name.empty() ? "one" : "\"" + name + "\"";
    text += " at " + NumberText::duration(start);
  }
  if (chapters.size() > kNamed)
    text += " and " + std::to_string(chapters.size() - kNamed) + " more";
  return text + ".";
}

/// The sentence for a finding. Throws `PlatformError` for what the user cannot have meant.
std::string noteOf(GatheredReport::Finding finding, const MeasuredFile& file,
                   const ReportPartOptions& options, const ReportParts& parts) {
  using Finding = GatheredReport::Finding;
  const std::string duration = NumberText::duration(file.result.durationSeconds);
  switch (finding) {
    case Finding::selectionOutsideAudio:
      throw PlatformError(file.name.shown(),
                          "the selection lies behind the end of the audio at " + duration);
    case Finding::selectionCut:
      return "The selection is cut to the end of the audio at " + duration + ".";
    case Finding::musicOfOtherLength:
      return "The music analysis is of " + NumberText::duration(parts.music->duration) +
             ", the file lasts " + duration + ".";
    case Finding::musicWithoutSections:
      return "The music analysis has no sections to be chapters.";
    case Finding::chapterMarksOutsideAudio:
      return options.chaptersAreInFile ? "None of the file's chapters lies in its audio."
                                       : "None of the list's chapters lies in the file.";
  }
  return {};
}

}  // namespace

void addReportPartOptions(CLI::App& command, ReportPartOptions& options) {
  command
      .add_option_function<std::string>(
          "--selection",
          [&options](const std::string& text) {
            options.parts.selection = SelectionOption::parse(text);
          },
          "Measure this stretch too and judge by it: START-END, each in seconds or as "
          "[h:]mm:ss[.fff]")
      ->option_text("A-B")
      ->group(kGroup);
  addLevel(command, "--max-momentary", options.parts.maxMomentaryLUFS,
           "Mark where the momentary loudness exceeds this");
  addLevel(command, "--max-short-term", options.parts.maxShortTermLUFS,
           "Mark where the short-term loudness exceeds this");
  command
      .add_option(
          "--music", options.musicFile,
          "A music analysis (JSON) of the file: loudness with and without vocals and drums, "
          "and of each section")
      ->option_text("F")
      ->group(kGroup);
  addChapterOptions(command, options);
  command
      .add_option_function<std::string>(
          "--channel-labels",
          [&options](const std::string& list) {
            auto& labels = options.parts.channelLabels;
            labels.clear();
            for (const auto& label : CLI::detail::split(list, ','))
              labels.push_back(wellFormedUTF8(label));
          },
          "What the channels are called, instead of their own names")
      ->option_text("L,R,…")
      ->group(kGroup);
}

void ReportPartOptions::requireSense(std::span<const InputName> inputs, bool isRaw) const {
  const std::size_t inputCount = inputs.size();
  if (inputCount > 1 && !musicFile.empty()) throw UsageError("--music is for one FILE");
  if (inputCount > 1 && !chapterFile.empty()) throw UsageError("--chapters is for one FILE");
  if (isRaw && chaptersAreInFile)
    throw UsageError("headerless files hold no chapters for --chapters-from-file");
  const auto uses = std::count_if(inputs.begin(), inputs.end(),
                                  [](const InputName& input) { return input.isStandardInput(); }) +
                    (musicFile == "-" ? 1 : 0) + (chapterFile == "-" ? 1 : 0);
  if (uses > 1) throw UsageError("standard input can be read only once");
}

std::vector<std::filesystem::path> ReportPartOptions::filesRead() const {
  std::vector<std::filesystem::path> files;
  if (!musicFile.empty()) files.emplace_back(musicFile);
  if (!chapterFile.empty()) files.emplace_back(chapterFile);
  return files;
}

ReportParts ReportPartOptions::read() const {
  ReportParts all = parts;
  if (!musicFile.empty()) all.music = readMusicAnalysis(musicFile);
  if (!chapterFile.empty()) readChapters(chapterFile, all);
  return all;
}

void makeReport(MeasuredFile& file, const ReportPartOptions& options, ReportParts parts,
                const Execution& execution) {
  file.channelLabels = parts.channelLabels;
  requireLabelPerChannel(file);
  std::vector<std::string> notes;
  if (options.chaptersAreInFile) {
    parts.chapterMarks = file.chapterMarks;
    parts.chapterOrigin = "from the file itself";
    if (parts.chapterMarks.empty()) notes.emplace_back("The file holds no chapters.");
  }
  auto gathered = gatherReport(file.result, file.detail, parts, ORVANE_VERSION, execution);
  for (const auto finding : gathered.findings)
    file.notes.push_back(noteOf(finding, file, options, parts));
  if (!gathered.inputs.chapters.empty() && !gathered.chaptersLeftOut.empty())
    file.notes.push_back(leftOutNote(gathered.chaptersLeftOut));
  file.notes.insert(file.notes.end(), notes.begin(), notes.end());
  // Standard input is read under a name that means nothing to anybody else.
  if (file.name.isStandardInput()) {
    gathered.inputs.fileInfo.fileName = file.name.shown();
    gathered.inputs.fileInfo.filePath = file.name.display;
  }
  file.report = OrvaneReport::build(gathered.inputs, {});
  file.sectionLoudness = std::move(gathered.sectionLoudness);
}

}  // namespace orvane::cli
