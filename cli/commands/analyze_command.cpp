#include "cli/commands/analyze_command.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "cli/commands/dialogue_sidecar_file.h"
#include "cli/commands/file_work.h"
#include "cli/commands/job_runner.h"
#include "cli/commands/measured_file.h"
#include "cli/commands/report_parts.h"
#include "cli/commands/speech_model.h"
#include "cli/options/source_options.h"
#include "cli/options/target_options.h"
#include "cli/options/vad_tuning_options.h"
#include "cli/output/abandoned_files.h"
#include "cli/output/analysis_json.h"
#include "cli/output/analysis_table.h"
#include "cli/output/number_text.h"
#include "cli/output/report_outputs.h"
#include "cli/output/report_table.h"
#include "cli/output/source_date.h"
#include "cli/terminal/progress_bar.h"
#include "cli/usage_error.h"
#include "orvane/audio/audio_source.h"
#include "orvane/platform/error.h"

namespace orvane::cli {
namespace {

constexpr int kMostJobs = 1024;

struct AnalyzeOptions {
  FileList::Request files{};
  SourceOptions source{};
  bool json = false;
  bool curves = false;
  bool speech = false;
  bool dialogue = false;
  SileroVADTuning tuning = SileroVADTuning::defaults();
  ReportPartOptions parts{};
  TargetOptions targets{};
  ReportOutputOptions outputs{};
  bool noStereo = false;
  bool dualMono = false;
  bool quiet = false;
  int jobs = 1;

  /// More is asked for than the file's own figures.
  bool needsReport() const { return parts.isAny() || targets.areRequested() || outputs.isAny(); }
};

MeasuredFile measure(const InputName& file, const AnalyzeOptions& options, const ReportParts& parts,
                     std::size_t threads, ProgressObserver& observer) {
  const Execution execution{.threadCount = threads, .observer = &observer};
  const auto source =
      AudioSource::open(file.path, options.source.rawFormat,
                        {.streamIndex = options.source.streamIndex, .execution = execution});
  MeasuredFile measured{
      .name = file, .identity = source->identity(), .sourceBitDepth = source->sourceBitDepth()};
  const OfflineAnalysisPipeline::Options what{.enableSileroVAD = options.speech,
                                              .computeStereoWidth = !options.noStereo,
                                              .vadTuning = options.tuning,
                                              .rawFormat = options.source.rawFormat};
  OfflineAnalysisPipeline::Choices how{.execution = execution,
                                       .dualMono = options.dualMono,
                                       .keepsBuffer = options.parts.needAudio()};
  if (options.dialogue) how.dialogueRegions = DialogueSidecarFile::load(file).regions;
  measured.result = OfflineAnalysisPipeline::analyze(*source, what, how, &measured.detail);
  if (options.parts.chaptersAreInFile) measured.chapterMarks = source->chapters();
  measured.isJudged = options.targets.areRequested();
  if (options.needsReport()) makeReport(measured, options.parts, parts, execution);
  return measured;
}

/// What is read beside the files that are measured.
std::vector<std::filesystem::path> otherFilesRead(const AnalyzeOptions& options,
                                                  const std::vector<InputName>& files) {
  auto paths = options.parts.filesRead();
  if (options.dialogue)
    for (auto& url : DialogueSidecarFile::urls(files)) paths.push_back(std::move(url));
  if (!options.files.listFile.empty()) paths.emplace_back(options.files.listFile);
  return paths;
}

/// What is told of one file, made while other files may still be measured.
struct Printed {
  std::string text{};                        ///< for standard output
  std::string summary{};                     ///< the file's row of the summary
  std::vector<std::string> warnings{};       ///< for standard error
  std::vector<std::string> missedTargets{};  ///< likewise
};

/// How the results of a run are printed.
enum class Layout { blocks, rows, json, report };

Layout layoutOf(const AnalyzeOptions& options, const ReportOutputs& outputs) {
  if (outputs.takeStandardOutput()) return Layout::report;
  if (options.json) return Layout::json;
  return options.quiet ? Layout::rows : Layout::blocks;
}

Printed printed(const MeasuredFile& file, const AnalyzeOptions& options, Layout layout,
                std::string report, const Console& console) {
  Printed result{.summary = AnalysisTable::row(file, console)};
  if (options.targets.enforce) result.missedTargets = ReportTable::missedTargets(file);
  if (layout == Layout::json) {
    result.text = analysisJson(file, options.curves);
    return result;
  }
  if (layout == Layout::blocks) {
    result.text = AnalysisTable::block(file, console);
    return result;
  }
  result.text = layout == Layout::report ? std::move(report) : result.summary;
  for (const auto& warning : file.warnings())
    result.warnings.push_back(file.name.shown() + ": " + warning);
  return result;
}

/// Prints the results of a run one after another.
class ResultPrinter {
 public:
  ResultPrinter(Console& console, Layout layout) : console_(console), layout_(layout) {}

