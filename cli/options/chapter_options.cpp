#include "cli/options/chapter_options.h"

#include "cli/options/number_option.h"
#include "cli/options/text_input.h"
#include "orvane/analysis/chapter_measurement.h"
#include "orvane/audio/chapter_list.h"
#include "orvane/container/audio_file.h"
#include "orvane/platform/error.h"

namespace orvane::cli {
namespace {

constexpr double kLargestTolerance = 100;

}  // namespace

void addChapterOptions(CLI::App& command, ChapterOptions& options, const std::string& group) {
  auto* list = command
                   .add_option("--chapters", options.listFile,
                               "Measure each chapter of a list: JSON, CSV, Audacity labels or a "
                               "cue sheet")
                   ->option_text("F")
                   ->group(group);
  command
      .add_flag("--chapters-from-file", options.areInFile,
                "Measure each chapter, cue point or marker that the file itself holds")
      ->excludes(list)
      ->group(group);
  addNumberOption(
      command,
      {.name = "--chapter-tolerance",
       .argument = "LU",
       .group = group,
       .highest = kLargestTolerance,
       .description = "Flag chapters that differ by more than this from the median (2)"},
      [&options](double value) { options.toleranceLU = static_cast<float>(value); });
}

ChapterSource::ChapterSource(const ChapterOptions& options) : options_(options) {
  if (options.listFile.empty()) return;
  const auto text = readTextInput(options.listFile);
  const auto format = ChapterList::formatOf(text);
  try {
    marks_ = ChapterList::read(text, format);
  } catch (const ChapterListError& error) {
    throw PlatformError(shownTextInput(options.listFile), error.errorDescription());
  }
  origin_ = ChapterList::origin(format);
}

ChapterSource::Chapters ChapterSource::chaptersOf(MeasuredFile& file,
                                                  const MusicAnalysisResult* music) const {
  const double duration = file.result.durationSeconds;
  Chapters chapters;
  if (options_.areInFile) {
    const auto marks = AudioFile::open(file.name.path)->chapters();
    chapters = {ChapterMeasurement::spansOf(marks, duration), "from the file itself"};
    if (chapters.spans.empty())
      file.notes.emplace_back(marks.empty() ? "The file holds no chapters."
                                            : "None of the file's chapters lies in its audio.");
  } else if (!marks_.empty()) {
    chapters = {ChapterMeasurement::spansOf(marks_, duration), origin_};
    if (chapters.spans.empty())
      file.notes.emplace_back("None of the list's chapters lies in the file.");
  }
  if (chapters.spans.empty() && music != nullptr)
    chapters = {ChapterMeasurement::spansOfSections(music->sections, duration), "music"};
  return chapters;
}

}  // namespace orvane::cli
