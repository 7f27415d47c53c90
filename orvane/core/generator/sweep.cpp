#include "orvane/core/generator/sweep.h"

namespace orvane::core {
namespace {

/// sinh(x) ÷ x.
double hyperbolicSincOf(double x) {
  double sum = 1, term = 1;
  for (int k = 2; term > 1e-17 * sum; k += 2) {
    term *= x * x / (k * (k + 1));
    sum += term;
  }
  return sum;
}

}  // namespace

Sweep::Sweep(const GeneratorSpec& spec)
    : isLogarithmic_(spec.waveform == GeneratorWaveform::logarithmicSweep),
      frames_(static_cast<double>(spec.frameCount())),
      startStep_(spec.startFrequency / spec.sampleRate) {
  if (isLogarithmic_) {
    change_ = ReproducibleMath::log2(spec.endFrequency / spec.startFrequency);
    // Over one frame the frequency averages this much more than it has in the middle of it.
    startStep_ *= hyperbolicSincOf(change_ * std::numbers::ln2 / (2 * frames_));
  } else {
    change_ = (spec.endFrequency - spec.startFrequency) / spec.sampleRate;
  }
}

ReproducibleMath::Phase Sweep::next() noexcept {
  const ReproducibleMath::Phase phase = phase_;
  const double progress = (frame_ + 0.5) / frames_;
  frame_ += 1;
  phase_ += ReproducibleMath::phaseOfTurns(
      isLogarithmic_ ? startStep_ * ReproducibleMath::exp2(change_ * progress)
                     : startStep_ + change_ * progress);
  return phase;
}

}  // namespace orvane::core
