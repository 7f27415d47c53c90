#include "orvane/edit/loudness_normalizer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/edit/channel_arrays.h"
#include "orvane/edit/level.h"
#include "orvane/edit/true_peak_limiter.h"
#include "orvane/platform/stage_progress.h"

namespace orvane::EditOperations {
namespace {

constexpr int kMostPasses = 3;
constexpr double kCloseEnoughLU = 0.1;
constexpr double kWorseLU = 0.05;

std::int64_t lengthOf(PlanarView audio) {
  return static_cast<std::int64_t>(audio.frameCount());
}

/// A programme that is all there.
class HeldProgramme final : public NormalizedProgramme {
 public:
  HeldProgramme(MutablePlanarView audio, double sampleRate, double ceilingDB,
                const std::optional<std::vector<float>>& weights, const Execution& execution)
      : audio_(audio),
        sampleRate_(sampleRate),
        ceiling_(linearGain(ceilingDB)),
        weights_(weights),
        execution_(execution) {}

  double integratedLUFS() override {
    core::LoudnessProcessor meter(sampleRate_, static_cast<std::uint32_t>(audio_.channelCount()),
                                  std::nullopt, weights_);
    StageProgress progress(execution_.observer, "Measuring", audio_.frameCount());
    for (std::size_t first = 0; first < audio_.frameCount(); first += kMeteredFrames) {
      const std::size_t count = std::min(kMeteredFrames, audio_.frameCount() - first);
      meter.process(audio_.slice(first, count));
      progress.advance(count);
    }
    meter.flushPartialBlock();
    return static_cast<double>(meter.integratedLUFS());
  }

  void changeLevel(double gainDB) override {
    changeLevelInPlace(audio_, gainDB, 0, lengthOf(audio_));
  }
  void limit() override { applyTruePeakLimiter(audio_, ceiling_, sampleRate_, execution_); }

  void remember() override {
    best_.resize(audio_.channelCount());
    for (std::size_t c = 0; c < best_.size(); ++c) {
      const auto samples = audio_.samples(c);
      best_[c].assign(samples.begin(), samples.end());
    }
  }
  void restore() override {
    for (std::size_t c = 0; c < best_.size(); ++c)
      std::copy(best_[c].begin(), best_[c].end(), audio_.channel(c));
  }

 private:
  MutablePlanarView audio_;
  double sampleRate_;
  float ceiling_;
  const std::optional<std::vector<float>>& weights_;
  const Execution& execution_;
  ChannelArrays best_{};
};

}  // namespace

NormalizedProgramme::~NormalizedProgramme() = default;

NormalizationOutcome normalize(NormalizedProgramme& programme, double targetLUFS) {
  NormalizationOutcome outcome{.loudnessBefore = programme.integratedLUFS()};
  if (!std::isfinite(outcome.loudnessBefore)) {
    programme.limit();
    outcome.loudnessAfter = programme.integratedLUFS();
    outcome.limiterPasses = 1;
    return outcome;
  }
  double measured = outcome.loudnessBefore;
  double leastError = std::numeric_limits<double>::infinity();
  for (;;) {
    if (measured != targetLUFS) programme.changeLevel(targetLUFS - measured);
    programme.limit();
    ++outcome.limiterPasses;
    measured = programme.integratedLUFS();
    const double error = std::abs(targetLUFS - measured);
    const bool isBest = outcome.limiterPasses == 1 || error < leastError;
    if (isBest) {
      leastError = error;
      outcome.loudnessAfter = measured;
    }
    if (outcome.limiterPasses == kMostPasses || error <= kCloseEnoughLU ||
        error > leastError + kWorseLU || !std::isfinite(error)) {
      if (!isBest) programme.restore();
      return outcome;
    }
    if (isBest) programme.remember();
  }
}

EditResult normalizeLUFS(ChannelArrays channelData, double sampleRate, double targetLUFS,
                         double ceilingDB, const std::optional<std::vector<float>>& weights,
                         const Execution& execution) {
  return edited(std::move(channelData), sampleRate, [&](MutablePlanarView audio) {
    normalizeLUFSInPlace(audio, sampleRate, targetLUFS, ceilingDB, weights, execution);
  });
}

NormalizationOutcome normalizeLUFSInPlace(MutablePlanarView audio, double sampleRate,
                                          double targetLUFS, double ceilingDB,
                                          const std::optional<std::vector<float>>& weights,
                                          const Execution& execution) {
  if (audio.channelCount() == 0) return {};
  HeldProgramme programme(audio, sampleRate, ceilingDB, weights, execution);
  return normalize(programme, targetLUFS);
}

EditResult normalizeByGain(ChannelArrays channelData, double sampleRate, double gainDB,
                           double ceilingDB, const Execution& execution) {
  const RangeGain everywhere{{0, frameCountOf(channelData)}, gainDB};
  return levelRangesThenLimit(std::move(channelData), sampleRate, {&everywhere, 1}, ceilingDB,
                              execution);
}

EditResult levelRangesThenLimit(ChannelArrays channelData, double sampleRate,
                                std::span<const RangeGain> gains, double ceilingDBTP,
                                const Execution& execution) {
  return edited(std::move(channelData), sampleRate, [&](MutablePlanarView audio) {
    for (const auto& [range, gainDB] : gains)
      changeLevelInPlace(audio, gainDB, range.start, range.end);
    applyTruePeakLimiter(audio, linearGain(ceilingDBTP), sampleRate, execution);
  });
}

}  // namespace orvane::EditOperations
