#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane::core {

/// Ten-millisecond energies come in, loudness windows come out.
///
/// Vocabulary: a *step* is 100 ms, rounded to whole frames; a *tick* is a tenth of a step; *energy*
/// is the channel-weighted sum of squares of K-weighted samples; *power* is energy per frame.
class ORVANE_TESTING_API LoudnessTimeline {
 public:
  static constexpr std::size_t kTicksPerStep = 10;
  /// Gating blocks and momentary windows: 400 ms (BS.1770-5, Annex 1; EBU Tech 3341, 2.2).
  static constexpr std::size_t kStepsPerBlock = 4;
  /// Short-term windows: 3 s (EBU Tech 3341, 2.2).
  static constexpr std::size_t kStepsPerShortTerm = 30;

  explicit LoudnessTimeline(std::size_t stepFrames) : stepFrames_(stepFrames) {}

  /// The next whole tick.
  void appendTick(double energy);

  /// The audio ends inside a step, `framesInStep` frames after its start; `partialTickEnergy` is
  /// what came since the last whole tick. What is missing of the step counts as silence.
  void finish(double partialTickEnergy, std::size_t framesInStep);

  /// Steps begun: whole ones and the partial one at the end.
  std::size_t entryCount() const noexcept { return stepEnergies_.size(); }
  std::size_t wholeStepCount() const noexcept { return wholeSteps_; }

  /// Power of each gating block, one per step from the fourth on. A programme shorter than one
  /// block is one block of its own length once it is finished.
  const std::vector<double>& blockPowers() const noexcept { return blockPowers_; }

  /// The highest power of a 400 ms window that ends inside step `index`, at one of its ticks. Time
  /// before the start counts as silence.
  double momentaryPower(std::size_t index) const noexcept;

  /// Power of the 3 s that end with step `index`.
  double shortTermPower(std::size_t index) const noexcept;

  /// Powers of all 3 s windows that lie wholly inside the audio, one per step.
  std::vector<double> wholeShortTermPowers() const;

 private:
  void finishStep();

  std::size_t stepFrames_;
  std::size_t wholeSteps_ = 0;
  std::size_t ticks_ = 0;  ///< of the current step
  std::array<double, kTicksPerStep> current_{};
  /// tails_[s % 4][j]: energy of step s after its first j ticks.
  std::array<std::array<double, kTicksPerStep + 1>, kStepsPerBlock> tails_{};
  std::vector<double> stepEnergies_{};
  std::vector<double> momentaryEnergies_{};
  std::vector<double> blockPowers_{};
};

}  // namespace orvane::core
