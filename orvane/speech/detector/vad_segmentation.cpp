#include "orvane/speech/detector/vad_segmentation.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <utility>

#include "orvane/platform/precondition.h"

namespace orvane::VadSegmentation {
namespace {

using Samples = std::int64_t;

constexpr Samples kHop = static_cast<Samples>(kFrameSamples);
/// Bounds conversions; far beyond any audio.
constexpr double kLongestDuration = 1e9;

Samples toSamples(double seconds) {
  precondition(std::isfinite(seconds), "durations are finite");
  return static_cast<Samples>(std::clamp(seconds, -kLongestDuration, kLongestDuration) *
                              kSampleRate);
}

struct Range {
  Samples start = 0;
  Samples end = 0;
};

/// Frames below the exit threshold inside speech.
struct Pause {
  Samples start = 0;
  Samples length = 0;
  float minimumProbability = 1;
};

/// Walks the frames; the state between two frames.
class Machine {
 public:
  Machine(Samples sampleCount, float entryThreshold, const VadSegmentationConfig& config)
      : config_(config),
        sampleCount_(sampleCount),
        minSpeech_(toSamples(config.minSpeechDuration)),
        minSilence_(toSamples(config.minSilenceDuration)),
        padding_(toSamples(config.speechPadding)),
        maxSpeech_(std::max<Samples>(0, toSamples(config.maxSpeechDuration) - kHop - 2 * padding_)),
        minSplitPause_(toSamples(config.minSilenceAtMaxSpeech)) {
    if (config.negativeThreshold) {
      exit_ = *config.negativeThreshold;
      entry_ = std::min(1.0F, exit_ + config.negativeThresholdOffset);
    } else {
      entry_ = entryThreshold;
      exit_ = std::max(entryThreshold - config.negativeThresholdOffset, 0.01F);
    }
  }

  void step(Samples frame, float probability) {
    if (probability >= entry_) {
      rememberPause(frame);
      if (!isTriggered_) {
        isTriggered_ = true;
        start_ = frame;
        return;
      }
    }
    if (isTriggered_ && frame - start_ > maxSpeech_) {
      split(frame);
      if (!isTriggered_) return;
    }
    if (probability < exit_ && isTriggered_) {
      if (!pause_) pause_ = Pause{.start = frame};
      pause_->minimumProbability = std::min(pause_->minimumProbability, probability);
      if (frame - pause_->start >= minSilence_) {
        close(pause_->start);
        isTriggered_ = false;
        forgetPauses();
      }
    }
  }

  std::vector<Range> finish() {
    if (isTriggered_) close(sampleCount_);
    pad();
    return std::move(ranges_);
  }

 private:
  void rememberPause(Samples frame) {
    if (!pause_) return;
    pause_->length = frame - pause_->start;
    if (pause_->length > minSplitPause_) candidates_.push_back(*pause_);
    pause_.reset();
  }

  void forgetPauses() {
    pause_.reset();
    candidates_.clear();
  }

  void close(Samples end) {
    if (end - start_ >= minSpeech_) ranges_.push_back({start_, end});
  }

  /// Ends speech that has become too long: at a pause, and goes on behind it, or here.
  void split(Samples frame) {
    const std::optional<Pause> pause = splitPause();
    close(pause ? pause->start : frame);
    isTriggered_ = pause && pause->start + pause->length < frame;
    if (isTriggered_) start_ = pause->start + pause->length;
    forgetPauses();
  }

  std::optional<Pause> splitPause() const {
    if (candidates_.empty()) return std::nullopt;
    const auto isShorter = [](const Pause& a, const Pause& b) { return a.length < b.length; };
    std::vector<Pause> quiet;
    std::copy_if(candidates_.begin(), candidates_.end(), std::back_inserter(quiet),
                 [this](const Pause& pause) {
                   return pause.minimumProbability <= config_.silenceThresholdForSplit;
                 });
    if (!quiet.empty()) return *std::max_element(quiet.begin(), quiet.end(), isShorter);
    if (!config_.useMaxPossibleSilenceAtMaxSpeech) return candidates_.back();
    return *std::max_element(candidates_.begin(), candidates_.end(), isShorter);
  }

  void pad() {
    for (std::size_t i = 0; i < ranges_.size(); ++i) {
      if (i == 0) ranges_[i].start -= padding_;
      if (i + 1 == ranges_.size()) {
        ranges_[i].end += padding_;
      } else {
        const Samples gap = ranges_[i + 1].start - ranges_[i].end;
        const Samples share = gap < 2 * padding_ ? gap / 2 : padding_;
        ranges_[i].end += share;
        ranges_[i + 1].start -= share;
      }
    }
    for (Range& range : ranges_) {
      range.start = std::clamp<Samples>(range.start, 0, sampleCount_);
      range.end = std::clamp<Samples>(range.end, 0, sampleCount_);
    }
    std::erase_if(ranges_, [](const Range& range) { return range.end <= range.start; });
  }

  const VadSegmentationConfig& config_;
  Samples sampleCount_;
  Samples minSpeech_;
  Samples minSilence_;
  Samples padding_;
  Samples maxSpeech_;
  Samples minSplitPause_;
  float entry_ = 0;
  float exit_ = 0;

  bool isTriggered_ = false;
  Samples start_ = 0;
  std::optional<Pause> pause_{};     ///< going on
  std::vector<Pause> candidates_{};  ///< over, inside the present speech
  std::vector<Range> ranges_{};
};

}  // namespace

std::vector<float> frameProbabilities(std::span<const float> stepProbabilities) {
  precondition(stepProbabilities.size() % kStepsPerFrame == 0, "frames have eight steps each");
  std::vector<float> frames(stepProbabilities.size() / kStepsPerFrame);
  for (std::size_t i = 0; i < frames.size(); ++i) {
    float silence = 1;
    for (std::size_t j = 0; j < kStepsPerFrame; ++j)
      silence *= 1 - stepProbabilities[i * kStepsPerFrame + j];
    frames[i] = 1 - silence;
  }
  return frames;
}

std::vector<VadSegment> segments(std::span<const float> frameProbabilities, std::size_t sampleCount,
                                 float entryThreshold, const VadSegmentationConfig& config) {
  Machine machine(static_cast<Samples>(sampleCount), entryThreshold, config);
  for (std::size_t i = 0; i < frameProbabilities.size(); ++i)
    machine.step(static_cast<Samples>(i) * kHop, frameProbabilities[i]);
  std::vector<VadSegment> result;
  for (const Range& range : machine.finish())
    result.push_back({static_cast<double>(range.start) / kSampleRate,
                      static_cast<double>(range.end) / kSampleRate});
  return result;
}

}  // namespace orvane::VadSegmentation
