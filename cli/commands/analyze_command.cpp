#include "cli/commands/analyze_command.h"

#include <algorithm>
#include <memory>
#include <optional>

#include "cli/commands/analysis_batch.h"
#include "cli/commands/analysis_printer.h"
#include "cli/commands/analysis_streams.h"
#include "cli/commands/analyze_options.h"
#include "cli/commands/dialogue_sidecars.h"
#include "cli/commands/file_work.h"
#include "cli/commands/job_runner.h"
#include "cli/commands/measured_file.h"
#include "cli/output/abandoned_files.h"
#include "cli/output/source_date.h"
#include "cli/terminal/progress_bar.h"
#include "cli/usage_error.h"
#include "orvane/platform/pcm_buffer.h"

namespace orvane::cli {
namespace {

MeasuredFile measure(const InputName& file, const AnalyzeOptions& options, const ReportParts& parts,
                     const Execution& execution) {
  const auto source = AnalysisStreams::open(file, options, execution);
  MeasuredFile measured{
      .name = file, .identity = source->identity(), .sourceBitDepth = source->sourceBitDepth()};
  const OfflineAnalysisPipeline::Options what{.enableSileroVAD = options.speech,
                                              .computeStereoWidth = !options.noStereo,
                                              .vadTuning = options.tuning.tuning,
                                              .rawFormat = options.source.rawFormat};
  OfflineAnalysisPipeline::Choices how{.execution = execution,
                                       .dualMono = options.dualMono,
                                       .keepsBuffer = options.parts.needAudio()};
  std::optional<DialogueSidecar> sidecar;
  if (options.dialogue) {
    sidecar = options.sidecars.load(file);
    how.dialogueRegions = sidecar->regions;
  }
  measured.result = OfflineAnalysisPipeline::analyze(*source, what, how, &measured.detail);
  if (sidecar)
    measured.noteUnlessEmpty(otherAudioNote(sidecar->audioFile, measured.result.durationSeconds,
                                            measured.result.sampleRate));
  if (options.json && options.speech && !measured.detail.isSpeechDetectionMissing)
    measured.speechModel = nameOfSpeechModel();
  AnalysisStreams::describe(measured, options, *execution.observer);
  if (options.parts.chaptersAreInFile) measured.chapterMarks = source->chapters();
  measured.isJudged = options.targets.areRequested();
  if (options.needsReport()) makeReport(measured, options.parts, parts, execution);
  return measured;
}

ResultLayout layoutOf(const AnalyzeOptions& options, const ReportOutputs& outputs) {
  if (outputs.takeStandardOutput()) return ResultLayout::report;
  if (options.json) return ResultLayout::json;
  return options.quiet ? ResultLayout::rows : ResultLayout::blocks;
}

std::vector<InputName> filesOf(const AnalyzeOptions& options, StandardInput& standardInput) {
  // No sidecar lies beside standard input.
  auto files = options.dialogue ? filesWithSidecars(options.files)
                                : FileList::resolve(options.files, standardInput);
  return options.allStreams ? AnalysisStreams::eachByItself(files) : files;
}

std::vector<std::string> targetIDsOf(const AnalyzeOptions& options) {
  std::vector<std::string> ids;
  if (options.targets.areRequested())
    for (const auto& target : options.targets.selection().activeTargets()) ids.push_back(target.id);
  return ids;
}

AnalysisBatch::Plan batchPlanOf(const AnalyzeOptions& options) {
  using Existing = SummaryFile::Existing;
  return {.summaryFile = options.summaryFile,
          .existing = options.resume          ? Existing::resume
                      : options.outputs.force ? Existing::replace
                                              : Existing::refuse,
          .targetIDs = targetIDsOf(options),
          .album = options.album};
}

ExitCode runAnalyze(AnalyzeOptions options, Console& console) {
  options.settle();
  StandardInput standardInput;
  auto files = filesOf(options, standardInput);
  options.parts.requireSense(files, options.source.rawFormat.has_value());
  AnalysisBatch batch(batchPlanOf(options), files);
  ReportOutputs outputs(options.outputs, files, options.otherFilesRead(files));
  if (outputs.takeStandardOutput() && options.json)
    throw UsageError("--json and a report cannot both go to standard output");
  warnOfAbandonedFiles(outputs.files(), console);
  const auto date = sourceDate();
  ReportParts parts = options.parts.read();
  parts.targets = options.targets.selection();
  const auto jobs = std::min(static_cast<std::size_t>(options.jobs), files.size());
  const std::size_t threads = JobRunner::threadsPerJob(jobs);
  PCMBufferPool buffers;
  ProgressBar progress(console, files.size(), !options.quiet);
  AnalysisPrinter printer(console, {.layout = layoutOf(options, outputs),
                                    .curves = options.curves,
                                    .enforced = options.targets.enforced(),
                                    .columns = {.speech = options.speech || options.dialogue,
                                                .targetIDs = targetIDsOf(options)}});
  const FileWork::Plan plan{
      .jobs = jobs,
      .json = options.json,
      .takesRawAndFolders = true,
      .onFailure = [&](const InputName& file,
                       const std::string& text) { batch.addFailure(file, text); },
      .onNoAudio = [&] { batch.addNoAudio(); }};
  batch.begin();
  const auto ofKept = batch.enforceKept(options.targets.enforced(), console);
  const auto code =
      FileWork::run(files, plan, console, [&](const InputName& file) -> FileWork::Report {
        const auto observer = progress.forFile(file.shown());
        struct Done {
          ProgressBar& bar;
          ~Done() { bar.fileDone(); }
        } done{progress};
        const auto version = batch.versionOf(file);
        const Execution execution{
            .threadCount = threads, .observer = observer.get(), .buffers = &buffers};
        const auto measured =
            std::make_shared<MeasuredFile>(measure(file, options, parts, execution));
        std::string report;
        if (measured->report && date) measured->report->generatedAt = *date;
        if (outputs.isAny())
          report = outputs.write(static_cast<std::size_t>(&file - files.data()), *measured->report,
                                 measured->notes);
        return [&, text = printer.prepare(*measured, std::move(report)),
                entry = batch.entry(version, measured)] {
          batch.add(entry);
          printer.print(text);
        };
      });
  batch.finish();
  printer.finish(batch.album(), batch.closing());
  return worse(code, worse(ofKept, printer.code()));
}

}  // namespace

void completeAnalyzeCommand(CLI::App& command, ChosenCommand& chosen) {
  auto options = std::make_shared<AnalyzeOptions>();
  addAnalyzeOptions(command, *options);
  command.callback([options, &chosen] {
    chosen = [options](Console& console) { return runAnalyze(*options, console); };
  });
}

}  // namespace orvane::cli
