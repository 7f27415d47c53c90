#include "cli/commands/diff_command.h"

#include <memory>
#include <string>
#include <utility>

#include "cli/commands/job_runner.h"
#include "cli/options/number_option.h"
#include "cli/options/source_options.h"
#include "cli/output/abandoned_files.h"
#include "cli/output/diff_findings.h"
#include "cli/output/output_file.h"
#include "cli/terminal/progress_bar.h"
#include "cli/usage_error.h"
#include "orvane/analysis/offline_diff_pipeline.h"
#include "orvane/audio/audio_source.h"
#include "orvane/container/audio_container.h"

namespace orvane::cli {
namespace {

struct DiffOptions {
  std::string a{};
  std::string b{};
  SourceOptions source{};
  OfflineDiffPipeline::Options what{};
  std::string output{};  ///< empty when the residual is not wanted
  std::optional<double> atMostDB{};
  bool json = false;
  bool force = false;
  bool quiet = false;
};

/// With `--raw` or `--preset` in both places.
OfflineDiffPipeline::Options whatToCompare(const DiffOptions& options) {
  OfflineDiffPipeline::Options what = options.what;
  if (!options.source.rawFormat) return what;
  if (what.rawFormatA || what.rawFormatB)
    throw UsageError(
        "--raw and --preset are for both files, those that end in -a and -b are for one each");
  what.rawFormatA = what.rawFormatB = options.source.rawFormat;
  return what;
}

void requireOutput(const DiffOptions& options, Console& console) {
  const std::filesystem::path output = options.output;
  const std::string extension = output.extension().string();
  const auto container = audioContainerFromExtension(extension.empty() ? "" : extension.substr(1));
  if (container.value_or(AudioContainer::wave) != AudioContainer::wave)
    throw UsageError("-o: the residual is written as WAV, not as " + extension);
  ReadFiles read;
  read.add(options.a);
  read.add(options.b);
  read.requireNone(output);
  OutputFile::requireWritable(output, options.force);
  warnOfAbandonedFiles({output}, console);
}

ExitCode runDiff(const DiffOptions& options, Console& console) {
  const auto what = whatToCompare(options);
  if (!options.output.empty()) requireOutput(options, console);

  DiffFindings findings{
      .a = options.a, .b = options.b, .residualFile = options.output, .atMostDB = options.atMostDB};
  {
    ProgressBar bar(console, 1, !options.quiet);
    const auto observer = bar.forFile(options.b);
    const Execution execution{.threadCount = JobRunner::threadsPerJob(1),
                              .observer = observer.get()};
    try {
      findings.result = OfflineDiffPipeline::computeDiff(
          options.a, options.b, what,
          {.execution = execution, .streamIndex = options.source.streamIndex}, &findings.detail);
    } catch (const Cancelled&) {
      throw;
    } catch (const Error&) {
      // Opened by itself, each says what is wrong with it under its own name.
      for (const auto& [file, rawFormat] :
           {std::pair(&options.a, what.rawFormatA), std::pair(&options.b, what.rawFormatB)})
        withTypedName(*file, [&, file = file, &rawFormat = rawFormat] {
          return AudioSource::open(
              *file, rawFormat,
              {.streamIndex = options.source.streamIndex, .execution = execution});
        });
      throw;
    }
  }
  if (!options.output.empty())
    OutputFile::writing(options.output, [&] {
      OfflineDiffPipeline::writeWAV(*findings.result.buffer, options.output,
                                    OutputFile::existing(options.force));
    });
  for (const auto& warning : findings.warnings()) console.warning(warning);
  if (options.json)
    console.print(findings.json());
  else if (!options.quiet)
    console.print(findings.table(console));
  if (findings.isWithin()) return ExitCode::done;
  console.error(findings.missed());
  return ExitCode::targetMissed;
}

}  // namespace

void completeDiffCommand(CLI::App& command, ChosenCommand& chosen) {
  auto options = std::make_shared<DiffOptions>();
  command.add_option("A", options->a, "The one file")->required();
  command.add_option("B", options->b, "The other one, which is subtracted from it")->required();
  addSourceOptions(command, options->source);
  addRawOptionsFor(command, "A", options->what.rawFormatA);
  addRawOptionsFor(command, "B", options->what.rawFormatB);
  command
      .add_flag("--match-loudness", options->what.matchLoudness,
                "Bring B to A's integrated loudness first")
      ->group("Comparison");
  addNumberOption(command,
                  {"--at-most", "DB", "Comparison", -1000, 1000,
                   "Exit with code 3 when a sample of the residual lies above DB dBFS"},
                  [options](double value) { options->atMostDB = value; });
  command.add_option("-o,--output", options->output, "Write the residual, a WAV of 32-bit floats")
      ->option_text("RESIDUAL.wav")
      ->group("Output");
  command.add_flag("--force", options->force, "Replace RESIDUAL.wav if it exists")->group("Output");
  command.add_flag("--json", options->json, "Print JSON")->group("Output");
  command.add_flag("-q,--quiet", options->quiet, "Print no table")->group("Output");
  command.callback([options, &chosen] {
    chosen = [options](Console& console) { return runDiff(*options, console); };
  });
}

}  // namespace orvane::cli
