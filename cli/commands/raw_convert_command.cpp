#include <memory>

#include "cli/commands/edited_audio.h"
#include "cli/commands/job_runner.h"
#include "cli/commands/raw_commands.h"
#include "cli/options/audio_output_options.h"
#include "cli/options/source_options.h"
#include "cli/output/output_file.h"
#include "cli/output/written_audio.h"
#include "cli/terminal/progress_bar.h"
#include "cli/usage_error.h"
#include "orvane/audio/audio_source.h"
#include "orvane/edit/audio_copy.h"

namespace orvane::cli {
namespace {

struct ConvertOptions {
  std::string file{};
  SourceOptions source{};
  AudioOutputOptions output{};
};

ExitCode runConvert(const ConvertOptions& options, Console& console) {
  if (!options.source.rawFormat) throw UsageError("--raw is missing; it says how FILE is encoded");
  const AudioOutputOptions& output = options.output;
  ReadFiles read;
  read.add(options.file);
  EditedAudio::requireWritable({output.file}, output, read, console);

  ProgressBar bar(console, 1, !output.quiet);
  const auto observer = bar.forFile(options.file);
  const Execution execution{.threadCount = JobRunner::threadsPerJob(1), .observer = observer.get()};
  const auto source = withTypedName(options.file, [&] {
    return AudioSource::open(options.file, options.source.rawFormat, {.execution = execution});
  });
  auto written = EditedAudio::outlined(output.file, output, *source, source->frameLength());
  if (!output.dryRun)
    written.losses = OutputFile::writing(output.file, [&] {
      PCMFileWriter writer(
          output.file, written.settings, written.frameCount,
          {.existing = OutputFile::existing(output.force),
           .ditherSeed = output.dither ? std::optional<std::uint64_t>(0) : std::nullopt});
      copyAudio(*source, writer, execution);
      writer.commit();
      return writer.losses();
    });
  tellOfWrittenAudio(written, output, console);
  return ExitCode::done;
}

}  // namespace

void addRawConvertCommand(CLI::App& raw, ChosenCommand& chosen) {
  auto options = std::make_shared<ConvertOptions>();
  CLI::App* command =
      raw.add_subcommand("convert", "Write headerless PCM into a file that says what it is");
  command->add_option("FILE", options->file, "The headerless file")->required();
  addSourceOptions(*command, options->source);
  addAudioOutputOptions(*command, options->output);
  addAudioFormatOptions(*command, options->output);
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runConvert(*options, console); };
  });
}

}  // namespace orvane::cli
