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
constexpr std::size_t kSliceSamples = std::size_t{1} << 18;
constexpr std::size_t kLeastSliceFrames = 4096;

/// What a programme goes through, slice by slice, whether all of it is there or not.
class Stages {
 public:
  Stages(double sampleRate, std::size_t channelCount, float ceiling)
      : ceiling_(ceiling),
        finder_(channelCount, ceiling),
        gain_(sampleRate, ceiling),
        meter_(core::PolyphaseUpsampler4x::Factor::four, channelCount, ceiling) {}

  void findPeaks(MutablePlanarView slice, std::vector<float>& peaks) {
    peaks.resize(slice.frameCount());
    finder_.find(slice, peaks);
  }

  std::span<const float> gains(std::span<const float> peaks) { return gain_.push(peaks); }
  std::span<const float> lastGains() { return gain_.finish(finder_.behindTheEnd()); }

  void lower(MutablePlanarView part, std::span<const float> gains) {
    for (std::size_t c = 0; c < part.channelCount(); ++c)
      SampleArithmetic::multiply(part.samples(c), gains.data());
    meter_.process(part);
  }

  void finish() {
    meter_.flush();
    for (const float peak : meter_.peaks())
      if (peak > ceiling_) lastScale_ = std::min(lastScale_, ceiling_ / peak);
  }

  float lastScale() const { return lastScale_; }
  bool hasChanged() const {
    return lastScale_ != 1 || gain_.hasLimited() || finder_.hasSilencedSamples();
  }

 private:
  float ceiling_;
  LimiterPeaks finder_;
  LimiterGain gain_;
  core::TruePeakMeter meter_;  ///< of what has been lowered
  float lastScale_ = 1;
};

/// A programme that is all there. While the peaks of one slice are looked for, the one before it is
/// lowered, as far as its gains are known.
class Limiting {
 public:
  Limiting(MutablePlanarView audio, float ceiling, double sampleRate, const Execution& execution)
      : audio_(audio),
        execution_(execution),
        sliceFrames_(std::max(kSliceSamples / audio.channelCount(), kLeastSliceFrames)),
        sliceCount_((audio.frameCount() + sliceFrames_ - 1) / sliceFrames_),
        progress_(execution.observer, "Limiting", audio.frameCount()),
        stages_(sampleRate, audio.channelCount(), ceiling) {}

  bool run() {
    for (std::size_t round = 0; round <= sliceCount_; ++round)
      parallelFor(execution_.threadCount, 2, [&](std::size_t task) {
        if (task == 0 && round < sliceCount_) find(round);
        if (task == 1 && round > 0) lower(stages_.gains(peaks_[(round - 1) % 2]));
      });
    lower(stages_.lastGains());
    stages_.finish();
    if (stages_.lastScale() != 1) scale(stages_.lastScale());
    return stages_.hasChanged();
  }

 private:
  MutablePlanarView slice(std::size_t index) const {
    const std::size_t first = index * sliceFrames_;
    return audio_.slice(first, std::min(sliceFrames_, audio_.frameCount() - first));
  }

  void find(std::size_t index) {
    stages_.findPeaks(slice(index), peaks_[index % 2]);
    progress_.advance(slice(index).frameCount());
  }

  void lower(std::span<const float> gains) {
    stages_.lower(audio_.slice(loweredFrames_, gains.size()), gains);
    loweredFrames_ += gains.size();
  }

  void scale(float factor) const {
    parallelFor(execution_.threadCount, sliceCount_, [&](std::size_t index) {
      const auto part = slice(index);
      for (std::size_t c = 0; c < part.channelCount(); ++c)
        SampleArithmetic::scale(part.samples(c), factor);
    });
  }

  MutablePlanarView audio_;
  const Execution& execution_;
  std::size_t sliceFrames_;
  std::size_t sliceCount_;
  StageProgress progress_;
  Stages stages_;
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

struct TruePeakLimiter::State {
  Stages stages;
  ChannelArrays held;  ///< frames that were given out last, then those that wait for their gains
  std::size_t givenFrames = 0;
  std::vector<float*> pointers{};
  std::vector<float> peaks{};

  /// Lets go of what was given out and makes room for `more` frames behind the rest.
  MutablePlanarView makeRoom(std::size_t more) {
    pointers.clear();
    for (auto& channel : held) {
      channel.erase(channel.begin(), channel.begin() + static_cast<std::ptrdiff_t>(givenFrames));
      channel.resize(channel.size() + more);
      pointers.push_back(channel.data());
    }
    const auto frames = static_cast<std::size_t>(frameCountOf(held));
    return MutablePlanarView(pointers, frames).from(frames - more);
  }

  MutablePlanarView give(std::span<const float> gains) {
    givenFrames = gains.size();
    const MutablePlanarView lowered(pointers, givenFrames);
    stages.lower(lowered, gains);
    return lowered;
  }
};

TruePeakLimiter::TruePeakLimiter(double sampleRate, std::size_t channelCount, float ceiling)
    : state_(std::make_unique<State>(
          State{Stages(sampleRate, channelCount, ceiling), ChannelArrays(channelCount)})) {}
TruePeakLimiter::~TruePeakLimiter() = default;
TruePeakLimiter::TruePeakLimiter(TruePeakLimiter&&) noexcept = default;
TruePeakLimiter& TruePeakLimiter::operator=(TruePeakLimiter&&) noexcept = default;

MutablePlanarView TruePeakLimiter::process(PlanarView slice) {
  const auto room = state_->makeRoom(slice.frameCount());
  for (std::size_t c = 0; c < slice.channelCount(); ++c)
    std::copy_n(slice.channel(c), slice.frameCount(), room.channel(c));
  state_->stages.findPeaks(room, state_->peaks);
  return state_->give(state_->stages.gains(state_->peaks));
}

MutablePlanarView TruePeakLimiter::finish() {
  state_->makeRoom(0);
  const auto last = state_->give(state_->stages.lastGains());
  state_->stages.finish();
  return last;
}

float TruePeakLimiter::lastScale() const noexcept {
  return state_->stages.lastScale();
}

bool TruePeakLimiter::hasChanged() const noexcept {
  return state_->stages.hasChanged();
}

}  // namespace orvane::EditOperations
