#include "orvane/edit/limiter_gain.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#include "orvane/platform/sample_arithmetic.h"
#include "orvane/platform/signal_kernels.h"

namespace orvane::EditOperations {
namespace {

// As the header promises: short enough to stay unheard ahead of an attack, long enough behind it not
// to shape the waves of a bass note.
constexpr double kLookAheadSeconds = 0.005;
constexpr double kReleaseSeconds = 0.1;

/// Frames that are worked on while they are close; more where the look-ahead is longer.
constexpr std::size_t kBlock = 4096;

std::size_t lookAheadFrames(double sampleRate) {
  constexpr double kMost = 0x1p40;  // longer than any programme
  return static_cast<std::size_t>(std::clamp(sampleRate * kLookAheadSeconds, 0.0, kMost));
}

/// Towards 0: to the nearest one, rounding would lift every other peak above the ceiling by a hair,
/// and all of the programme would be scaled for it. But what comes as close to 1 as it ever will
/// is 1.
float roundedDown(double gain) {
  const auto nearest = static_cast<float>(gain);
  const std::uint32_t isAbove = nearest < 1 && static_cast<double>(nearest) > gain ? 1 : 0;
  return std::bit_cast<float>(std::bit_cast<std::uint32_t>(nearest) - isAbove);
}

}  // namespace

LimiterGain::LimiterGain(double sampleRate, float ceiling)
    : ceiling_(static_cast<double>(ceiling)),
      retention_(std::exp(-1 / (std::max(sampleRate, 0.0) * kReleaseSeconds))),
      lookAhead_(lookAheadFrames(sampleRate)) {}

std::span<const float> LimiterGain::push(std::span<const float> peaks) {
  pending_.insert(pending_.end(), peaks.begin(), peaks.end());
  const std::size_t lag = lookAhead_ + 1;  // the last frame's peak may still rise at the end
  return take(pending_.size() > lag ? pending_.size() - lag : 0);
}

std::span<const float> LimiterGain::finish(float peakBehindTheEnd) {
  const std::size_t count = pending_.size();
  if (count == 0) return {};
  pending_.back() = std::max(pending_.back(), peakBehindTheEnd);
  lookAhead_ = std::min(lookAhead_, count - 1);
  pending_.insert(pending_.end(), lookAhead_, static_cast<float>(ceiling_));
  return take(count);
}

std::span<const float> LimiterGain::take(std::size_t count) {
  gains_.resize(count);
  const std::size_t blockFrames = std::max(kBlock, lookAhead_);
  for (std::size_t at = 0; at < count; at += blockFrames) {
    const std::size_t frames = std::min(blockFrames, count - at);
    takeBlock(std::span(pending_).subspan(at, frames + lookAhead_),
              std::span(gains_).subspan(at, frames));
  }
  pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(count));
  return gains_;
}

/// `peaks`: those of the frames and of the look-ahead behind the last one.
void LimiterGain::takeBlock(std::span<const float> peaks, std::span<float> gains) {
  const float largest = SignalKernels::maximumMagnitude(peaks.data(), peaks.size());
  if (static_cast<double>(largest) > ceiling_) {
    hasLimited_ = true;
    slideMaximum(peaks, gains.size());
    follow(gains);
  } else {
    release(gains);
  }
}

/// The largest peak instead of the least target: the same frames, and exact. Maxima over runs of
/// 1, 2, 4 … frames, each of two of the ones before, and last of two that overlap.
void LimiterGain::slideMaximum(std::span<const float> peaks, std::size_t count) {
  maxima_.assign(peaks.begin(), peaks.end());
  const std::size_t window = lookAhead_ + 1;
  std::size_t known = peaks.size();
  std::size_t run = 1;
  for (; 2 * run <= window; run *= 2) {
    known -= run;
    SampleArithmetic::raise(std::span(maxima_).first(known), maxima_.data() + run);
  }
  SampleArithmetic::raise(std::span(maxima_).first(count), maxima_.data() + (window - run));
}

void LimiterGain::follow(std::span<float> gains) {
  double gain = gain_;
  for (std::size_t i = 0; i < gains.size(); ++i) {
    const auto peak = static_cast<double>(maxima_[i]);
    const double target = peak > ceiling_ ? ceiling_ / peak : 1.0;
    const double smoothed = retention_ * gain + (1 - retention_) * target;
    gain = target < gain ? target : smoothed;
    gains[i] = roundedDown(gain);
  }
  gain_ = gain;
}

/// Towards 1, where no peak is near.
void LimiterGain::release(std::span<float> gains) {
  for (std::size_t i = 0; i < gains.size(); ++i) {
    const double next = retention_ * gain_ + (1 - retention_);
    if (next == gain_) {  // it has come as close as it ever will
      std::fill(gains.begin() + static_cast<std::ptrdiff_t>(i), gains.end(), roundedDown(gain_));
      return;
    }
    gain_ = next;
    gains[i] = roundedDown(gain_);
  }
}

}  // namespace orvane::EditOperations
