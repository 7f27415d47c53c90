#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "orvane/core/loudness/k_weighting.h"
#include "orvane/core/loudness/k_weighting_kernel.h"
#include "orvane/core/loudness/loudness_timeline.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane::core {

/// Turns audio into weighted K-energies per tick, feeding a `LoudnessTimeline`.
///
/// Long pieces are cut into stretches that are filtered side by side, one per vector lane. Each
/// stretch but the first starts from silence a quarter of a second early; by then what the filter
/// would remember from before has decayed by more than 400 dB.
class ORVANE_TESTING_API KWeightedEnergyMeter {
 public:
  KWeightedEnergyMeter(double sampleRate, std::vector<float> weights);

  void process(PlanarView audio);
  void finish();

  const LoudnessTimeline& timeline() const noexcept { return timeline_; }

 private:
  std::size_t tickEnd(std::size_t tick) const noexcept;
  void processInOrder(PlanarView audio);
  std::size_t processStretches(PlanarView audio);
  void filterStretches(PlanarView audio, std::size_t stretchCount, std::size_t stretchSteps,
                       std::span<double> tickEnergies);
  void appendTick(double energy, std::size_t frames);

  KWeighting coefficients_;
  std::size_t stepFrames_;
  std::size_t warmUpFrames_;
  std::vector<std::size_t> channels_{};    ///< those with a weight
  std::vector<double> weights_{};          ///< of `channels_`
  std::vector<KWeightingState> states_{};  ///< of `channels_`, sixteen in each
  std::vector<double> tickSums_{};         ///< of `channels_`, since the tick began
  std::size_t tick_ = 0;                   ///< of the current step
  std::size_t framesInStep_ = 0;
  LoudnessTimeline timeline_;
};

}  // namespace orvane::core
