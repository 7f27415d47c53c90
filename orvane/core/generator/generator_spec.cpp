#include "orvane/core/generator/generator_spec.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <utility>

#include "orvane/core/generator/channel_ident.h"
#include "orvane/core/generator/harmonic_wave.h"

namespace orvane::core {
namespace {

/// What the engine reads and measures at most: rates, channels, frames.
constexpr double kLowestRate = 100;
constexpr double kHighestRate = 10'000'000;
constexpr std::uint32_t kMaximumChannels = 1024;
constexpr double kMaximumFrames = 0x1p30 - 1;
/// Far beyond every use, and far within the range of a 32-bit float.
constexpr double kHighestLevelDB = 200;

std::string textOf(double number) {
  std::array<char, 32> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
  return {text.data(), end};
}

void require(bool holds, std::string_view field, std::string description) {
  if (!holds) throw GeneratorSpecError(field, std::move(description));
}

/// `name` as a user would call it: "frequency", "second frequency".
void requireTone(const GeneratorSpec& spec, std::string_view field, const std::string& name,
                 double hertz) {
  require(hertz > 0 && hertz < spec.sampleRate / 2, field,
          "The " + name + " must lie above 0 and below " + textOf(spec.sampleRate / 2) +
              " Hz, half the sample rate, not at " + textOf(hertz) + " Hz.");
}

void requireLevel(std::string_view field, const std::string& name, double decibels) {
  require(std::isfinite(decibels) && decibels <= kHighestLevelDB, field,
          "The " + name + " must be a number of decibels up to " + textOf(kHighestLevelDB) + ".");
}

void requireShape(const GeneratorSpec& spec) {
  require(spec.sampleRate >= kLowestRate && spec.sampleRate <= kHighestRate, "sampleRate",
          "The sample rate must lie between " + textOf(kLowestRate) + " Hz and " +
              textOf(kHighestRate / 1e6) + " MHz.");
  require(spec.channelCount >= 1 && spec.channelCount <= kMaximumChannels, "channelCount",
          "There must be 1 to " + std::to_string(kMaximumChannels) + " channels, not " +
              std::to_string(spec.channelCount) + ".");
  require(spec.durationSeconds > 0 && std::isfinite(spec.durationSeconds), "durationSeconds",
          "The duration must be above 0 seconds.");
  const double frames = std::round(spec.durationSeconds * spec.sampleRate);
  require(frames >= 1, "durationSeconds", "The duration must not be shorter than a frame.");
  require(frames <= kMaximumFrames, "durationSeconds",
          "The duration can be " + textOf(std::floor(kMaximumFrames / spec.sampleRate)) +
              " seconds at most at this sample rate.");
}

void requireChannels(const GeneratorSpec& spec) {
  const std::string count = std::to_string(spec.channelCount);
  require(spec.channelMask.empty() || spec.channelMask.size() == spec.channelCount, "channelMask",
          "The channel mask must say of each of the " + count + " channels whether it sounds.");
  require(spec.channelMask.empty() || std::any_of(spec.channelMask.begin(), spec.channelMask.end(),
                                                  [](bool sounds) { return sounds; }),
          "channelMask", "The channel mask must leave a channel that sounds.");
  require(spec.channelPhases.empty() || spec.channelPhases.size() == spec.channelCount,
          "channelPhases", "There must be a phase for each of the " + count + " channels.");
  require(std::all_of(spec.channelPhases.begin(), spec.channelPhases.end(),
                      [](double degrees) { return std::isfinite(degrees); }),
          "channelPhases", "Every phase must be a number of degrees.");
}

/// What only some waveforms ask for.
void requireWaveform(const GeneratorSpec& spec) {
  switch (spec.waveform) {
    case GeneratorWaveform::sine:
    case GeneratorWaveform::clickTrain:
      return requireTone(spec, "frequency", "frequency", spec.frequency);
    case GeneratorWaveform::dualTone:
      requireTone(spec, "frequency", "frequency", spec.frequency);
      requireTone(spec, "secondFrequency", "second frequency", spec.secondFrequency);
      return requireLevel("secondLevelDB", "level of the second tone", spec.secondLevelDB);
    case GeneratorWaveform::square:
    case GeneratorWaveform::saw:
    case GeneratorWaveform::triangle: {
      requireTone(spec, "frequency", "frequency", spec.frequency);
      const double lowest = spec.sampleRate / 2 / HarmonicWave::kMaximumPartials;
      return require(spec.frequency >= lowest, "frequency",
                     "The frequency of this waveform must be at least " + textOf(lowest) +
                         " Hz at this sample rate, not " + textOf(spec.frequency) + " Hz.");
    }
    case GeneratorWaveform::linearSweep:
    case GeneratorWaveform::logarithmicSweep:
      requireTone(spec, "startFrequency", "start frequency", spec.startFrequency);
      return requireTone(spec, "endFrequency", "end frequency", spec.endFrequency);
    case GeneratorWaveform::channelIdent: {
      requireTone(spec, "frequency", "frequency", spec.frequency);
      const double seconds = ChannelIdent::sequenceSeconds(spec);
      return require(spec.durationSeconds >= seconds, "durationSeconds",
                     "The duration must be at least " + textOf(seconds) +
                         " seconds, which it takes to name every channel once.");
    }
    case GeneratorWaveform::whiteNoise:
    case GeneratorWaveform::pinkNoise:
    case GeneratorWaveform::brownNoise:
    case GeneratorWaveform::impulse:
    case GeneratorWaveform::silence:
      return;
  }
}

}  // namespace

GeneratorSpecError::GeneratorSpecError(std::string_view field, std::string description)
    : Error(std::move(description)), field_(field) {}
GeneratorSpecError::~GeneratorSpecError() = default;

void GeneratorSpec::validate() const {
  requireShape(*this);
  requireChannels(*this);
  requireLevel("levelDB", "level", levelDB);
  requireWaveform(*this);
}

std::size_t GeneratorSpec::frameCount() const {
  return static_cast<std::size_t>(std::round(durationSeconds * sampleRate));
}

bool GeneratorSpec::sounds(std::size_t channel) const {
  return channelMask.empty() || channelMask[channel];
}

}  // namespace orvane::core
