#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane {

/// A stretch of speech, in seconds from the start of the audio.
struct VadSegment {
  double startTime = 0;
  double endTime = 0;

  bool operator==(const VadSegment&) const = default;
};

/// How frame probabilities become segments. Durations are in seconds.
struct VadSegmentationConfig {
  double minSpeechDuration = 0.15;           ///< shorter segments are dropped (before padding)
  double minSilenceDuration = 0.75;          ///< a pause of this length ends a segment
  double maxSpeechDuration = 14.0;           ///< longer speech is split
  double speechPadding = 0.1;                ///< added on both sides of a segment
  float silenceThresholdForSplit = 0.3F;     ///< pauses that go this low are preferred for splits
  std::optional<float> negativeThreshold{};  ///< exit threshold; moves the entry threshold too
  float negativeThresholdOffset = 0.15F;     ///< exit lies this far below entry otherwise
  double minSilenceAtMaxSpeech = 0.098;      ///< shorter pauses are no candidates for splits
  bool useMaxPossibleSilenceAtMaxSpeech = true;  ///< split at the longest pause, else at the last

  bool operator==(const VadSegmentationConfig&) const = default;

  static constexpr VadSegmentationConfig defaults() noexcept { return {}; }
};

/// From probabilities to segments, at 16 kHz.
namespace VadSegmentation {

inline constexpr double kSampleRate = 16000;
/// Samples of one frame: 256 ms, eight steps of the network.
inline constexpr std::size_t kFrameSamples = 4096;
inline constexpr std::size_t kStepsPerFrame = 8;

/// The probability that at least one step of each frame is speech, 1 − Π (1 − p): eight steps per
/// frame, whose number must divide evenly.
ORVANE_API std::vector<float> frameProbabilities(std::span<const float> stepProbabilities);

/// Speech starts with a frame at or above the entry threshold and ends where frames below the exit
/// threshold follow for the minimum silence; frames between the two keep what is. Speech beyond the
/// maximum is split at a pause, or where it stands. Segments are padded, neighbours share a gap
/// that is too narrow for both paddings, and all end within `sampleCount` samples. Durations must
/// be finite.
ORVANE_API std::vector<VadSegment> segments(std::span<const float> frameProbabilities,
                                            std::size_t sampleCount, float entryThreshold,
                                            const VadSegmentationConfig& config);

}  // namespace VadSegmentation
}  // namespace orvane
