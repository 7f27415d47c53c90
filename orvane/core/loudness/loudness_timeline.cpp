#include "orvane/core/loudness/loudness_timeline.h"

#include <algorithm>

namespace orvane::core {

void LoudnessTimeline::appendTick(double energy) {
  current_[ticks_++] = energy;
  if (ticks_ < kTicksPerStep) return;
  finishStep();
  ++wholeSteps_;
  if (wholeSteps_ >= kStepsPerBlock) {
    double sum = 0;
    for (std::size_t i = wholeSteps_ - kStepsPerBlock; i < wholeSteps_; ++i)
      sum += stepEnergies_[i];
    blockPowers_.push_back(sum / static_cast<double>(kStepsPerBlock * stepFrames_));
  }
}

void LoudnessTimeline::finishStep() {
  // A window that ends at tick j of this step is the end of the step four before, three whole steps
  // and this step's first j ticks. Sums are formed anew for each: a running sum would carry the
  // rounding errors of loud passages into silence.
  const std::size_t step = stepEnergies_.size();
  double whole = 0;
  for (std::size_t i = step >= 3 ? step - 3 : 0; i < step; ++i) whole += stepEnergies_[i];
  auto& tail = tails_[step % kStepsPerBlock];  // still that of the step four before, or zeros
  double head = 0;
  double highest = 0;
  for (std::size_t tick = 0; tick < ticks_; ++tick) {
    head += current_[tick];
    highest = std::max(highest, tail[tick + 1] + whole + head);
  }
  tail[kTicksPerStep] = 0;
  for (std::size_t tick = kTicksPerStep; tick-- > 0;)
    tail[tick] = tail[tick + 1] + (tick < ticks_ ? current_[tick] : 0.0);
  stepEnergies_.push_back(head);
  momentaryEnergies_.push_back(highest);
  ticks_ = 0;
}

void LoudnessTimeline::finish(double partialTickEnergy, std::size_t framesInStep) {
  if (framesInStep > 0) {
    if (ticks_ < kTicksPerStep) current_[ticks_++] = partialTickEnergy;
    finishStep();
  }
  const std::size_t frames = wholeSteps_ * stepFrames_ + framesInStep;
  if (wholeSteps_ < kStepsPerBlock && frames > 0) {
    double sum = 0;
    for (const double energy : stepEnergies_) sum += energy;
    blockPowers_.push_back(sum / static_cast<double>(frames));
  }
}

double LoudnessTimeline::momentaryPower(std::size_t index) const noexcept {
  return momentaryEnergies_[index] / static_cast<double>(kStepsPerBlock * stepFrames_);
}

double LoudnessTimeline::shortTermPower(std::size_t index) const noexcept {
  double sum = 0;
  const std::size_t end = index + 1;
  for (std::size_t i = end >= kStepsPerShortTerm ? end - kStepsPerShortTerm : 0; i < end; ++i)
    sum += stepEnergies_[i];
  return sum / static_cast<double>(kStepsPerShortTerm * stepFrames_);
}

std::vector<double> LoudnessTimeline::wholeShortTermPowers() const {
  std::vector<double> powers;
  for (std::size_t step = kStepsPerShortTerm; step <= wholeSteps_; ++step)
    powers.push_back(shortTermPower(step - 1));
  return powers;
}

}  // namespace orvane::core
