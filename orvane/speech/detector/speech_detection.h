#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"
#include "orvane/speech/detector/silero_vad_tuning.h"
#include "orvane/speech/detector/vad_manager.h"

namespace orvane {

class AudioSource;

/// Tells for every 100 ms of audio whether somebody speaks, while the audio comes in order, in
/// pieces of any size: the flags that `SileroVADAnalyser::classify` gives of the whole. It holds
/// the last piece and some seconds, however long the audio is.
class ORVANE_API SpeechDetection {
 public:
  /// The model was made for the tuning's threshold; the rate is above 0, there is at least one
  /// channel.
  SpeechDetection(const VadManager& model, const SileroVADTuning& tuning, double sampleRate,
                  std::size_t channelCount);
  ~SpeechDetection();
  SpeechDetection(const SpeechDetection&) = delete;
  SpeechDetection& operator=(const SpeechDetection&) = delete;

  /// The next frames.
  void process(PlanarView audio, std::size_t threadCount = 1);

  /// Ends the audio: one flag per 100 ms, at least one; absent when it is too short for one sample
  /// at 16 kHz.
  std::optional<std::vector<bool>> finish();

  std::int64_t frameCount() const noexcept;  ///< taken so far

 private:
  struct State;
  std::unique_ptr<State> state_;
};

/// Gives the rest of the source to the detection, short of ending it. Throws what reading throws.
ORVANE_API void detectSpeech(AudioSource& source, SpeechDetection& detection,
                             std::size_t threadCount = 1);

}  // namespace orvane
