#include "orvane/core/generator/channel_ident.h"

#include <algorithm>
#include <cmath>

#include "orvane/core/generator/reproducible_math.h"

namespace orvane::core {
namespace {

using ReproducibleMath::Phase;

/// Five bursts per second can be counted by ear.
constexpr double kBurstSeconds = 0.1;
constexpr double kBurstPeriodSeconds = 0.2;
/// Makes the silence before the next channel four times as long as that between two bursts.
constexpr double kExtraPauseSeconds = 0.3;
/// A burst rises and falls as a cosine does, lest it be heard as clicks.
constexpr double kRampSeconds = 0.005;

/// From the first burst of a channel to the first of the next one.
double turnSeconds(const GeneratorSpec& spec, std::size_t channel) {
  if (!spec.sounds(channel)) return 0;
  return static_cast<double>(channel + 1) * kBurstPeriodSeconds + kExtraPauseSeconds;
}

/// When the first burst of a channel comes in a sequence; for one more than there are channels, how
/// long the sequence takes.
double startSeconds(const GeneratorSpec& spec, std::size_t channel) {
  double seconds = 0;
  for (std::size_t earlier = 0; earlier < channel; ++earlier) seconds += turnSeconds(spec, earlier);
  return seconds;
}

void renderBurst(const GeneratorSpec& spec, double startSeconds, std::vector<float>& samples) {
  const double amplitude = ReproducibleMath::amplitudeOfDB(spec.levelDB);
  const double rampFrames = kRampSeconds * spec.sampleRate;
  const auto first = static_cast<std::size_t>(std::round(startSeconds * spec.sampleRate));
  const auto frames = static_cast<std::size_t>(std::round(kBurstSeconds * spec.sampleRate));
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
  return startSeconds(spec, spec.channelCount);
}

std::vector<float> ChannelIdent::render(const GeneratorSpec& spec, std::size_t channel) {
  std::vector<float> samples(spec.frameCount());
  const double sequence = sequenceSeconds(spec);
  const double start = startSeconds(spec, channel);
  for (double repetition = 0; (repetition + 1) * sequence <= spec.durationSeconds; ++repetition)
    for (std::size_t burst = 0; burst <= channel; ++burst)
      renderBurst(spec,
                  repetition * sequence + start + static_cast<double>(burst) * kBurstPeriodSeconds,
                  samples);
  return samples;
}

}  // namespace orvane::core
