#include <memory>
#include <mutex>
#include <optional>

#include "cli/commands/job_runner.h"
#include "cli/commands/raw_commands.h"
#include "cli/options/number_option.h"
#include "cli/options/sample_rate_limits.h"
#include "cli/output/number_text.h"
#include "cli/output/raw_guess.h"
#include "cli/output/waveform.h"
#include "orvane/platform/error.h"
#include "orvane/platform/input_file.h"

namespace orvane::cli {
namespace {

constexpr double kUsualRate = 48000;
constexpr std::int64_t kUsualChannelCounts[] = {1, 2, 4, 6, 8};
constexpr std::size_t kWaveformColumns = 24;

struct GuessOptions {
  std::string file{};
  std::optional<double> rate{};
  std::optional<std::int64_t> channels{};
  std::int64_t skip = 0;
  double previewSeconds = 10;
  bool json = false;
};

RawPCMGuesser::Known knownOf(const GuessOptions& options) {
  RawPCMGuesser::Known known{.sampleRate = options.rate.value_or(kUsualRate),
                             .headerSkipBytes = options.skip};
  if (options.channels)
    known.channelCounts = {*options.channels};
  else
    known.channelCounts.assign(std::begin(kUsualChannelCounts), std::end(kUsualChannelCounts));
  return known;
}

ExitCode runGuess(const GuessOptions& options, Console& console) {
  RawGuess guess{.file = options.file,
                 .fileSize = static_cast<std::int64_t>(InputFile(options.file).size()),
                 .isRateKnown = options.rate.has_value(),
                 .areChannelsKnown = options.channels.has_value()};
  std::mutex mutex;
  RawPCMGuesser::Execution execution{.threadCount = JobRunner::threadsPerJob(1), .onPreview = {}};
  if (!options.json)
    execution.onPreview = [&](const RawPCMFormat& format, const PCMBuffer& preview) {
      auto drawn = waveform(preview, kWaveformColumns);
      const std::lock_guard lock(mutex);
      guess.waveforms[{format.channelCount, format.formatToken()}] = std::move(drawn);
    };
  guess.proposals =
      RawPCMGuesser::propose(options.file, knownOf(options), options.previewSeconds, execution);
  if (guess.proposals.candidates.empty())
    throw PlatformError(options.file, "no encoding fits its size of " +
                                          NumberText::counted(guess.fileSize, "byte"));
  if (guess.proposals.isSilent)
    console.warning(options.file +
                    ": all bytes are alike as far as they were looked at, which "
                    "tells nothing of the encoding");
  console.print(options.json ? rawGuessJson(guess) : rawGuessTable(guess, console));
  return ExitCode::done;
}

}  // namespace

void addRawGuessCommand(CLI::App& raw, ChosenCommand& chosen) {
  constexpr std::int64_t kMostChannels = 64;
  auto options = std::make_shared<GuessOptions>();
  CLI::App* command = raw.add_subcommand(
      "guess", "Rank how a headerless file may be encoded, by how smooth its sound comes out");
  command->add_option("FILE", options->file, "The headerless file")->required();
  addNumberOption(*command,
                  {.name = "--rate",
                   .argument = "HZ",
                   .group = "Input",
                   .lowest = SampleRateLimits::kLowestHertz,
                   .highest = SampleRateLimits::kHighestHertz,
                   .description = "Its sample rate, which cannot be guessed (48000)"},
                  [options](double rate) { options->rate = rate; });
  command
      ->add_option("--channels", options->channels, "Its channels; else 1, 2, 4, 6 and 8 are tried")
      ->option_text("N")
      ->group("Input")
      ->check(CLI::Range(std::int64_t{1}, kMostChannels));
  command->add_option("--skip", options->skip, "What stands before its samples")
      ->option_text("BYTES")
      ->group("Input")
      ->check(CLI::NonNegativeNumber);
  addNumberOption(*command,
                  {.name = "--preview",
                   .argument = "S",
                   .group = "Input",
                   .lowest = 0.1,
                   .highest = 60,
                   .description = "Judge by so many seconds of sound (10)"},
                  [options](double seconds) { options->previewSeconds = seconds; });
  command->add_flag("--json", options->json, "Print one JSON document with all proposals")
      ->group("Output");
  command->callback([options, &chosen] {
    chosen = [options](Console& console) { return runGuess(*options, console); };
  });
}

}  // namespace orvane::cli
