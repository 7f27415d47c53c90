#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/speech/detector/onnx_weights.h"

namespace orvane {

namespace silero {
struct PackedWeights;
}

/// The Silero voice-activity network, versions 5 and 6, for 16 kHz mono: a windowed Fourier
/// transform, four convolutions, one LSTM layer and a logistic output, in 32-bit floats. Each step
/// sees 512 new samples (32 ms) behind the 64 before them. Immutable: any number of threads may use
/// one network at once.
class ORVANE_TESTING_API SileroNetwork {
 public:
  static constexpr std::size_t kStepSamples = 512;

  explicit SileroNetwork(const SileroWeights& weights);
  ~SileroNetwork();
  SileroNetwork(SileroNetwork&&) noexcept;
  SileroNetwork& operator=(SileroNetwork&&) noexcept;

  /// Speech probabilities of `stepCount` consecutive steps, from a cleared state. Steps beyond the
  /// end of `samples` see its last sample repeated. Samples that are not finite, or larger than
  /// 10⁹, count as 0. The result does not depend on the number of threads; more than four do not
  /// help. The stage is "Detecting speech"; throws `Cancelled` when the observer asks for it.
  std::vector<float> stepProbabilities(std::span<const float> samples, std::size_t stepCount,
                                       const Execution& execution = {}) const;

  /// The same for samples that come in order, in pieces of any size. Holds a second and a half of
  /// them. The network has to stay.
  class ORVANE_TESTING_API Stream {
   public:
    explicit Stream(const SileroNetwork& network);
    ~Stream();
    Stream(Stream&&) noexcept;

    void process(std::span<const float> samples, std::size_t threadCount = 1);

    /// Ends the samples: the probabilities of `stepCount` steps, at least as many as the samples
    /// have filled.
    std::vector<float> finish(std::size_t stepCount);

   private:
    struct State;
    std::unique_ptr<State> state_;
  };

 private:
  std::unique_ptr<const silero::PackedWeights> weights_;
};

}  // namespace orvane
