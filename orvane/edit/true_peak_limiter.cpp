#include "orvane/edit/true_peak_limiter.h"

#include <algorithm>
#include <array>
#include <utility>

#include "orvane/core/peak/true_peak_meter.h"
#include "orvane/edit/channel_arrays.h"
#include "orvane/edit/level.h"
#include "orvane/edit/limiter_gain.h"
#include "orvane/edit/limiter_peaks.h"
#include "orvane/platform/parallel.h"
#include "orvane/platform/sample_arithmetic.h"
#include "orvane/platform/stage_progress.h"

namespace orvane::EditOperations {
namespace {

/// Samples that are worked on while they are close to the processor.
constexpr std::size_t kSliceSamples = std::size_t{1} << 17;
constexpr std::size_t kLeastSliceFrames = 4096;

/// One programme on its way through the limiter, slice by slice: while the peaks of one slice are
/// looked for, the one before it is lowered, as far as its gains are known.
class Limiting {
 public:
  Limiting(MutablePlanarView audio, float ceiling, double sampleRate, const Execution& execution)
      : audio_(audio),
        ceiling_(ceiling),
        execution_(execution),
        sliceFrames_(std::max(kSliceSamples / audio.channelCount(), kLeastSliceFrames)),
        progress_(execution.observer, "Limiting", audio.frameCount()),
        finder_(audio.channelCount(), ceiling),
        gain_(sampleRate, ceiling),
        meter_(core::PolyphaseUpsampler4x::Factor::four, audio.channelCount(), ceiling) {}

  bool run() {
    const std::size_t slices = (audio_.frameCount() + sliceFrames_ - 1) / sliceFrames_;
    for (std::size_t round = 0; round <= slices; ++round)
      parallelFor(execution_.threadCount, 2, [&](std::size_t task) {
        if (task == 0 && round < slices) find(round);
        if (task == 1 && round > 0) lower(gain_.push(peaks_[(round - 1) % 2]));
      });
    lower(gain_.finish(finder_.behindTheEnd()));
    meter_.flush();
    const float peak = *std::max_element(meter_.peaks().begin(), meter_.peaks().end());
    if (peak > ceiling_) scale(ceiling_ / peak);
    return peak > ceiling_ || gain_.hasLimited() || finder_.hasSilencedSamples();
  }

 private:
  MutablePlanarView slice(std::size_t index) const {
    const std::size_t first = index * sliceFrames_;
    return audio_.slice(first, std::min(sliceFrames_, audio_.frameCount() - first));
  }

  void find(std::size_t index) {
    const auto part = slice(index);
    auto& peaks = peaks_[index % 2];
    peaks.resize(part.frameCount());
    finder_.find(part, peaks);
    progress_.advance(part.frameCount());
  }

  void lower(std::span<const float> gains) {
    const auto part = audio_.slice(loweredFrames_, gains.size());
    for (std::size_t c = 0; c < part.channelCount(); ++c)
      SampleArithmetic::multiply(part.samples(c), gains.data());
    meter_.process(part);
    loweredFrames_ += gains.size();
  }

  void scale(float factor) const {
    const std::size_t slices = (audio_.frameCount() + sliceFrames_ - 1) / sliceFrames_;
    parallelFor(execution_.threadCount, slices, [&](std::size_t index) {
      const auto part = slice(index);
      for (std::size_t c = 0; c < part.channelCount(); ++c)
        SampleArithmetic::scale(part.samples(c), factor);
    });
  }

  MutablePlanarView audio_;
  float ceiling_;
  const Execution& execution_;
  std::size_t sliceFrames_;
  StageProgress progress_;
  LimiterPeaks finder_;
  LimiterGain gain_;
  core::TruePeakMeter meter_;  ///< of what has been lowered
  std::array<std::vector<float>, 2> peaks_{};
  std::size_t loweredFrames_ = 0;
};

}  // namespace

bool applyTruePeakLimiter(MutablePlanarView audio, float ceiling, double sampleRate,
                          const Execution& execution) {
  if (audio.channelCount() == 0 || audio.frameCount() == 0) return false;
  return Limiting(audio, ceiling, sampleRate, execution).run();
}

EditResult limitTruePeak(ChannelArrays channelData, double sampleRate, double ceilingDBTP,
                         const Execution& execution) {
  return edited(std::move(channelData), sampleRate, [&](MutablePlanarView audio) {
    applyTruePeakLimiter(audio, linearGain(ceilingDBTP), sampleRate, execution);
  });
}

}  // namespace orvane::EditOperations
