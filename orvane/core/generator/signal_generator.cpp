#include "orvane/core/generator/signal_generator.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "orvane/core/generator/channel_ident.h"
#include "orvane/core/generator/click_train.h"
#include "orvane/core/generator/harmonic_wave.h"
#include "orvane/core/generator/noise.h"
#include "orvane/core/generator/reproducible_math.h"
#include "orvane/core/generator/sweep.h"
#include "orvane/platform/precondition.h"

namespace orvane::core {
namespace {

using ReproducibleMath::Phase;
using Samples = std::vector<float>;

/// Renders one channel after another of a valid specification.
class Renderer {
 public:
  Renderer(const GeneratorSpec& spec, std::optional<std::uint32_t> harmonicCap)
      : spec_(spec),
        frames_(spec.frameCount()),
        amplitude_(ReproducibleMath::amplitudeOfDB(spec.levelDB)),
        harmonicCap_(harmonicCap) {}

  Samples render(std::size_t channel) {
    switch (spec_.waveform) {
      case GeneratorWaveform::sine:
        return tone(channel, ReproducibleMath::sine);
      case GeneratorWaveform::dualTone:
        return dualTone(channel);
      case GeneratorWaveform::square:
        return harmonicWave(channel, HarmonicWave::Shape::square);
      case GeneratorWaveform::saw:
        return harmonicWave(channel, HarmonicWave::Shape::saw);
      case GeneratorWaveform::triangle:
        return harmonicWave(channel, HarmonicWave::Shape::triangle);
      case GeneratorWaveform::linearSweep:
      case GeneratorWaveform::logarithmicSweep:
        return sweep(channel);
      case GeneratorWaveform::whiteNoise:
        return noise(Noise::white(GaussianSource(spec_.seed, channel), frames_));
      case GeneratorWaveform::pinkNoise:
        return noise(Noise::pink(GaussianSource(spec_.seed, channel), spec_.sampleRate, frames_));
      case GeneratorWaveform::brownNoise:
        return noise(Noise::brown(GaussianSource(spec_.seed, channel), spec_.sampleRate, frames_));
      case GeneratorWaveform::impulse:
        return clicks(0, frames_);
      case GeneratorWaveform::clickTrain:
        return clickTrain(channel);
      case GeneratorWaveform::silence:
        return Samples(frames_);
      case GeneratorWaveform::channelIdent:
        return ChannelIdent::render(spec_, channel);
    }
    return {};
  }

 private:
  /// In turns.
  double startOf(std::size_t channel) const {
    return spec_.channelPhases.empty() ? 0 : spec_.channelPhases[channel] / 360;
  }

  /// `next()` gives the samples at amplitude 1.
  template <typename Next>
  Samples samplesOf(Next next) const {
    Samples samples(frames_);
    for (float& sample : samples) sample = static_cast<float>(amplitude_ * next());
    return samples;
  }

  /// `waveAt(phase)` is a wave of the frequency that is asked for.
  template <typename Wave>
  Samples tone(std::size_t channel, Wave waveAt) const {
    const Phase step = ReproducibleMath::phaseOfTurns(spec_.frequency / spec_.sampleRate);
    Phase phase = ReproducibleMath::phaseOfTurns(startOf(channel)) - step;
    return samplesOf([&] { return waveAt(phase += step); });
  }

  Samples dualTone(std::size_t channel) const {
    const Phase start = ReproducibleMath::phaseOfTurns(startOf(channel));
    const Phase firstStep = ReproducibleMath::phaseOfTurns(spec_.frequency / spec_.sampleRate);
    const Phase secondStep =
        ReproducibleMath::phaseOfTurns(spec_.secondFrequency / spec_.sampleRate);
    Phase first = start - firstStep, second = start - secondStep;
    // The crests of both meet sooner or later: the peak is the sum of the amplitudes.
    const double ratio = ReproducibleMath::amplitudeOfDB(spec_.secondLevelDB);
    return samplesOf([&] {
      return (ReproducibleMath::sine(first += firstStep) +
              ratio * ReproducibleMath::sine(second += secondStep)) /
             (1 + ratio);
    });
  }

