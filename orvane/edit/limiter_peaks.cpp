#include "orvane/edit/limiter_peaks.h"

#include <algorithm>

#include "orvane/platform/sample_arithmetic.h"
#include "orvane/platform/signal_kernels.h"

namespace orvane::EditOperations {
namespace {

using core::PolyphaseUpsampler4x::kHistory;

/// Frames that are interpolated or passed over together.
constexpr std::size_t kBlock = 64;

/// Raises the peaks of frames that follow `kHistory` readable samples.
void raisePeaks(const float* samples, std::span<float> peaks, float ceiling) {
  std::array<float, kBlock> room;
  float before = SignalKernels::maximumMagnitude(samples - kHistory, kHistory);
  for (std::size_t at = 0; at < peaks.size(); at += kBlock) {
    const auto block = peaks.subspan(at, std::min(kBlock, peaks.size() - at));
    const float here = SignalKernels::maximumMagnitude(samples + at, block.size());
    const float largest = std::max(before, here);
    before = here;
    if (largest * core::PolyphaseUpsampler4x::kLargestGain <= ceiling) continue;
    core::PolyphaseUpsampler4x::detectPerSamplePeaks(samples + at - kHistory, block.size(),
                                                     room.data());
    SampleArithmetic::raise(block, room.data());
  }
}

}  // namespace

LimiterPeaks::LimiterPeaks(std::size_t channelCount, float ceiling)
    : ceiling_(ceiling), histories_(channelCount, History{}) {}

void LimiterPeaks::find(MutablePlanarView slice, std::span<float> peaks) {
  std::fill(peaks.begin(), peaks.end(), ceiling_);
  for (std::size_t c = 0; c < histories_.size(); ++c) {
    const auto samples = slice.samples(c);
    if (SampleArithmetic::silenceNonFinite(samples)) hasSilencedSamples_ = true;
    // The first windows reach back into the slice before.
    History& history = histories_[c];
    std::array<float, 2 * kHistory> seam;
    const std::size_t seamFrames = std::min(samples.size(), kHistory);
    std::copy(history.begin(), history.end(), seam.begin());
    std::copy_n(samples.begin(), seamFrames, seam.begin() + kHistory);
    raisePeaks(seam.data() + kHistory, peaks.first(seamFrames), ceiling_);
    if (samples.size() > kHistory)
      raisePeaks(samples.data() + kHistory, peaks.subspan(kHistory), ceiling_);
    const float* const end = samples.size() >= kHistory ? samples.data() + samples.size()
                                                        : seam.data() + kHistory + seamFrames;
    std::copy(end - kHistory, end, history.begin());
  }
}

float LimiterPeaks::behindTheEnd() const {
  std::array<float, kHistory> peaks;
  peaks.fill(ceiling_);
  for (const History& history : histories_) {
    std::array<float, 2 * kHistory> tail{};
    std::copy(history.begin(), history.end(), tail.begin());
    raisePeaks(tail.data() + kHistory, peaks, ceiling_);
  }
  return *std::max_element(peaks.begin(), peaks.end());
}

}  // namespace orvane::EditOperations
