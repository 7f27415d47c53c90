#pragma once

#include "orvane/speech/detector/vad_segmentation.h"

namespace orvane {

/// The user's settings of the speech detector.
struct SileroVADTuning {
  float threshold = 0.5F;           ///< speech probability from which a frame counts as speech
  double minSpeechDuration = 0.1;   ///< seconds; shorter speech is dropped
  double minSilenceDuration = 0.1;  ///< seconds; shorter pauses do not end speech

  bool operator==(const SileroVADTuning&) const = default;

  static constexpr SileroVADTuning defaults() noexcept { return {}; }

  VadSegmentationConfig segmentation() const {
    auto config = VadSegmentationConfig::defaults();
    config.minSpeechDuration = minSpeechDuration;
    config.minSilenceDuration = minSilenceDuration;
    return config;
  }
};

}  // namespace orvane
