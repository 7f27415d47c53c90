#include "orvane/core/generator/channel_ident.h"

#include <algorithm>
#include <cmath>

#include "orvane/core/generator/reproducible_math.h"

namespace orvane::core {
namespace {

using ReproducibleMath::Phase;

// Times are whole numbers of steps of 100 ms, so that a duration either holds a sequence or not.
constexpr double kStepsPerSecond = 10;
/// Five bursts per second can be counted by ear.
constexpr std::size_t kStepsFromBurstToBurst = 2;
/// Makes the silence before the next channel four times as long as that between two bursts.
constexpr std::size_t kExtraPauseSteps = 3;
/// A burst rises and falls as a cosine does, lest it be heard as clicks.
constexpr double kRampSeconds = 0.005;

/// When the first burst of a channel comes in a sequence; for one more than there are channels, how
/// long the sequence takes.
std::size_t startStep(const GeneratorSpec& spec, std::size_t channel) {
  std::size_t steps = 0;
  for (std::size_t earlier = 0; earlier < channel; ++earlier)
    if (spec.sounds(earlier)) steps += (earlier + 1) * kStepsFromBurstToBurst + kExtraPauseSteps;
  return steps;
}

std::size_t frameOf(const GeneratorSpec& spec, std::size_t step) {
  return static_cast<std::size_t>(
      std::round(static_cast<double>(step) / kStepsPerSecond * spec.sampleRate));
}

/// One step of tone.
void renderBurst(const GeneratorSpec& spec, std::size_t first, std::vector<float>& samples) {
  const double amplitude = ReproducibleMath::amplitudeOfDB(spec.levelDB);
  const double rampFrames = kRampSeconds * spec.sampleRate;
  const std::size_t frames = frameOf(spec, 1);
  const Phase step = ReproducibleMath::phaseOfTurns(spec.frequency / spec.sampleRate);
  for (std::size_t i = 0; i < frames && first + i < samples.size(); ++i) {
    const auto toEdge = static_cast<double>(std::min(i, frames - i));
    const double turns = std::min(toEdge / rampFrames, 1.0) / 2;
    const double envelope =
        (1 - ReproducibleMath::cosine(ReproducibleMath::phaseOfTurns(turns))) / 2;
    samples[first + i] =
        static_cast<float>(amplitude * envelope * ReproducibleMath::sine(i * step));
  }
}

}  // namespace

double ChannelIdent::sequenceSeconds(const GeneratorSpec& spec) {
  return static_cast<double>(startStep(spec, spec.channelCount)) / kStepsPerSecond;
}

std::vector<float> ChannelIdent::render(const GeneratorSpec& spec, std::size_t channel) {
  std::vector<float> samples(spec.frameCount());
  const std::size_t sequence = startStep(spec, spec.channelCount);
  const std::size_t first = startStep(spec, channel);
  for (std::size_t end = sequence;
       static_cast<double>(end) / kStepsPerSecond <= spec.durationSeconds; end += sequence)
    for (std::size_t burst = 0; burst <= channel; ++burst)
      renderBurst(spec, frameOf(spec, end - sequence + first + burst * kStepsFromBurstToBurst),
                  samples);
  return samples;
}

}  // namespace orvane::core
