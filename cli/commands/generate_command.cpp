#include "cli/commands/generate_command.h"

#include <memory>
#include <utility>

#include "cli/options/audio_output_options.h"
#include "cli/options/named_choice.h"
#include "cli/options/number_option.h"
#include "cli/options/sample_rate_limits.h"
#include "cli/output/abandoned_files.h"
#include "cli/output/number_text.h"
#include "cli/output/output_file.h"
#include "cli/output/written_audio.h"
#include "cli/usage_error.h"
#include "orvane/analysis/generator_measurement.h"
#include "orvane/core/generator/signal_generator.h"
#include "orvane/edit/generator_audio_writer.h"
#include "orvane/platform/audio_load_limits.h"

namespace orvane::cli {
namespace {

using core::GeneratorBitDepth;
using core::GeneratorContainer;
using core::GeneratorSpec;
using core::GeneratorWaveform;

constexpr const char* kGroup = "Signal";

constexpr std::pair<std::string_view, GeneratorWaveform> kWaveforms[] = {
    {"sine", GeneratorWaveform::sine},         {"dual", GeneratorWaveform::dualTone},
    {"square", GeneratorWaveform::square},     {"saw", GeneratorWaveform::saw},
    {"triangle", GeneratorWaveform::triangle}, {"sweep", GeneratorWaveform::logarithmicSweep},
    {"white", GeneratorWaveform::whiteNoise},  {"pink", GeneratorWaveform::pinkNoise},
    {"brown", GeneratorWaveform::brownNoise},  {"impulse", GeneratorWaveform::impulse},
    {"clicks", GeneratorWaveform::clickTrain}, {"silence", GeneratorWaveform::silence},
    {"ident", GeneratorWaveform::channelIdent}};

constexpr std::pair<std::string_view, GeneratorBitDepth> kBitDepths[] = {
    {"int16", GeneratorBitDepth::int16},
    {"int24", GeneratorBitDepth::int24},
    {"float32", GeneratorBitDepth::float32}};

constexpr std::pair<std::string_view, GeneratorContainer> kContainers[] = {
    {"wav", GeneratorContainer::wav},
    {"aiff", GeneratorContainer::aiff},
    {"caf", GeneratorContainer::caf}};

struct GenerateOptions {
  GeneratorSpec spec{};
  std::optional<GeneratorContainer> container{};
  bool hasFrequency = false;
  bool hasRange = false;
  bool isLinear = false;
  AudioOutputOptions output{};
};

/// By `--container`, else by the name of the output; what is neither AIFF nor CAF becomes WAV.
GeneratorContainer containerOf(const GenerateOptions& options) {
  if (options.container) return *options.container;
  switch (options.output.containerFor({24, false}, AudioContainer::wave)) {
    case AudioContainer::aiff:
      return GeneratorContainer::aiff;
    case AudioContainer::caf:
      return GeneratorContainer::caf;
    default:
      return GeneratorContainer::wav;
  }
}

void requireSense(const GenerateOptions& options) {
  const bool isSweep = options.spec.waveform == GeneratorWaveform::logarithmicSweep;
  if (isSweep && options.hasFrequency)
    throw UsageError("a sweep goes --from HZ --to HZ; --frequency is for one tone");
  if (!isSweep && options.hasRange) throw UsageError("--from and --to are for a sweep");
  if (!isSweep && options.isLinear) throw UsageError("--linear is for a sweep");
}

std::string levels(const GeneratorMeasurement::Metrics& metrics) {
  const auto text = [](std::optional<float> value, const char* unit) {
    return (value ? NumberText::fixed(static_cast<double>(*value), 2) : "-") + " " + unit;
  };
  return "Peak " + text(metrics.peakDB, "dBFS") + ", RMS " + text(metrics.rmsDB, "dBFS") +
         ", integrated " + text(metrics.integratedLUFS, "LUFS");
}

ExitCode runGenerate(GenerateOptions options, Console& console) {
  requireSense(options);
  GeneratorSpec& spec = options.spec;
  const AudioOutputOptions& output = options.output;
  if (options.isLinear) spec.waveform = GeneratorWaveform::linearSweep;
  spec.container = containerOf(options);
  try {
    spec.validate();
  } catch (const core::GeneratorSpecError& error) {
    throw UsageError(error.errorDescription());
  }
  const auto frames = static_cast<std::int64_t>(spec.frameCount());
  // Rendered, as the buffer that is written, and noise as much again while it is made.
  constexpr std::int64_t kCopies = 3;
  if (!AudioLoadLimits::isWithinLimits(frames, spec.channelCount) ||
      !AudioLoadLimits::inRAMRebuildFitsLive(
          AudioLoadLimits::decodedBytes(frames, spec.channelCount), kCopies))
    throw PlatformError(output.file, "the signal is too long for this machine's memory");
  OutputFile::requireWritable(output.file, output.force);
  warnOfAbandonedFiles({output.file}, console);

  const auto channels = core::SignalGenerator::render(spec);
  const auto metrics = GeneratorMeasurement::measure(channels, spec.sampleRate);
  if (!output.dryRun)
    GeneratorAudioWriter::write(channels, spec.sampleRate, spec.bitDepth, spec.container,
                                output.file, OutputFile::existing(output.force));
  const WrittenAudio written{.file = output.file,
                             .settings = GeneratorAudioWriter::settings(
                                 {.sampleRate = spec.sampleRate, .channelCount = spec.channelCount},
                                 spec.bitDepth, spec.container),
                             .frameCount = frames};
  JsonOutput::Document document;
  const auto add = [&](const char* key, std::optional<float> level) {
    if (level) document.add(key, *level);
  };
  add("peakDB", metrics.peakDB);
  add("rmsDB", metrics.rmsDB);
  add("integratedLUFS", metrics.integratedLUFS);
  tellOfWrittenAudio(written, output, console, std::move(document));
  if (!output.json && !output.quiet) console.print(levels(metrics) + "\n");
  return ExitCode::done;
}

void addSignalOptions(CLI::App& command, const std::shared_ptr<GenerateOptions>& options) {
  constexpr double kLargest = 1e9;
  const auto number = [&](const char* name, const char* argument, double lowest, double highest,
                          const char* text, const std::function<void(double)>& set) {
    addNumberOption(command, {name, argument, kGroup, lowest, highest, text}, set);
  };
  GeneratorSpec& spec = options->spec;
  number("--frequency", "HZ", 0, kLargest, "Of the tone or the clicks; by default 1000",
         [options](double value) {
           options->spec.frequency = value;
           options->hasFrequency = true;
         });
  number("--second", "HZ", 0, kLargest, "Of the second tone of dual; by default 7000",
         [&spec](double value) { spec.secondFrequency = value; });
  number("--from", "HZ", 0, kLargest, "Where a sweep begins; by default 20",
         [options](double value) {
           options->spec.startFrequency = value;
           options->hasRange = true;
         });
  number("--to", "HZ", 0, kLargest, "Where it ends; by default 20000", [options](double value) {
    options->spec.endFrequency = value;
    options->hasRange = true;
  });
  command
      .add_flag("--linear", options->isLinear,
                "A sweep of equal steps of frequency, not of equal intervals")
      ->group(kGroup);
  number("--level", "DB", -300, 200,
         "The highest point in dBFS, of noise the RMS level; by default -20",
         [&spec](double value) { spec.levelDB = value; });
  number("--duration", "S", 0, kLargest, "In seconds; by default 10",
         [&spec](double value) { spec.durationSeconds = value; });
  number("--rate", "HZ", 0, kLargest, "The sample rate; by default 48000",
         [&spec](double value) { spec.sampleRate = value; });
  command.add_option("--channels", spec.channelCount, "By default 1")
      ->option_text("N")
      ->group(kGroup)
      ->check(CLI::Range(1, 1024));
  command.add_option("--seed", spec.seed, "Of noise; equal seeds give equal noise; by default 0")
      ->option_text("N")
      ->group(kGroup);
  command
      .add_option_function<std::string>(
          "--bit-depth",
          [&spec](const std::string& name) {
            spec.bitDepth = namedChoice(kBitDepths, "--bit-depth", name);
          },
          "By default int24")
      ->option_text("int16|int24|float32")
      ->group("Output");
  command
      .add_option_function<std::string>(
          "--container",
          [options](const std::string& name) {
            options->container = namedChoice(kContainers, "--container", name);
          },
          "By default what OUT's extension says, else wav")
      ->option_text("wav|aiff|caf")
      ->group("Output");
}

}  // namespace

void completeGenerateCommand(CLI::App& command, ChosenCommand& chosen) {
  auto options = std::make_shared<GenerateOptions>();
  command
      .add_option_function<std::string>(
          "SIGNAL",
          [options](const std::string& name) {
            options->spec.waveform = namedChoice(kWaveforms, "SIGNAL", name);
          },
          "sine, dual (two sines), square, saw, triangle, sweep, white, pink or brown (noise), "
          "impulse, clicks, silence or ident (channel n gives n bursts)")
      ->required();
  addSignalOptions(command, options);
  addAudioOutputOptions(command, options->output);
  command.callback([options, &chosen] {
    chosen = [options](Console& console) { return runGenerate(*options, console); };
  });
}

}  // namespace orvane::cli
