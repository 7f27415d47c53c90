#include "cli/commands/edit_command.h"

#include <algorithm>
#include <memory>
#include <set>
#include <utility>

#include "cli/commands/edited_audio.h"
#include "cli/commands/job_runner.h"
#include "cli/commands/measured_file.h"
#include "cli/commands/source_speech.h"
#include "cli/commands/speech_model.h"
#include "cli/options/audio_output_options.h"
#include "cli/options/edit_requests.h"
#include "cli/options/source_options.h"
#include "cli/output/abandoned_files.h"
#include "cli/output/edit_text.h"
#include "cli/output/output_file.h"
#include "cli/output/written_audio.h"
#include "cli/terminal/progress_bar.h"
#include "cli/terminal/terminal_text.h"
#include "cli/usage_error.h"
#include "orvane/container/side_chunks.h"
#include "orvane/edit/in_place_save.h"

namespace orvane::cli {
namespace {

namespace fs = std::filesystem;

struct EditOptions {
  std::string file{};
  std::vector<EditRequest> requests{};
  std::vector<std::string> followers{};  ///< of `--then`
  SourceOptions source{};
  AudioOutputOptions output{};
  bool enforce = false;
  bool inPlace = false;
  bool backup = false;
};

/// A file to be written, with all channels of the audio or one of them.
struct Target {
  WrittenAudio written{};
  std::optional<std::uint32_t> channel{};
};

std::unique_ptr<AudioSource> openSource(const EditOptions& options, const Execution& execution) {
  return AudioSource::open(options.file, options.source.rawFormat,
                           {.streamIndex = options.source.streamIndex, .execution = execution});
}

/// "take.L.wav" for "take.wav"; names of channels that are not told apart are numbers.
std::vector<fs::path> splitNames(const fs::path& output, const AudioFormat& format) {
  auto names = shownChannelNames(format.layout, format.channelCount);
  const bool areDistinct = std::set(names.begin(), names.end()).size() == names.size();
  std::vector<fs::path> paths;
  for (std::size_t i = 0; i < names.size(); ++i) {
    std::string name = areDistinct ? names[i] : "Ch " + std::to_string(i + 1);
    std::erase(name, ' ');
    fs::path path = output;
    paths.push_back(
        path.replace_filename(output.stem().string() + "." + name + output.extension().string()));
  }
  return paths;
}

std::vector<Target> targetsOf(const EditOptions& options, const AudioSource& source,
                              std::int64_t frameCount) {
  std::vector<Target> targets;
  const auto add = [&](const fs::path& file, const AudioFormat& format,
                       std::optional<std::uint32_t> channel) {
    targets.push_back(
        {EditedAudio::outlined(file, options.output, source, format, frameCount), channel});
  };
  if (options.requests.back().edit) {
    add(options.output.file, source.format(), std::nullopt);
    return targets;
  }
  const AudioFormat mono{.sampleRate = source.format().sampleRate, .channelCount = 1};
  std::uint32_t channel = 0;
  for (const fs::path& path : splitNames(options.output.file, source.format()))
    add(path, mono, channel++);
  return targets;
}

void requireWritable(const EditOptions& options, const std::vector<Target>& targets,
                     Console& console) {
  ReadFiles read;
  read.add(options.file);
  for (const EditRequest& request : options.requests)
    if (!request.speechRegions.empty()) read.add(request.speechRegions);
  std::vector<fs::path> files;
  for (const Target& target : targets) {
    read.requireNone(target.written.file);
    OutputFile::requireWritable(target.written.file, options.output.force);
    files.push_back(target.written.file);
  }
  warnOfAbandonedFiles(files, console);
}

/// Where somebody speaks in the source, as each request has it, once that is known.
using RequestedSpeech = std::vector<std::vector<FrameRange>>;

/// Loads what is kept, and detects what is asked for.
RequestedSpeech speechOf(const EditOptions& options, double sampleRate,
                         const Execution& execution) {
  std::optional<std::vector<DialogueRegion>> detected;
  RequestedSpeech speech;
  for (const EditRequest& request : options.requests) {
    auto& frames = speech.emplace_back();
    if (!request.detectsSpeech && request.speechRegions.empty()) continue;
    if (request.detectsSpeech && !detected) {
      requireSpeechModel();
      const auto source = openSource(options, execution);
      const auto tuning = SileroVADTuning::defaults();
      const VadManager model(VadManager::Config{.defaultThreshold = tuning.threshold});
      detected = SourceSpeech::detect(*source, model, tuning, execution).regions;
    }
    frames = SourceSpeech::framesOf(
        request.detectsSpeech ? *detected : SourceSpeech::load(request.speechRegions), sampleRate);
  }
  return speech;
}

/// The edits of audio that long; what makes no sense of them is said with the operation's name.
EditChain chainOf(const EditOptions& options, const AudioSource& source, std::int64_t frames,
                  const RequestedSpeech& speech = {}) {
  const AudioFormat& format = source.format();
  std::vector<Edit> edits;
  for (std::size_t i = 0; i < options.requests.size(); ++i) {
    if (!options.requests[i].edit) continue;
    Edit& edit = edits.emplace_back(options.requests[i].edit(format.sampleRate));
    auto* const expand = std::get_if<ExpandEdit>(&edit);
    if (expand != nullptr && !speech.empty()) expand->speech = speech[i];
  }
  try {
    return {std::move(edits), frames, format.channelCount};
  } catch (const EditChainError& error) {
    throw PlatformError(
        source.url(), options.requests[error.index()].operation + ": " + error.errorDescription());
  }
}

/// A copy of the file as it is, "take.wav.bak" for "take.wav".
void writeBackup(const AudioSource& source, bool force) {
  fs::path path = source.url();
  path += ".bak";
  OutputFile::writing(path, [&] {
    AtomicFile backup(path, OutputFile::existing(force));
    std::vector<std::byte> piece(std::size_t{1} << 20);
    for (std::uint64_t at = 0; at < source.file().size();) {
      const std::size_t count = source.file().readAt(at, piece);
      if (count == 0) throw PlatformError(source.url(), "the file was cut short meanwhile");
      backup.write(std::span(piece).first(count));
      at += count;
    }
    backup.commit();
    return 0;
  });
}

/// Saves the audio into the file that it came from, and tells what that could not keep.
SampleLosses saveInPlace(const EditOptions& options, const AudioSource& source,
                         const std::optional<FileStamp>& version, const EditChain& chain,
                         const PCMBuffer& audio, Console& console) {
  if (options.backup) writeBackup(source, options.output.force);
  const auto outcome = InPlaceSave::write(
      audio, source.url(),
      {.version = version,
       .frames = chain.frameMap(),
       .ditherSeed = options.output.dither ? std::optional<std::uint64_t>(0) : std::nullopt});
  const std::string name = source.url().filename().string() + ": ";
  for (const std::string& note : outcome.notes) console.warning(name + note);
  for (const std::string& loss : outcome.metadata.descriptions())
    console.warning(name + "could not keep " + loss);
  return outcome.samples;
}

/// In place nothing about the file is chosen anew.
void requireSense(const EditOptions& options) {
  if (options.inPlace == !options.output.file.empty())
    throw UsageError("-o OUT or --in-place says where the edited audio goes, one of them");
  if (!options.inPlace) {
    if (options.backup) throw UsageError("--backup goes with --in-place");
    return;
  }
  if (options.output.container || options.output.encoding)
    throw UsageError("--in-place keeps container and encoding");
  if (options.source.rawFormat) throw UsageError("--in-place is not for headerless files");
  if (!options.requests.back().edit) throw UsageError("split is not done in place");
}

ExitCode runEdit(EditOptions options, Console& console) {
  requireSense(options);
  const AudioOutputOptions& output = options.output;
  ProgressBar bar(console, 1, !output.quiet);
  const auto observer = bar.forFile(options.file);
  const Execution execution{.threadCount = JobRunner::threadsPerJob(1), .observer = observer.get()};
  const auto source = openSource(options, execution);
  const auto version = FileStamp::of(options.file);
  EditedAudio::requireRate(*source);
  if (options.inPlace) {
    if (!source->identity() || !source->identity()->isRewritableInPlace())
      throw PlatformError(source->url(), "only linear PCM in WAV, AIFF and CAF is saved in place");
    options.output.file = options.file;
    options.output.container = audioContainerFromFileTypeID(source->identity()->containerTypeID);
  }
  EditChain chain = chainOf(options, *source, source->frameLength());
  std::vector<Target> targets = targetsOf(options, *source, chain.frameMap().frameCount);
  if (options.inPlace)
    warnOfAbandonedFiles({options.file}, console);
  else
    requireWritable(options, targets, console);
  const RequestedSpeech speech = speechOf(options, source->format().sampleRate, execution);
  chain = chainOf(options, *source, source->frameLength(), speech);
  const auto chunks = options.inPlace ? std::vector<FourCC>{} : sideChunks(source->file());

  const bool isMeasured = !output.dryRun && (output.json || !output.quiet);
  ProgrammeLevels before;
  ProgrammeLevels after;
  std::vector<Normalization> normalizations;
  if (!output.dryRun) {
    const auto audio = chain.load(*source);
    if (audio->frameLength() < source->frameLength()) {
      chain = chainOf(options, *source, audio->frameLength(), speech);
      targets = targetsOf(options, *source, chain.frameMap().frameCount);
    }
    if (isMeasured) before = measureLevels(*audio, execution);
    normalizations = chain.apply(*audio, execution);
    if (isMeasured) after = measureLevels(*audio, execution);
    for (Target& target : targets) {
      const PlanarView all = audio->view();
      if (options.inPlace)
        target.written.losses = saveInPlace(options, *source, version, chain, *audio, console);
      else
        EditedAudio::write(target.written, output,
                           target.channel ? all.channels(*target.channel, 1) : all, execution);
    }
  }
  EditedAudio::warnOfSource(*source, chunks, options.inPlace, console);
  if (!output.json && !output.quiet) {
    for (const Edit& edit : chain.edits())
      console.print(EditText::description(edit, source->format().sampleRate) + "\n");
    for (const Normalization& each : normalizations)
      console.print(EditText::description(each) + "\n");
    if (isMeasured) console.print(EditText::levels(before, after) + "\n");
  }
  for (const Target& target : targets) {
    JsonOutput::Document document;
    document.add("source", options.file);
    EditText::addEdits(document, chain.edits());
    EditText::addNormalizations(document, normalizations);
    if (isMeasured) EditText::addLevels(document, before, after);
    std::vector<std::string> names;
    for (const FourCC id : chunks) names.push_back(fourCC(id));
    document.add("leftBehind", names);
    tellOfWrittenAudio(target.written, output, console, std::move(document));
  }
  const bool isMissed = !std::ranges::all_of(normalizations, EditText::isTargetReached);
  return options.enforce && isMissed ? ExitCode::targetMissed : ExitCode::done;
}

/// Takes the words of the command line apart, once all of them are there.
void completeRequests(EditOptions& options, const EditOperation& operation, OperationWords words) {
  if (words.words.empty()) throw UsageError("no IN is given");
  options.file = words.words.back();
  words.words.pop_back();
  options.requests.push_back(requestOf(operation, words));
  for (const std::string& follower : options.followers)
    options.requests.push_back(requestIn(follower));
  for (std::size_t i = 0; i + 1 < options.requests.size(); ++i)
    if (!options.requests[i].edit) throw UsageError("split comes last");
}

}  // namespace

void addEditCommand(CLI::App& program, ChosenCommand& chosen) {
  CLI::App* const edit = program.add_subcommand(
      "edit",
      "Edit the audio of a file and write it to another one. A TIME is in seconds, "
      "[h:]mm:ss[.fff] or #FRAME");
  edit->require_subcommand(1);
  addEditOperations(
      *edit, "IN",
      [&chosen](CLI::App& command, const EditOperation& operation,
                const std::shared_ptr<OperationWords>& words) {
        const auto options = std::make_shared<EditOptions>();
        command
            .add_option("--then", options->followers,
                        "One more edit, of what the edits before it give, such as \"fade out 58s "
                        "60s\"; may be given several times")
            ->option_text("\"OPERATION …\"")
            ->allow_extra_args(false)  // several in all, one at a time
            ->group("Edit");
        command
            .add_flag("--enforce", options->enforce,
                      "End with exit code 3 when normalize misses its target")
            ->group("Edit");
        addAudioOutputOptions(command, options->output, false);
        command
            .add_flag("--in-place", options->inPlace,
                      "Save into IN itself, with its chunks and all samples that do not change")
            ->group("Output");
        command.add_flag("--backup", options->backup, "Keep IN as it was as IN.bak")
            ->group("Output");
        addAudioFormatOptions(command, options->output);
        addSourceOptions(command, options->source);
        command.callback([options, words, &operation, &chosen] {
          completeRequests(*options, operation, *words);
          chosen = [options](Console& console) { return runEdit(*options, console); };
        });
      });
}

}  // namespace orvane::cli