  void print(const Printed& file) {
    for (const auto& warning : file.warnings) console_.warning(warning);
    std::string text = file.text;
    if (layout_ == Layout::rows && files_ == 0) text = AnalysisTable::rowTitles(console_) + text;
    if (layout_ == Layout::blocks && files_ > 0) text = "\n" + text;
    console_.print(text);
    for (const auto& sentence : file.missedTargets) console_.error(sentence);
    if (!file.missedTargets.empty()) code_ = ExitCode::targetMissed;
    summary_ += file.summary;
    ++files_;
  }

  /// Prints what stands below all results.
  void finish() {
    if (layout_ == Layout::blocks && files_ > 1)
      console_.print("\n" + AnalysisTable::rowTitles(console_) + summary_);
  }

  /// Whether a target was missed.
  ExitCode code() const { return code_; }

 private:
  Console& console_;
  Layout layout_;
  std::string summary_{};
  std::size_t files_ = 0;
  ExitCode code_ = ExitCode::done;
};

ExitCode runAnalyze(const AnalyzeOptions& options, Console& console) {
  options.targets.requireSense(options.speech || options.dialogue);
  if (options.targets.enforce && options.speech && options.targets.needSpeech())
    requireSpeechModel();
  StandardInput standardInput;
  // No sidecar lies beside standard input.
  const auto files = options.dialogue ? DialogueSidecarFile::resolve(options.files)
                                      : FileList::resolve(options.files, standardInput);
  options.parts.requireSense(files, options.source.rawFormat.has_value());
  ReportOutputs outputs(options.outputs, files, otherFilesRead(options, files));
  if (outputs.takeStandardOutput() && options.json)
    throw UsageError("--json and a report cannot both go to standard output");
  warnOfAbandonedFiles(outputs.files(), console);
  const auto date = sourceDate();
  ReportParts parts = options.parts.read();
  parts.targets = options.targets.selection();
  const auto jobs = std::min(static_cast<std::size_t>(options.jobs), files.size());
  const std::size_t threads = JobRunner::threadsPerJob(jobs);
  const Layout layout = layoutOf(options, outputs);
  ProgressBar progress(console, files.size(), !options.quiet);
  ResultPrinter printer(console, layout);
  const auto code = FileWork::run(
      files, {.jobs = jobs, .json = options.json}, console,
      [&](const InputName& file) -> FileWork::Report {
        const auto observer = progress.forFile(file.shown());
        struct Done {
          ProgressBar& bar;
          ~Done() { bar.fileDone(); }
        } done{progress};
        auto measured = measure(file, options, parts, threads, *observer);
        std::string report;
        if (measured.report && date) measured.report->generatedAt = *date;
        if (outputs.isAny())
          report = outputs.write(static_cast<std::size_t>(&file - files.data()), *measured.report,
                                 measured.notes);
        return [&, text = printed(measured, options, layout, std::move(report), console)] {
          printer.print(text);
        };
      });
  printer.finish();
  return worse(code, printer.code());
}

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
  addSourceOptions(*command, options->source);
  addMeasuringOptions(*command, *options);
  addSpeechOptions(*command, *options);
  addReportPartOptions(*command, options->parts);
  addTargetOptions(*command, options->targets);
  addOutputOptions(*command, *options);
  addReportOutputOptions(*command, options->outputs);
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runAnalyze(*options, console); };
  });
}

}  // namespace orvane::cli
