#include "orvane/core/loudness/k_weighted_energy_meter.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "orvane/core/loudness/loudness_grid.h"
#include "orvane/platform/denormals.h"

namespace orvane::core {
namespace {

constexpr std::size_t kTicks = LoudnessTimeline::kTicksPerStep;

/// The slowest pole falls by 1/e in 4.2 ms at any rate; sixty times that is left out of no figure.
constexpr double kWarmUpSeconds = 0.25;

/// Mean weighted power below which a tick is silence: −360 dBFS. Far below any sample format, far
/// above what the stretches' short memory leaves out.
constexpr double kSilentPower = 1e-36;

}  // namespace

KWeightedEnergyMeter::KWeightedEnergyMeter(double sampleRate, std::vector<float> weights)
    : coefficients_(designKWeighting(sampleRate)),
      stepFrames_(static_cast<std::size_t>(std::llround(sampleRate * LoudnessGrid::kStepSeconds))),
      warmUpFrames_(static_cast<std::size_t>(sampleRate * kWarmUpSeconds)),
      timeline_(stepFrames_) {
  for (std::size_t channel = 0; channel < weights.size(); ++channel)
    if (weights[channel] != 0.0F) {
      channels_.push_back(channel);
      weights_.push_back(static_cast<double>(weights[channel]));
    }
  states_.resize((channels_.size() + kKWeightingLanes - 1) / kKWeightingLanes);
  tickSums_.resize(channels_.size(), 0.0);
}

std::size_t KWeightedEnergyMeter::tickEnd(std::size_t tick) const noexcept {
  return stepFrames_ * (tick + 1) / kTicks;
}

void KWeightedEnergyMeter::appendTick(double energy, std::size_t frames) {
  timeline_.appendTick(energy < kSilentPower * static_cast<double>(frames) ? 0.0 : energy);
}

void KWeightedEnergyMeter::process(PlanarView audio) {
  const ScopedDenormalFlush flush;
  while (audio.frameCount() > 0) {
    if (framesInStep_ == 0) audio = audio.from(processStretches(audio));
    const std::size_t frames = std::min(audio.frameCount(), tickEnd(tick_) - framesInStep_);
    if (frames > 0) processInOrder(audio.slice(0, frames));
    audio = audio.from(frames);
  }
}

void KWeightedEnergyMeter::processInOrder(PlanarView audio) {
  for (std::size_t group = 0; group < states_.size(); ++group) {
    const std::size_t first = group * kKWeightingLanes;
    const std::size_t count = std::min(kKWeightingLanes, channels_.size() - first);
    std::array<const float*, kKWeightingLanes> lanes{};
    for (std::size_t i = 0; i < count; ++i) lanes[i] = audio.channel(channels_[first + i]);
    kWeightedSums(coefficients_, lanes.data(), count, audio.frameCount(), states_[group],
                  tickSums_.data() + first);
  }
  framesInStep_ += audio.frameCount();
  if (framesInStep_ < tickEnd(tick_)) return;

  double energy = 0;
  for (std::size_t i = 0; i < channels_.size(); ++i) energy += weights_[i] * tickSums_[i];
  appendTick(energy, tickEnd(tick_) - (tick_ == 0 ? 0 : tickEnd(tick_ - 1)));
  std::fill(tickSums_.begin(), tickSums_.end(), 0.0);
  if (++tick_ == kTicks) {
    tick_ = 0;
    framesInStep_ = 0;
  }
}

/// Measures as many whole steps as go side by side; how many frames they are.
std::size_t KWeightedEnergyMeter::processStretches(PlanarView audio) {
  if (channels_.empty() || channels_.size() > kKWeightingLanes / 2) return 0;
  const std::size_t stretchCount = kKWeightingLanes / channels_.size();
  const std::size_t stretchSteps = audio.frameCount() / stepFrames_ / stretchCount;
  // Below this, warming up costs more than going side by side gains.
  if (stretchSteps * stepFrames_ < 2 * warmUpFrames_) return 0;

  std::vector<double> tickEnergies(stretchCount * stretchSteps * kTicks, 0.0);
  filterStretches(audio, stretchCount, stretchSteps, tickEnergies);
  for (std::size_t i = 0; i < tickEnergies.size(); ++i) {
    const std::size_t tick = i % kTicks;
    appendTick(tickEnergies[i], tickEnd(tick) - (tick == 0 ? 0 : tickEnd(tick - 1)));
  }
  return stretchCount * stretchSteps * stepFrames_;
}

void KWeightedEnergyMeter::filterStretches(PlanarView audio, std::size_t stretchCount,
                                           std::size_t stretchSteps,
                                           std::span<double> tickEnergies) {
  const std::size_t channelCount = channels_.size();
  const std::size_t laneCount = stretchCount * channelCount;
  const std::size_t stretchFrames = stretchSteps * stepFrames_;
  // Lane = stretch × channels + channel. The first stretch has the true state and sits the warm-up
  // out.
  KWeightingState state;
  std::array<const float*, kKWeightingLanes> starts{};
  std::array<const float*, kKWeightingLanes> lanes{};
  std::array<double, kKWeightingLanes> sums{};
  for (std::size_t lane = 0; lane < laneCount; ++lane) {
    starts[lane] =
        audio.channel(channels_[lane % channelCount]) + lane / channelCount * stretchFrames;
    if (lane >= channelCount) lanes[lane] = starts[lane] - warmUpFrames_;
  }
  kWeightedSums(coefficients_, lanes.data(), laneCount, warmUpFrames_, state, sums.data());
  for (std::size_t lane = 0; lane < channelCount; ++lane)
    for (std::size_t i = 0; i < 4; ++i) state.values[i][lane] = states_[0].values[i][lane];

  for (std::size_t step = 0; step < stretchSteps; ++step)
    for (std::size_t tick = 0; tick < kTicks; ++tick) {
      const std::size_t begin = step * stepFrames_ + (tick == 0 ? 0 : tickEnd(tick - 1));
      const std::size_t end = step * stepFrames_ + tickEnd(tick);
      for (std::size_t lane = 0; lane < laneCount; ++lane) lanes[lane] = starts[lane] + begin;
      sums.fill(0.0);
      kWeightedSums(coefficients_, lanes.data(), laneCount, end - begin, state, sums.data());
      for (std::size_t lane = 0; lane < laneCount; ++lane)
        tickEnergies[(lane / channelCount * stretchSteps + step) * kTicks + tick] +=
            weights_[lane % channelCount] * sums[lane];
    }

  for (std::size_t channel = 0; channel < channelCount; ++channel)
    for (std::size_t i = 0; i < 4; ++i)
      states_[0].values[i][channel] = state.values[i][laneCount - channelCount + channel];
}

void KWeightedEnergyMeter::finish() {
  double energy = 0;
  for (std::size_t i = 0; i < channels_.size(); ++i) energy += weights_[i] * tickSums_[i];
  if (energy < kSilentPower * static_cast<double>(stepFrames_)) energy = 0;
  timeline_.finish(energy, framesInStep_);
}

}  // namespace orvane::core
