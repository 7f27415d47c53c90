#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane {

/// Makes the speech detector's input from audio that comes in order, in pieces of any size: piece
/// by piece the samples that `SileroVADAnalyser::prepareInput` makes of the whole.
class ORVANE_TESTING_API SpeechInputMaker {
 public:
  /// The rate is above 0, there is at least one channel.
  SpeechInputMaker(double sampleRate, std::size_t channelCount);

  /// The samples at 16 kHz that the next frames add. They stay until the next call.
  std::span<const float> process(PlanarView audio, std::size_t threadCount = 1);

  /// Ends the audio and gives the last ones.
  std::span<const float> finish();

  std::int64_t frameCount() const noexcept { return frames_; }  ///< of the source, so far

 private:
  /// The first output sample that needs more than the source's first `frames` frames.
  std::int64_t outputsWithin(std::int64_t frames) const;
  void run(PlanarView audio, std::int64_t firstFrame, std::int64_t endOutput,
           std::size_t threadCount = 1);
  void dropGiven();
  std::span<const float> give(std::int64_t endOutput);

  double ratio_;
  std::int64_t frames_ = 0;
  std::vector<float> lastFrame_{};  ///< one sample per channel
  std::vector<float> output_{};     ///< room for the samples from `firstOutput_` on
  std::int64_t firstOutput_ = 0;
  std::int64_t endOutput_ = 0;  ///< behind the last one made
  std::int64_t given_ = 0;      ///< samples given away so far
};

}  // namespace orvane
