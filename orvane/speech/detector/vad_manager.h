#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <span>
#include <vector>

#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/speech/detector/speech_model_error.h"
#include "orvane/speech/detector/vad_segmentation.h"

namespace orvane {

class SileroNetwork;

/// A loaded speech model and the threshold that it is used with.
class ORVANE_API VadManager {
 public:
  /// Where a model may run. The network always runs on the processor; the choice is carried for
  /// hosts that keep it with their settings.
  enum class ComputeUnits { cpuOnly = 0, cpuAndGPU = 1, all = 2, cpuAndNeuralEngine = 3 };

  struct Config {
    float defaultThreshold = 0.85F;  ///< frame probability from which speech begins
    ComputeUnits computeUnits = ComputeUnits::cpuAndNeuralEngine;
    bool debugMode = false;  ///< changes nothing: the library does not log

    bool operator==(const Config&) const = default;
  };

  /// Loads the model file. Throws `SpeechModelError` and `PlatformError`.
  VadManager(const Config& config, const std::filesystem::path& vadModel);

  /// Loads the installed model. Throws `SpeechModelError` also when there is none.
  explicit VadManager(const Config& config);

  const Config& config() const noexcept { return config_; }

  /// Speech probability of each frame of 256 ms (4,096 samples at 16 kHz), from a cleared state:
  /// that at least one of its eight steps is speech. The last frame is filled by repeating the last
  /// sample. Any number of threads may call at once. Throws `Cancelled` when the observer asks for
  /// it.
  std::vector<float> frameProbabilities(std::span<const float> samples16k,
                                        const Execution& execution = {}) const;

  /// Stretches of speech, in order and without overlap.
  std::vector<VadSegment> segmentSpeech(std::span<const float> samples16k,
                                        const VadSegmentationConfig& segmentation,
                                        const Execution& execution = {}) const;

  /// The same for samples that come in order, in pieces of any size, of which it holds a second and
  /// a half.
  class ORVANE_API Stream {
   public:
    explicit Stream(const VadManager& manager);
    ~Stream();
    Stream(Stream&&) noexcept;

    void process(std::span<const float> samples16k, std::size_t threadCount = 1);

    std::size_t sampleCount() const noexcept;  ///< so far

    /// Ends the samples.
    std::vector<VadSegment> finish(const VadSegmentationConfig& segmentation);

   private:
    struct State;
    std::unique_ptr<State> state_;
  };

 private:
  Config config_;
  std::shared_ptr<const SileroNetwork> network_;
};

}  // namespace orvane
