#include "cli/commands/analyze_options.h"

#include <utility>

#include "cli/command.h"
#include "cli/options/jobs_option.h"

namespace orvane::cli {
namespace {

void addMeasuringOptions(CLI::App& command, AnalyzeOptions& options) {
  command.add_flag("--no-stereo", options.noStereo, "Leave the stereo correlation out")
      ->group("Measuring");
  command.add_flag("--dual-mono", options.dualMono, "Measure mono files as two equal loudspeakers")
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
  addJobsOption(command, options.jobs, "Measure up to N files at once", "Measuring");
}

}  // namespace

void AnalyzeOptions::settle() {
  targets.settle();
  auto& selection = parts.parts.selection;
  if (targets.needSpeech() && !dialogue) speech = true;
  if (targets.needNoiseFloor() && !selection) selection.emplace();
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
  addSourceOptions(command, options.source);
  addMeasuringOptions(command, options);
  addSpeechOptions(command, options);
  addReportPartOptions(command, options.parts);
  addTargetOptions(command, options.targets);
  addOutputOptions(command, options);
  addReportOutputOptions(command, options.outputs);
}

}  // namespace orvane::cli
