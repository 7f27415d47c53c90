#include "orvane/core/peak/true_peak_meter.h"

#include <algorithm>

#include "orvane/core/loudness/loudness_grid.h"
#include "orvane/platform/denormals.h"

namespace orvane::core {
namespace {

using PolyphaseUpsampler4x::Factor;
using PolyphaseUpsampler4x::kPeakHistory;

/// Interpolate until the rate reaches 192 kHz, as BS.1770-5, Annex 2 asks for dBTP. Outside the
/// rates that are metered at all, the true peak is the sample peak.
Factor factorFor(double sampleRate) {
  if (!(sampleRate >= LoudnessGrid::kLowestRate) || sampleRate >= 192000) return Factor::none;
  return sampleRate < 96000 ? Factor::four : Factor::two;
}

}  // namespace

TruePeakMeter::TruePeakMeter(double sampleRate, std::size_t channelCount)
    : TruePeakMeter(factorFor(sampleRate), channelCount, 0) {}

TruePeakMeter::TruePeakMeter(Factor factor, std::size_t channelCount, float floor)
    : factor_(factor), histories_(channelCount, History{}), peaks_(channelCount, floor) {}

void TruePeakMeter::process(PlanarView audio) {
  const ScopedDenormalFlush flush;
  for (std::size_t channel = 0; channel < peaks_.size(); ++channel)
    processChannel(channel, audio.channel(channel), audio.frameCount());
}

void TruePeakMeter::processChannel(std::size_t channel, const float* samples,
                                   std::size_t frameCount) {
  History& history = histories_[channel];
  float& peak = peaks_[channel];
  // The first windows reach back into the piece before.
  std::array<float, 2 * kPeakHistory> seam;
  const std::size_t seamFrames = std::min(frameCount, kPeakHistory);
  std::copy(history.begin(), history.end(), seam.begin());
  std::copy_n(samples, seamFrames, seam.begin() + kPeakHistory);
  peak = PolyphaseUpsampler4x::largestPeak(factor_, seam.data() + kPeakHistory, seamFrames, peak);
  peak = PolyphaseUpsampler4x::largestPeak(factor_, samples + seamFrames, frameCount - seamFrames,
                                           peak);
  if (frameCount >= kPeakHistory)
    std::copy_n(samples + (frameCount - kPeakHistory), kPeakHistory, history.begin());
  else
    std::copy_n(seam.begin() + static_cast<std::ptrdiff_t>(seamFrames), kPeakHistory,
                history.begin());
}

void TruePeakMeter::resetPeaks() noexcept {
  std::fill(peaks_.begin(), peaks_.end(), 0.0F);
}

void TruePeakMeter::flush() {
  constexpr History kSilence{};
  const std::vector<const float*> channels(peaks_.size(), kSilence.data());
  process({channels, kPeakHistory});
}

}  // namespace orvane::core
