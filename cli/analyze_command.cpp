#include "cli/analyze_command.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "cli/analysis_json.h"
#include "cli/analysis_table.h"
#include "cli/dialogue_sidecar_file.h"
#include "cli/file_work.h"
#include "cli/job_runner.h"
#include "cli/measured_file.h"
#include "cli/number_text.h"
#include "cli/progress_bar.h"
#include "cli/raw_format_option.h"
#include "cli/sample_rate_limits.h"
#include "cli/usage_error.h"
#include "cli/vad_tuning_options.h"
#include "orvane/platform/error.h"

namespace orvane::cli {
namespace {

constexpr int kMostJobs = 1024;

struct AnalyzeOptions {
  FileList::Request files{};
  std::optional<RawPCMFormat> rawFormat{};
  std::optional<int> streamIndex{};
  bool json = false;
  bool curves = false;
  bool speech = false;
  bool dialogue = false;
  SileroVADTuning tuning = SileroVADTuning::defaults();
  bool noStereo = false;
  bool dualMono = false;
  bool quiet = false;
  int jobs = 1;
};

void requireUsableRate(const InputName& file, double sampleRate) {
  if (SampleRateLimits::contains(sampleRate)) return;
  throw PlatformError(file.path, "a sample rate of " + NumberText::shortest(sampleRate) +
                                     " Hz is outside " + SampleRateLimits::description());
}

MeasuredFile measure(const InputName& file, const AnalyzeOptions& options, std::size_t threads,
                     ProgressObserver& observer) {
  MeasuredFile measured;
  measured.name = file;
  if (!options.rawFormat) {
    if (const auto description = describeAudioFile(file.path)) {
      requireUsableRate(file, description->dataFormat.sampleRate);
      measured.identity = AudioFileIdentity::fromDescription(*description, file.path);
      measured.sourceBitDepth = description->sourceBitDepth;
    }
  }
  const OfflineAnalysisPipeline::Options what{.enableSileroVAD = options.speech,
                                              .computeStereoWidth = !options.noStereo,
                                              .vadTuning = options.tuning,
                                              .rawFormat = options.rawFormat};
  OfflineAnalysisPipeline::Execution how{.threadCount = threads,
                                         .observer = &observer,
                                         .streamIndex = options.streamIndex,
                                         .keepsBuffer = false};
  if (options.dialogue) how.dialogueRegions = DialogueSidecarFile::load(file).regions;
  measured.result = OfflineAnalysisPipeline::analyzeFile(file.path, what, how, &measured.detail);
  requireUsableRate(file, measured.result.sampleRate);
  if (options.dualMono) measured.raiseForDualMono();
  return measured;
}

/// What is printed for one file, made while other files may still be measured.
struct Printed {
  std::string text{};                   ///< for standard output
  std::string summary{};                ///< the file's row of the summary
  std::vector<std::string> warnings{};  ///< for standard error
};

Printed printed(const MeasuredFile& file, const AnalyzeOptions& options, const Console& console) {
  Printed result;
  if (options.json) {
    result.text = JsonOutput::line(analysisJson(file, options.curves));
    return result;
  }
  result.summary = AnalysisTable::row(file, console);
  if (!options.quiet) {
    result.text = AnalysisTable::block(file, console);
    return result;
  }
  result.text = result.summary;
  for (const auto& warning : file.warnings())
    result.warnings.push_back(file.name.shown() + ": " + warning);
  return result;
}

ExitCode runAnalyze(const AnalyzeOptions& options, Console& console) {
  StandardInput standardInput;
  // No sidecar lies beside standard input.
  const auto files = options.dialogue ? DialogueSidecarFile::resolve(options.files)
                                      : FileList::resolve(options.files, standardInput);
  const auto jobs = std::min(static_cast<std::size_t>(options.jobs), files.size());
  const std::size_t threads = JobRunner::threadsPerJob(jobs);
  const bool isRowPerFile = options.quiet && !options.json;
  const bool isBlockPerFile = !options.quiet && !options.json;
  ProgressBar progress(console, files.size(), !options.quiet);

  std::string summary;
  std::size_t printedFiles = 0;
  const auto report = [&](const Printed& file) {
    for (const auto& warning : file.warnings) console.warning(warning);
    std::string text = file.text;
    if (isRowPerFile && printedFiles == 0) text = AnalysisTable::rowTitles(console) + text;
    if (isBlockPerFile && printedFiles > 0) text = "\n" + text;
    console.print(text);
    summary += file.summary;
    ++printedFiles;
  };
  const auto code = FileWork::run(
      files, {.jobs = jobs, .json = options.json}, console,
      [&](const InputName& file) -> FileWork::Report {
        const auto observer = progress.forFile(file.shown());
        struct Done {
          ProgressBar& bar;
          ~Done() { bar.fileDone(); }
        } done{progress};
        return [&, text = printed(measure(file, options, threads, *observer), options, console)] {
          report(text);
        };
      });
  if (isBlockPerFile && printedFiles > 1)
    console.print("\n" + AnalysisTable::rowTitles(console) + summary);
  return code;
}

void addMeasuringOptions(CLI::App& command, AnalyzeOptions& options) {
  command
      .add_option_function<std::string>(
          "--raw",
          [&options](const std::string& text) { options.rawFormat = RawFormatOption::parse(text); },
          RawFormatOption::description())
      ->option_text("FORMAT")
      ->group("Input");
  command
      .add_option("--stream", options.streamIndex,
                  "Measure audio stream N of files with several, counted from 0")
      ->option_text("N")
      ->group("Input")
      ->check(CLI::NonNegativeNumber);
  command.add_flag("--no-stereo", options.noStereo, "Leave the stereo correlation out")
      ->group("Measuring");
  command
      .add_flag("--dual-mono", options.dualMono,
                "Take mono files for two equal loudspeakers: 3.01 LU louder")
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
  command.add_option("--jobs", options.jobs, "Measure up to N files at once")
      ->option_text("N")
      ->group("Measuring")
      ->check(CLI::Range(1, kMostJobs));
}

}  // namespace

void addAnalyzeCommand(CLI::App& program, ChosenCommand& chosen) {
  auto options = std::make_shared<AnalyzeOptions>();
  CLI::App* command = program.add_subcommand(
      "analyze", "Measure loudness, true peak, dynamics and channel statistics");
  addFileArguments(*command, options->files);
  addMeasuringOptions(*command, *options);
  addSpeechOptions(*command, *options);
  addOutputOptions(*command, *options);
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runAnalyze(*options, console); };
  });
}

}  // namespace orvane::cli