  /// How many partials lie below half the sample rate, within the cap.
  std::uint64_t partialCount() const {
    const double half = spec_.sampleRate / 2;
    auto count = static_cast<std::uint64_t>(std::min(half / spec_.frequency, 0x1p53));
    while (count > 1 && static_cast<double>(count) * spec_.frequency >= half) --count;
    return harmonicCap_ ? std::min<std::uint64_t>(count, *harmonicCap_) : count;
  }

  Samples harmonicWave(std::size_t channel, HarmonicWave::Shape shape) {
    if (!wave_) wave_.emplace(shape, static_cast<std::uint32_t>(partialCount()));
    return tone(channel, [this](Phase phase) { return wave_->at(phase); });
  }

  Samples sweep(std::size_t channel) const {
    const Phase start = ReproducibleMath::phaseOfTurns(startOf(channel));
    Sweep sweep(spec_);
    return samplesOf([&] { return ReproducibleMath::sine(start + sweep.next()); });
  }

  /// Single samples.
  Samples clicks(std::size_t first, std::size_t period) const {
    Samples samples(frames_);
    for (std::size_t frame = first; frame < frames_; frame += period)
      samples[frame] = static_cast<float>(amplitude_);
    return samples;
  }

  Samples clickTrain(std::size_t channel) const {
    const double period = spec_.sampleRate / spec_.frequency;
    const double turns = startOf(channel);
    const double first = (std::ceil(turns) - turns) * period;
    // Clicks that lie on frames are single samples: the partials cancel in all others.
    if (!harmonicCap_ && period == std::floor(period) && first == std::floor(first))
      return clicks(static_cast<std::size_t>(std::min(first, 0x1p53)),
                    static_cast<std::size_t>(std::min(period, 0x1p53)));
    const std::uint64_t partials = partialCount();
    return tone(channel, [partials](Phase phase) { return clickAt(phase, partials); });
  }

  /// Noise of any level at the one that is asked for.
  Samples noise(const std::vector<double>& raw) const {
    double sum = 0;
    for (const double x : raw) sum += x * x;
    const double rms = std::sqrt(sum / static_cast<double>(frames_));
    auto next = raw.begin();
    return samplesOf([&] { return *next++ / rms; });
  }

  const GeneratorSpec& spec_;
  std::size_t frames_;
  double amplitude_;
  std::optional<std::uint32_t> harmonicCap_;
  std::optional<HarmonicWave> wave_;
};

/// Whether the two channels hold the same samples, as far as both sound.
bool areAlike(const GeneratorSpec& spec, std::size_t a, std::size_t b) {
  switch (spec.waveform) {
    case GeneratorWaveform::whiteNoise:
    case GeneratorWaveform::pinkNoise:
    case GeneratorWaveform::brownNoise:
    case GeneratorWaveform::channelIdent:
      return false;
    default:
      return spec.channelPhases.empty() || spec.channelPhases[a] == spec.channelPhases[b];
  }
}

}  // namespace

std::vector<std::vector<float>> SignalGenerator::render(const GeneratorSpec& spec,
                                                        std::optional<std::uint32_t> harmonicCap) {
  precondition(!harmonicCap || *harmonicCap >= 1, "At least one partial must be left");
  spec.validate();
  Renderer renderer(spec, harmonicCap);
  std::vector<Samples> channels(spec.channelCount);
  std::optional<std::size_t> last;
  for (std::size_t channel = 0; channel < channels.size(); ++channel) {
    if (!spec.sounds(channel)) {
      channels[channel].resize(spec.frameCount());
    } else {
      channels[channel] =
          last && areAlike(spec, *last, channel) ? channels[*last] : renderer.render(channel);
      last = channel;
    }
  }
  return channels;
}

}  // namespace orvane::core
