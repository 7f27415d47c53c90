#include <algorithm>
#include <memory>
#include <optional>

#include "cli/commands/dialogue_commands.h"
#include "cli/commands/dialogue_sidecars.h"
#include "cli/commands/file_work.h"
#include "cli/commands/job_runner.h"
#include "cli/commands/source_speech.h"
#include "cli/commands/speech_model.h"
#include "cli/options/jobs_option.h"
#include "cli/options/source_options.h"
#include "cli/options/vad_tuning_options.h"
#include "cli/output/abandoned_files.h"
#include "cli/output/dialogue_timeline.h"
#include "cli/output/number_text.h"
#include "cli/terminal/progress_bar.h"
#include "cli/terminal/terminal_text.h"
#include "orvane/audio/audio_source.h"
#include "orvane/text/utf8.h"

namespace orvane::cli {
namespace {

struct DetectOptions {
  FileList::Request files{};
  SourceOptions source{};
  VADTuningOptions tuning{};
  DialogueSidecars sidecars{};
  int jobs = 1;
  bool force = false;
  bool json = false;
  bool quiet = false;
};

struct Detected {
  DialogueSidecar::AudioFileInfo audio{};
  std::vector<DialogueRegion> regions{};
};

Detected detect(const InputName& file, const DetectOptions& options, const VadManager& model,
                const Execution& execution) {
  const auto source =
      AudioSource::open(file.path, options.source.rawFormat,
                        {.streamIndex = options.source.streamIndex, .execution = execution});
  auto found = SourceSpeech::detect(*source, model, options.tuning.tuning, execution.threadCount);
  return {.audio = {.filename = wellFormedUTF8(file.path.filename().string()),
                    .durationSeconds = found.durationSeconds,
                    .sampleRate = source->format().sampleRate},
          .regions = std::move(found.regions)};
}

std::string reportText(const InputName& file, const DialogueSidecar& sidecar,
                       const DetectOptions& options, const std::optional<SpeechModelName>& model) {
  if (options.json) return DialogueTimeline::json(file, sidecar, model);
  if (options.quiet) return "";
  return TerminalText::escaped(file.shown()) + ": " + DialogueTimeline::summary(sidecar) + "\n";
}

ExitCode runDetect(const DetectOptions& options, Console& console) {
  const auto files = filesWithSidecars(options.files);
  requireSpeechModel();
  const VadManager model(VadManager::Config{.defaultThreshold = options.tuning.tuning.threshold});
  const auto modelName = options.json ? nameOfSpeechModel() : std::nullopt;
  warnOfAbandonedFiles(options.sidecars.urls(files), console);
  const auto jobs = std::min(static_cast<std::size_t>(options.jobs), files.size());
  const std::size_t threads = JobRunner::threadsPerJob(jobs);
  ProgressBar progress(console, files.size(), !options.quiet);
  return FileWork::run(
      files, {.jobs = jobs, .json = options.json}, console,
      [&](const InputName& file) -> FileWork::Report {
        const auto observer = progress.forFile(file.shown());
        struct Done {
          ProgressBar& bar;
          ~Done() { bar.fileDone(); }
        } done{progress};
        options.sidecars.requireReplaceable(file, options.force);
        auto found =
            detect(file, options, model, {.threadCount = threads, .observer = observer.get()});
        const auto sidecar = options.sidecars.save(file, found.audio, std::move(found.regions),
                                                   DialogueRegionSource::silero);
        return [&, text = reportText(file, sidecar, options, modelName)] { console.print(text); };
      });
}

}  // namespace

void addDialogueDetectCommand(CLI::App& dialogue, ChosenCommand& chosen) {
  auto options = std::make_shared<DetectOptions>();
  CLI::App* command =
      dialogue.add_subcommand("detect", "Find speech and keep its regions beside the files");
  addFileArguments(*command, options->files);
  addSourceOptions(*command, options->source);
  addJobsOption(*command, options->jobs, "Detect in up to N files at once", "Speech detection");
  addVADTuningOptions(*command, options->tuning);
  addSidecarsOption(*command, options->sidecars, "Output");
  command->add_flag("--force", options->force, "Replace regions that were changed or imported, too")
      ->group("Output");
  command->add_flag("--json", options->json, "Print one JSON document per file and line")
      ->group("Output");
  command->add_flag("-q,--quiet", options->quiet, "No progress and no summaries")->group("Output");
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runDetect(*options, console); };
  });
}

}  // namespace orvane::cli
