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
#include "cli/options/file_list.h"
#include "cli/options/number_option.h"
#include "cli/options/source_options.h"
#include "cli/output/edit_text.h"
#include "cli/output/output_file.h"
#include "cli/output/written_audio.h"
#include "cli/terminal/progress_bar.h"
#include "cli/usage_error.h"
#include "orvane/edit/sliced_edit.h"

namespace orvane::cli {
namespace {

namespace fs = std::filesystem;

struct EditOptions {
  InputName input{};
  std::vector<EditRequest> requests{};
  std::vector<std::string> followers{};  ///< of `--then`
  SourceOptions source{};
  AudioOutputOptions output{};
  bool enforce = false;
  std::optional<std::int64_t> memoryBytes{};  ///< for audio; absent for what is available
};

std::unique_ptr<AudioSource> openSource(const EditOptions& options, const Execution& execution) {
  return AudioSource::open(options.input.path, options.source.rawFormat,
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

/// The files to be written, with all channels of the audio or one of them each.
std::vector<WrittenAudio> outlined(const EditOptions& options, const AudioOutputOptions& output,
                                   const AudioSource& source, std::int64_t frameCount) {
  if (options.requests.empty() || options.requests.back().edit)
    return {EditedAudio::outlined(output.file, output, source, frameCount)};
  std::vector<WrittenAudio> files;
  for (const fs::path& path : splitNames(output.file, source.format()))
    files.push_back(EditedAudio::outlined(path, output, source, frameCount, files.size()));
  return files;
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
      detected = SourceSpeech::detect(*source, model, tuning, execution.threadCount).regions;
    }
    frames = SourceSpeech::framesOf(
        request.detectsSpeech ? *detected : SourceSpeech::load(request.speechRegions), sampleRate);
  }
  return speech;
}

/// Whether all of the audio is edited in memory.
bool isHeld(const EditOptions& options, const EditChain& chain, std::uint32_t channelCount) {
  return chain.fitsIntoMemory(channelCount) &&
         (!options.memoryBytes || chain.heldBytes(channelCount) <= *options.memoryBytes);
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
    EditChain chain(std::move(edits), frames, format.channelCount);
    if (!isHeld(options, chain, format.channelCount))
      SlicedEdit::requirePossible(chain, format.channelCount);
    return chain;
  } catch (const EditChainError& error) {
    throw PlatformError(
        source.url(), options.requests[error.index()].operation + ": " + error.errorDescription());
  }
}

/// What came of the edits.
struct Edited {
  ProgrammeLevels before{};  // where they are measured
  ProgrammeLevels after{};
  std::vector<Normalization> normalizations{};
};

using Write = std::function<void(const SlicedAudio&)>;

Edited editInMemory(const EditChain& chain, AudioSource& source, bool isMeasured,
                    const Write& write, const Execution& execution) {
  const auto audio = chain.load(source);
  if (audio->frameLength() < chain.sourceFrameCount()) throw AudioEndsEarly(audio->frameLength());
  Edited edited;
  if (isMeasured) edited.before = measureLevels(*audio, execution);
  edited.normalizations = chain.apply(*audio, execution);
  if (isMeasured) edited.after = measureLevels(*audio, execution);
  write(audio->view());
  return edited;
}

Edited editInSlices(const EditChain& chain, const AudioFormat& format, SlicedEdit::Opening open,
                    bool isMeasured, const Write& write, const Execution& execution) {
  SlicedEdit edit(chain, format, std::move(open), execution);
  Edited edited;
  edited.normalizations = edit.prepare(isMeasured);
  write(edit.audio());
  edited.before = edit.levelsBefore();
  edited.after = edit.levelsAfter();
  return edited;
}

void requireSense(const EditOptions& options) {
  requireDestination(options.output, options.source.rawFormat.has_value());
  const bool isSplit = !options.requests.empty() && !options.requests.back().edit;
  if (options.output.inPlace && isSplit) throw UsageError("split is not done in place");
}

/// Refuses before anything is edited what could not be written afterwards.
void requireWritable(const EditOptions& options, const AudioOutputOptions& output,
                     const std::vector<WrittenAudio>& files, Console& console) {
  ReadFiles inputs;
  if (!output.inPlace) inputs.add(options.input.path);
  for (const EditRequest& request : options.requests)
    if (!request.speechRegions.empty()) inputs.add(request.speechRegions);
  std::vector<fs::path> paths;
  for (const WrittenAudio& written : files) paths.push_back(written.file);
  EditedAudio::requireWritable(paths, output, inputs, console);
}

bool changesSamples(const EditChain& chain) {
  const auto isTrim = [](const Edit& edit) { return std::holds_alternative<TrimEdit>(edit); };
  return !std::ranges::all_of(chain.edits(), isTrim);
}

std::string textOf(const EditChain& chain, const Edited& edited, double sampleRate) {
  std::string text;
  for (const Edit& edit : chain.edits()) text += EditText::description(edit, sampleRate) + "\n";
  for (const Normalization& each : edited.normalizations)
    text += EditText::description(each) + "\n";
  return text;
}

ExitCode runEdit(const EditOptions& options, Console& console) {
  requireSense(options);
  ProgressBar bar(console, 1, !options.output.quiet);
  const auto observer = bar.forFile(options.input.shown());
  const Execution execution{.threadCount = JobRunner::threadsPerJob(1), .observer = observer.get()};
  const std::shared_ptr<AudioSource> source = openSource(options, execution);
  EditedAudio::requireRate(*source);
  const AudioOutputOptions output = EditedAudio::settled(options.output, *source);
  EditChain chain = chainOf(options, *source, source->frameLength());
  auto files = outlined(options, output, *source, chain.frameMap().frameCount);
  requireWritable(options, output, files, console);
  const RequestedSpeech speech = speechOf(options, source->format().sampleRate, execution);
  chain = chainOf(options, *source, source->frameLength(), speech);

  const bool isMeasured =
      !options.requests.empty() && !output.dryRun && (output.json || !output.quiet);
  Edited edited;
  std::shared_ptr<AudioSource> read;  // last
  const auto open = [&] {
    read = read ? openSource(options, execution) : source;
    if (read->file().stamp() != source->file().stamp())
      throw PlatformError(source->url(), "the file was changed by another program meanwhile");
    return read;
  };
  const auto write = [&](const SlicedAudio& audio) {
    for (WrittenAudio& file : files)
      EditedAudio::write(file, output, {*source, chain.frameMap(), open}, audio, execution);
  };
  for (bool isDone = output.dryRun; !isDone;) {
    try {
      edited = isHeld(options, chain, source->format().channelCount)
                   ? editInMemory(chain, *open(), isMeasured, write, execution)
                   : editInSlices(chain, source->format(), open, isMeasured, write, execution);
      isDone = true;
    } catch (const AudioEndsEarly& end) {
      chain = chainOf(options, *source, end.frameCount(), speech);
      files = outlined(options, output, *source, chain.frameMap().frameCount);
    }
  }
  if (output.dryRun)
    for (WrittenAudio& file : files)
      EditedAudio::foresee(file, output, {*source, chain.frameMap()}, changesSamples(chain));
  const auto leftBehind = EditedAudio::leftBehind(*source, files.front());
  EditedAudio::warnOfSource(read ? *read : *source, options.input.shown(), leftBehind,
                            files.front().keepsSamples, console);
  if (!output.json && !output.quiet) {
    console.print(textOf(chain, edited, source->format().sampleRate));
    if (isMeasured) console.print(EditText::levels(edited.before, edited.after) + "\n");
  }
  for (const WrittenAudio& written : files) {
    JsonOutput::Document document;
    document.add("source", options.input.display);
    EditText::addEdits(document, chain.edits());
    EditText::addNormalizations(document, edited.normalizations);
    if (isMeasured) EditText::addLevels(document, edited.before, edited.after);
    EditedAudio::addLeftBehind(document, leftBehind);
    tellOfWrittenAudio(written, output, console, std::move(document));
  }
  const bool isMissed = !std::ranges::all_of(edited.normalizations, EditText::isTargetReached);
  return options.enforce && isMissed ? ExitCode::targetMissed : ExitCode::done;
}

/// The bytes of standard input are edited as those of a file.
ExitCode runEditOfInput(EditOptions options, Console& console) {
  StandardInput standardInput;
  InputName& input = options.input;
  input.path = input.isStandardInput() ? standardInput.asFile() : fs::path(input.display);
  if (input.isStandardInput() && options.output.inPlace)
    throw UsageError("standard input is not saved in place");
  try {
    return runEdit(options, console);
  } catch (const Cancelled&) {
    throw;
  } catch (const Error& error) {
    console.error(input.message(error));
    return ExitCode::fileFailed;
  }
}

/// Takes the words of the command line apart, once all of them are there.
void completeRequests(EditOptions& options, const EditOperation& operation, OperationWords words) {
  if (words.words.empty()) throw UsageError("no IN is given");
  options.input.display = words.words.back();
  words.words.pop_back();
  options.requests.push_back(requestOf(operation, words));
  for (const std::string& follower : options.followers)
    options.requests.push_back(requestIn(follower));
  for (std::size_t i = 0; i + 1 < options.requests.size(); ++i)
    if (!options.requests[i].edit) throw UsageError("split comes last");
}

/// Nothing is edited; what the file says of its loudness is put right.
void addLoudnessCommand(CLI::App& edit, ChosenCommand& chosen) {
  const auto options = std::make_shared<EditOptions>();
  options->output.updateLoudness = true;
  CLI::App& command = *edit.add_subcommand(
      "loudness",
      "State the loudness as measured in the broadcast extension (bext), which is "
      "added where there is none");
  command.add_option("IN", options->input.display, "The file to measure")->required();
  addAudioOutputOptions(command, options->output, false);
  addInPlaceOptions(command, options->output, "IN");
  command.callback([options, &chosen] {
    chosen = [options](Console& console) { return runEditOfInput(*options, console); };
  });
}

}  // namespace

void completeEditCommand(CLI::App& edit, ChosenCommand& chosen) {
  edit.require_subcommand(1);
  addEditOperations(
      edit, "IN",
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
        constexpr double kMiB = 1 << 20;
        constexpr double kMostMiB = 1e9;
        addNumberOption(command,
                        {"--memory", "MIB", kEditGroup, 0, kMostMiB,
                         "How much memory the audio may take; what takes more is edited in slices. "
                         "By default what is free"},
                        [options](double value) {
                          options->memoryBytes = static_cast<std::int64_t>(value * kMiB);
                        });
        addAudioOutputOptions(command, options->output, false);
        addInPlaceOptions(command, options->output, "IN");
        addLoudnessOption(command, options->output);
        addAudioFormatOptions(command, options->output);
        addSourceOptions(command, options->source);
        command.callback([options, words, &operation, &chosen] {
          completeRequests(*options, operation, *words);
          chosen = [options](Console& console) { return runEditOfInput(*options, console); };
        });
      });
  addLoudnessCommand(edit, chosen);
}

}  // namespace orvane::cli
