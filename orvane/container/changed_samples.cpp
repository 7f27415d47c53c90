#include "orvane/container/changed_samples.h"

#include <cstring>

namespace orvane {
namespace {

bool isSame(float a, float b) noexcept {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace

ChangedSamples::ChangedSamples(PlanarView audio, PlanarView before)
    : audio_(audio), before_(before), changed_(audio.channelCount()) {
  for (std::size_t channel = 0; channel < changed_.size(); ++channel) {
    const auto samples = audio.samples(channel);
    const float* const was = before.channel(channel);
    changed_[channel].assign(samples.begin(), samples.end());
    for (std::size_t frame = 0; frame < samples.size(); ++frame)
      if (isSame(was[frame], samples[frame])) changed_[channel][frame] = 0;
    pointers_.push_back(changed_[channel].data());
  }
}

bool ChangedSamples::areSame(PlanarView a, PlanarView b) noexcept {
  for (std::size_t channel = 0; channel < a.channelCount(); ++channel)
    if (std::memcmp(a.channel(channel), b.channel(channel), a.frameCount() * sizeof(float)) != 0)
      return false;
  return true;
}

void ChangedSamples::copyUnchanged(const std::byte* from, std::size_t width,
                                   std::byte* to) const noexcept {
  const std::size_t channels = audio_.channelCount();
  for (std::size_t channel = 0; channel < channels; ++channel) {
    const float* const is = audio_.channel(channel);
    const float* const was = before_.channel(channel);
    for (std::size_t frame = 0; frame < audio_.frameCount(); ++frame) {
      if (!isSame(was[frame], is[frame])) continue;
      const std::size_t at = (frame * channels + channel) * width;
      std::memcpy(to + at, from + at, width);
    }
  }
}

}  // namespace orvane
