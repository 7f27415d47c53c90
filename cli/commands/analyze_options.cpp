#include "cli/commands/analyze_options.h"

#include <utility>

#include "cli/command.h"
#include "cli/options/jobs_option.h"
#include "cli/usage_error.h"
#include "orvane/text/number_text.h"

namespace orvane::cli {
namespace {

void setStreams(const std::string& list, AnalyzeOptions& options) {
  options.allStreams = list == "all";
  options.joinedStreams.clear();
  if (options.allStreams) return;
  for (const auto& text : CLI::detail::split(list, ',')) {
    const auto stream = NumberText::parsed<int>(text);
    if (!stream || *stream < 0)
      throw UsageError("--streams takes numbers with commas between, or all, not '" + list + "'");
    options.joinedStreams.push_back(*stream);
  }
}

void addStreamsOption(CLI::App& command, AnalyzeOptions& options) {
  command
      .add_option_function<std::string>(
          "--streams", [&options](const std::string& list) { setStreams(list, options); },
          "Join these audio streams of each file, all of them mono or alike, to one programme "
          "(L and R for two; --channel-labels says what others are); or measure all, each by "
          "itself")
      ->option_text("0,1,…|all")
      ->group("Input")
      ->excludes(command.get_option("--stream"));
}

void addMeasuringOptions(CLI::App& command, AnalyzeOptions& options) {
  command.add_flag("--no-stereo", options.noStereo, "Leave the stereo correlation out")
      ->group("Measuring");
  command.add_flag("--dual-mono", options.dualMono, "Measure mono files as two equal loudspeakers")
      ->group("Measuring");
  command.add_flag("--album", options.album, "Measure all files as one programme, too")
      ->group("Measuring");
}

void addSpeechOptions(CLI::App& command, AnalyzeOptions& options) {
  auto* speech = command
                     .add_flag("--speech", options.speech,
                               "Detect speech and measure the loudness of it and its share")
                     ->group("Speech");
  command
      .add_flag("--dialogue", options.dialogue,
                "Take the regions kept beside the file for its speech")
      ->excludes(speech)
      ->group("Speech");
  addSidecarsOption(command, options.sidecars, "Speech");
  addVADTuningOptions(command, options.tuning);
}

void addOutputOptions(CLI::App& command, AnalyzeOptions& options) {
  auto* json =
      command.add_flag("--json", options.json, "Print one JSON document per file and line")
          ->group("Output");
  command.add_flag("--curves", options.curves, "With --json: the curves, one point per 100 ms")
      ->needs(json)
      ->group("Output");
  command.add_flag("-q,--quiet", options.quiet, "One row per file and no progress")
      ->group("Output");
  auto* summary = command
                      .add_option("--summary", options.summaryFile,
                                  "Write a row per file with every figure, for spreadsheets and "
                                  "scripts; what is finished is kept when the run is stopped")
                      ->option_text("F.csv")
                      ->group("Output");
  command
      .add_flag("--resume", options.resume,
                "Go on with the summary of a run that was stopped: measure only files that are not "
                "in it, failed or have changed")
      ->needs(summary)
      ->group("Output");
  addJobsOption(command, options.jobs, "Measure up to N files at once", "Measuring");
}

void requireSense(const AnalyzeOptions& options) {
  if (!options.speech && !options.tuning.given.empty())
    throw UsageError(options.tuning.given +
                     " tunes the detection of speech, which --speech asks for");
  if (!options.dialogue && options.sidecars.areApart())
    throw UsageError("--sidecars is for --dialogue");
  if (options.source.rawFormat && (options.allStreams || !options.joinedStreams.empty()))
    throw UsageError("headerless files hold no --streams");
  if (options.summaryFile == "-")
    throw UsageError("--summary takes a file; --json prints every figure");
  // Of the files that an earlier run has measured only the row is left.
  if (options.resume && options.album)
    throw UsageError("--album measures every file anew; it does not go with --resume");
}

}  // namespace

void AnalyzeOptions::settle() {
  targets.settle();
  auto& selection = parts.parts.selection;
  if (targets.needSpeech() && !dialogue) speech = true;
  if (targets.needNoiseFloor() && !selection) selection = ReportParts::Selection{};
  requireSense(*this);
}

std::vector<std::filesystem::path> AnalyzeOptions::otherFilesRead(
    const std::vector<InputName>& inputs) const {
  auto paths = parts.filesRead();
  if (dialogue)
    for (auto& url : sidecars.urls(inputs)) paths.push_back(std::move(url));
  if (!files.listFile.empty()) paths.emplace_back(files.listFile);
  for (auto& url : targets.filesRead()) paths.push_back(std::move(url));
  return paths;
}

void addAnalyzeOptions(CLI::App& command, AnalyzeOptions& options) {
  addFileArguments(command, options.files);
  addFolderOption(command, options.files);
  addSourceOptions(command, options.source);
  addStreamsOption(command, options);
  addMeasuringOptions(command, options);
  addSpeechOptions(command, options);
  addReportPartOptions(command, options.parts);
  addTargetOptions(command, options.targets);
  addOutputOptions(command, options);
  addReportOutputOptions(command, options.outputs);
}

}  // namespace orvane::cli
