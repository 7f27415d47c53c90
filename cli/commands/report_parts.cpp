#include "cli/commands/report_parts.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "cli/options/number_option.h"
#include "cli/options/text_input.h"
#include "cli/output/number_text.h"
#include "cli/output/source_date.h"
#include "cli/usage_error.h"
#include "orvane/analysis/chapter_measurement.h"
#include "orvane/analysis/loudness_violations.h"
#include "orvane/music/music_section_loudness.h"
#include "orvane/platform/error.h"
#include "orvane/report/analysis_report_inputs.h"
#include "orvane/text/json/json_text.h"
#include "orvane/text/utf8.h"

namespace orvane::cli {
namespace {

constexpr const char* kGroup = "Parts of the report";
/// The gating blocks start every tenth of a second.
constexpr double kBlockSeconds = 0.1;
/// A music analysis may be of a copy with a little more silence, hardly of one that differs by
/// more.
constexpr double kDurationTolerance = 1;

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

void raise(SelectionAnalysisResult& selection, float gain) {
  for (float* level : {&selection.integratedLUFS, &selection.maxMomentaryLUFS,
                       &selection.maxShortTermLUFS, &selection.speechGatedLUFS})
    *level += gain;
  for (auto* curve :
       {&selection.momentaryCurve, &selection.shortTermCurve, &selection.integratedCurve})
    for (auto& point : *curve) point.lufs += gain;
}

void raise(core::Chapter& chapter, float gain) {
  for (auto* level : {&chapter.integratedLUFS, &chapter.maxMomentaryLUFS, &chapter.maxShortTermLUFS,
                      &chapter.speechGatedLUFS})
    if (*level) **level += gain;
}

MusicAnalysisResult readMusic(const std::string& name) {
  try {
    return decodeJSON<MusicAnalysisResult>(readTextInput(name));
  } catch (const DecodingError& error) {
    throw PlatformError(shownTextInput(name), error.errorDescription());
  }
}

}  // namespace

void addReportPartOptions(CLI::App& command, ReportPartOptions& options) {
  command
      .add_option_function<std::string>(
          "--selection",
          [&options](const std::string& text) { options.selection = SelectionOption::parse(text); },
          "Measure this stretch too and judge by it: START-END, each in seconds or as "
          "[h:]mm:ss[.fff]")
      ->option_text("A-B")
      ->group(kGroup);
  addLevel(command, "--max-momentary", options.maxMomentaryLUFS,
           "Mark where the momentary loudness exceeds this");
  addLevel(command, "--max-short-term", options.maxShortTermLUFS,
           "Mark where the short-term loudness exceeds this");
  addChapterOptions(command, options.chapters, kGroup);
  command
      .add_option(
          "--music", options.musicFile,
          "A music analysis (JSON) of the file: loudness with and without vocals and drums, "
          "and of each section; its sections are the chapters if no others are given")
      ->option_text("F")
      ->group(kGroup);
  command
      .add_option_function<std::string>(
          "--channel-labels",
          [&options](const std::string& list) {
            options.channelLabels.clear();
            for (const auto& label : CLI::detail::split(list, ','))
              options.channelLabels.push_back(wellFormedUTF8(label));
          },
          "What the channels are called, instead of their own names")
      ->option_text("L,R,…")
      ->group(kGroup);
}

void ReportPartOptions::requireSense(std::span<const InputName> inputs, bool isRaw) const {
  const std::size_t inputCount = inputs.size();
  if (inputCount > 1 && !musicFile.empty()) throw UsageError("--music is for one FILE");
  if (inputCount > 1 && !chapters.listFile.empty()) throw UsageError("--chapters is for one FILE");
  if (isRaw && chapters.areInFile)
    throw UsageError("headerless files hold no chapters for --chapters-from-file");
  const auto uses = std::count_if(inputs.begin(), inputs.end(),
                                  [](const InputName& input) { return input.isStandardInput(); }) +
                    (musicFile == "-" ? 1 : 0) + (chapters.listFile == "-" ? 1 : 0);
  if (uses > 1) throw UsageError("standard input can be read only once");
}

ReportParts::ReportParts(const ReportPartOptions& options)
    : options_(options), sourceDate_(sourceDate()), chapters_(options.chapters) {
  if (!options.musicFile.empty()) music_ = readMusic(options.musicFile);
}

std::vector<std::filesystem::path> ReportParts::filesRead(const ReportPartOptions& options) {
  std::vector<std::filesystem::path> files;
  if (!options.musicFile.empty()) files.emplace_back(options.musicFile);
  if (!options.chapters.listFile.empty()) files.emplace_back(options.chapters.listFile);
  return files;
}

void ReportParts::makeReport(MeasuredFile& file, const core::LoudnessTargetSelection& targets,
                             const SelectionMeasurement::Execution& execution) const {
  const auto count = static_cast<std::size_t>(file.result.channelCount);
  if (!options_.channelLabels.empty()) {
    if (options_.channelLabels.size() != count)
      throw PlatformError(file.name.shown(), "--channel-labels names " +
                                                 std::to_string(options_.channelLabels.size()) +
                                                 " channels, the file has " +
                                                 std::to_string(count));
    file.channelLabels = options_.channelLabels;
  }
  // Channels of which nothing is known have the report's own names.
  const bool areNamed = !file.channelLabels.empty() || file.detail.layout || count <= 2;
  auto inputs = OfflineAnalysisPipeline::toReportInputs(
      file.result, ORVANE_VERSION, targets,
      areNamed ? std::optional(file.channelNames()) : std::nullopt);
  // Standard input is read under a name that means nothing to anybody else.
  if (file.name.isStandardInput()) {
    inputs.fileInfo.fileName = file.name.shown();
    inputs.fileInfo.filePath = file.name.display;
  }
  addTo(inputs, file, execution);
  file.report = OrvaneReport::build(inputs, {});
  if (sourceDate_) file.report->generatedAt = *sourceDate_;
}

void ReportParts::addTo(ReportInputs& inputs, MeasuredFile& file,
                        const SelectionMeasurement::Execution& execution) const {
  addSelection(inputs, file, execution);
  addViolations(inputs);
  addMusic(inputs, file);
  addChapters(inputs, file, execution);
}

void ReportParts::addSelection(ReportInputs& inputs, MeasuredFile& file,
                               const SelectionMeasurement::Execution& execution) const {
  if (!options_.selection) return;
  const double duration = file.result.durationSeconds;
  const double end = options_.selection->endSeconds.value_or(duration);
  const auto frameAt = [&](double seconds) {
    return static_cast<std::int64_t>(
        std::round(std::min(seconds, duration) * file.result.sampleRate));
  };
  auto selection =
      SelectionMeasurement::measure(*file.result.buffer, frameAt(options_.selection->startSeconds),
                                    frameAt(end), file.result.speechHistory, execution);
  if (!selection)
    throw PlatformError(file.name.shown(), "the selection lies behind the end of the audio at " +
                                               NumberText::duration(duration));
  if (end > duration)
    file.notes.push_back("The selection is cut to the end of the audio at " +
                         NumberText::duration(duration) + ".");
  if (file.isDualMono) raise(*selection, kDualMonoGainLU);
  inputs.selectionAnalysis = std::move(selection);
}

void ReportParts::addViolations(ReportInputs& inputs) const {
  inputs.violationsEnabled = options_.maxMomentaryLUFS || options_.maxShortTermLUFS;
  inputs.momentaryThreshold = options_.maxMomentaryLUFS;
  inputs.shortTermThreshold = options_.maxShortTermLUFS;
  const auto& curve = inputs.fileLoudnessCurve;
  if (options_.maxMomentaryLUFS)
    inputs.momentaryViolations = LoudnessViolations::momentary(curve, *options_.maxMomentaryLUFS);
  if (options_.maxShortTermLUFS)
    inputs.shortTermViolations = LoudnessViolations::shortTerm(curve, *options_.maxShortTermLUFS);
}

void ReportParts::addMusic(ReportInputs& inputs, MeasuredFile& file) const {
  if (!music_) return;
  const double duration = file.result.durationSeconds;
  if (std::abs(music_->duration - duration) > kDurationTolerance)
    file.notes.push_back("The music analysis is of " + NumberText::duration(music_->duration) +
                         ", the file lasts " + NumberText::duration(duration) + ".");
  inputs.musicAnalysis = music_->clipped(duration);
  const auto& powers = file.detail.blockPowers;
  inputs.stemGatedLoudness =
      StemGatedLoudness::compute(powers, kBlockSeconds, *inputs.musicAnalysis);
  file.sectionLoudness =
      MusicSectionLoudness::compute(powers, kBlockSeconds, inputs.musicAnalysis->sections);
}

void ReportParts::addChapters(ReportInputs& inputs, MeasuredFile& file,
                              const SelectionMeasurement::Execution& execution) const {
  const auto chapters =
      chapters_.chaptersOf(file, inputs.musicAnalysis ? &*inputs.musicAnalysis : nullptr);
  if (chapters.spans.empty()) return;
  inputs.chapters = ChapterMeasurement::measure(*file.result.buffer, chapters.spans,
                                                file.result.speechHistory, execution);
  if (file.isDualMono)
    for (core::Chapter& chapter : inputs.chapters) raise(chapter, kDualMonoGainLU);
  inputs.chapterOrigin = chapters.origin;
  inputs.chapterMedianLUFS = ChapterMeasurement::medianLUFS(inputs.chapters);
  inputs.chapterDeviationThresholdLU = options_.chapters.toleranceLU;
}

}  // namespace orvane::cli
