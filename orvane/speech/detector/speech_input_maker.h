#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"
#include "orvane/speech/detector/silero_vad_analyser.h"

namespace orvane {

class AudioSource;

/// Makes the speech detector's input from audio that comes in order, in pieces of any size: the
/// same samples as `SileroVADAnalyser::prepareInput` makes of the whole.
class ORVANE_API SpeechInputMaker {
 public:
  /// `expectedFrames` only saves the samples from being moved. The rate is above 0, there is at
  /// least one channel.
  SpeechInputMaker(double sampleRate, std::size_t channelCount, std::int64_t expectedFrames);

  /// The next frames.
  void process(PlanarView audio);

  /// Ends the audio. Absent when not even one sample at 16 kHz results.
  std::optional<SileroVADAnalyser::Input> finish();

 private:
  /// The first output sample that needs more than the source's first `frames` frames.
  std::int64_t outputsWithin(std::int64_t frames) const;
  void run(PlanarView audio, std::int64_t firstFrame, std::int64_t endOutput);

  double sampleRate_;
  double ratio_;
  std::int64_t frames_ = 0;         ///< of the source, so far
  std::vector<float> lastFrame_{};  ///< one sample per channel
  std::vector<float> output_{};
};

/// The input made of the rest of a source, which is read in short pieces. Throws what reading
/// throws.
ORVANE_API std::optional<SileroVADAnalyser::Input> speechInputOf(AudioSource& source);

}  // namespace orvane
