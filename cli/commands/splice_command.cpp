#include "cli/commands/splice_command.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "cli/commands/edited_audio.h"
#include "cli/commands/job_runner.h"
#include "cli/commands/measured_file.h"
#include "cli/options/edit_time.h"
#include "cli/options/source_options.h"
#include "cli/output/edit_text.h"
#include "cli/output/number_text.h"
#include "cli/terminal/progress_bar.h"
#include "orvane/edit/loaded_channels.h"
#include "orvane/edit/recording_splice.h"

namespace orvane::cli {
namespace {

using EditOperations::ChannelArrays;

enum class Kind { append, insert, replace };

constexpr const char* nameOf(Kind kind) {
  constexpr std::array kNames = {"append", "insert", "replace"};
  return kNames[static_cast<std::size_t>(kind)];
}

struct SpliceOptions {
  Kind kind{};
  std::string base{};
  std::string take{};
  EditTime from{};  ///< or where the take is inserted
  EditTime to{};
  EditTime crossfade{.seconds = 0.01};
  SourceOptions source{};  ///< of the base
  AudioOutputOptions output{};
};

/// What the take replaces of a base: nothing, unless that is asked for.
FrameRange replacedBy(const SpliceOptions& options, const AudioSource& base,
                      std::int64_t frameCount) {
  const double rate = base.format().sampleRate;
  if (options.kind == Kind::append) return {frameCount, frameCount};
  if (options.kind == Kind::insert) {
    const std::int64_t place = std::min(options.from.frameAt(rate), frameCount);
    return {place, place};
  }
  const auto range =
      FrameRange{options.from.frameAt(rate), options.to.frameAt(rate)}.clamped(frameCount);
  if (range.isEmpty()) throw PlatformError(base.url(), "there is no audio in the range");
  return range;
}

/// The take at the rate of the base, with as many channels.
ChannelArrays fitted(AudioSource& take, const AudioFormat& format) {
  auto channels = RecordingSplice::conformChannels(EditOperations::loadChannels(take),
                                                   static_cast<int>(format.channelCount));
  if (!channels)
    throw PlatformError(take.url(), "A take with " +
                                        NumberText::counted(take.format().channelCount, "channel") +
                                        " cannot be spliced into " +
                                        NumberText::counted(format.channelCount, "channel"));
  const double rate = take.format().sampleRate;
  auto resampled = RecordingSplice::resampleTake(std::move(*channels), rate, format.sampleRate);
  if (!resampled || resampled->front().empty())
    throw PlatformError(take.url(), "It cannot be converted from " + NumberText::sampleRate(rate) +
                                        " to " + NumberText::sampleRate(format.sampleRate));
  return std::move(*resampled);
}

void warnOfLayouts(const AudioSource& base, const AudioSource& take, Console& console) {
  const auto namesOf = [](const AudioFormat& format) {
    return shownChannelNames(format.layout, format.channelCount);
  };
  if (take.format().channelCount == base.format().channelCount &&
      namesOf(take.format()) != namesOf(base.format()))
    console.warning(take.url().string() +
                    ": its channels stand for other loudspeakers than those of " +
                    base.url().string());
}

/// Where the take came to lie.
struct Seams {
  FrameRange replaced{};
  std::int64_t takeFrames = 0;
  std::int64_t crossfadeFrames = 0;
};

std::string description(const Seams& seams, double rate) {
  return "Take of " + EditText::length(seams.takeFrames, rate) +
         (seams.replaced.isEmpty() ? " at " + EditText::place(seams.replaced.start, rate)
                                   : " in place of " + EditText::range(seams.replaced, rate)) +
         ", crossfades of up to " + EditText::length(seams.crossfadeFrames, rate);
}

JsonOutput::Document document(const SpliceOptions& options, const Seams& seams,
                              const EditedAudio::LeftBehind& leftBehind) {
  JsonOutput::Document document;
  document.add("source", options.base);
  document.add("take", options.take);
  document.add("operation", std::string(nameOf(options.kind)));
  document.add("startFrame", seams.replaced.start);
  document.add("endFrame", seams.replaced.end);
  document.add("takeFrames", seams.takeFrames);
  document.add("crossfadeFrames", seams.crossfadeFrames);
  EditedAudio::addLeftBehind(document, leftBehind);
  return document;
}

ExitCode runSplice(const SpliceOptions& options, Console& console) {
  requireDestination(options.output, options.source.rawFormat.has_value());
  ProgressBar bar(console, 1, !options.output.quiet);
  const auto observer = bar.forFile(options.base);
  const Execution execution{.threadCount = JobRunner::threadsPerJob(1), .observer = observer.get()};
  const auto open = [&] {
    return withTypedName(options.base, [&] {
      return AudioSource::open(options.base, options.source.rawFormat,
                               {.streamIndex = options.source.streamIndex, .execution = execution});
    });
  };
  const auto base = open();
  const auto take = withTypedName(
      options.take, [&] { return AudioSource::open(options.take, {}, {.execution = execution}); });
  EditedAudio::requireRate(*base);
  EditedAudio::requireRate(*take);
  const AudioOutputOptions output = EditedAudio::settled(options.output, *base);
  ReadFiles read;
  if (!output.inPlace) read.add(options.base);
  read.add(options.take);
  EditedAudio::requireWritable({output.file}, output, read, console);
  const AudioFormat& format = base->format();
  const ChannelArrays taken = fitted(*take, format);

  ChannelArrays channels;
  if (!output.dryRun) channels = EditOperations::loadChannels(*base);
  const auto frameCount =
      output.dryRun ? base->frameLength() : static_cast<std::int64_t>(channels.front().size());
  const Seams seams{.replaced = replacedBy(options, *base, frameCount),
                    .takeFrames = static_cast<std::int64_t>(taken.front().size()),
                    .crossfadeFrames = options.crossfade.frameAt(format.sampleRate)};
  const auto& [start, end] = seams.replaced;
  const bool isReplacement = options.kind == Kind::replace;
  const FrameMap map =
      isReplacement
          ? RecordingSplice::replaceMap(frameCount, start, end, seams.takeFrames,
                                        seams.crossfadeFrames)
          : RecordingSplice::insertMap(frameCount, start, seams.takeFrames, seams.crossfadeFrames);
  auto written = EditedAudio::outlined(output.file, output, *base, map.frameCount);
  if (output.dryRun) {
    EditedAudio::foresee(written, output, {*base, map}, true);
  } else {
    const auto result =
        isReplacement ? RecordingSplice::replaceSplice(std::move(channels), start, end, taken,
                                                       seams.crossfadeFrames, format.sampleRate)
                      : RecordingSplice::insertSplice(std::move(channels), start, taken,
                                                      seams.crossfadeFrames, format.sampleRate);
    std::vector<const float*> pointers;
    for (const auto& channel : result.channelData) pointers.push_back(channel.data());
    EditedAudio::write(written, output, {*base, map, open},
                       PlanarView(pointers, static_cast<std::size_t>(map.frameCount)), execution);
  }

  const auto leftBehind = EditedAudio::leftBehind(*base, written);
  EditedAudio::warnOfSource(*base, options.base, leftBehind, written.keepsSamples, console);
  EditedAudio::warnOfSource(*take, options.take, {}, false, console);
  warnOfLayouts(*base, *take, console);
  if (!output.json && !output.quiet) console.print(description(seams, format.sampleRate) + "\n");
  tellOfWrittenAudio(written, output, console, document(options, seams, leftBehind));
  return ExitCode::done;
}

void addKind(CLI::App& splice, Kind kind, const std::string& description, ChosenCommand& chosen) {
  const auto shared = std::make_shared<SpliceOptions>();
  SpliceOptions& options = *shared;
  options.kind = kind;
  CLI::App& command = *splice.add_subcommand(nameOf(kind), description);
  command.add_option("BASE", options.base, "The recording")->required();
  command.add_option("TAKE", options.take, "What was recorded anew")->required();
  const auto addRequired = [&](const char* option, const char* text, EditTime& time) {
    addTimeOption(command, option, text, [&time](EditTime given) { time = given; })->required();
  };
  if (kind == Kind::insert) addRequired("--at", "Where TAKE begins", options.from);
  if (kind == Kind::replace) {
    addRequired("--from", "Where what TAKE replaces begins", options.from);
    addRequired("--to", "Where it ends", options.to);
  }
  addTimeOption(command, "--crossfade",
                "How long both sides of a seam overlap, as far as there is audio; by default 10 ms",
                [&options](EditTime time) { options.crossfade = time; });
  addAudioOutputOptions(command, options.output, false);
  addInPlaceOptions(command, options.output, "BASE");
  addLoudnessOption(command, options.output);
  addAudioFormatOptions(command, options.output);
  addSourceOptions(command, options.source);
  command.footer("--raw, --preset and --stream speak of BASE.");
  command.callback([shared, &chosen] {
    if (shared->kind == Kind::replace) requireOrder(shared->from, shared->to);
    chosen = [shared](Console& console) { return runSplice(*shared, console); };
  });
}

}  // namespace

void completeSpliceCommand(CLI::App& command, ChosenCommand& chosen) {
  command.require_subcommand(1);
  addKind(command, Kind::append, "Put TAKE behind the end of BASE", chosen);
  addKind(command, Kind::insert, "Put TAKE into BASE, which loses nothing", chosen);
  addKind(command, Kind::replace, "Put TAKE in place of what lies between two times", chosen);
}

}  // namespace orvane::cli
