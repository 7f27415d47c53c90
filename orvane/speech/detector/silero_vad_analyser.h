#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "orvane/platform/execution.h"
#include "orvane/platform/export.h"
#include "orvane/platform/pcm_buffer.h"
#include "orvane/speech/detector/silero_vad_tuning.h"
#include "orvane/speech/detector/vad_manager.h"

namespace orvane {

class SpeechDetection;

/// Tells for every 100 ms of a file whether somebody speaks. It keeps one loaded model between
/// calls and detects for one caller at a time; others wait. It never fails: where detection cannot
/// run, the answer is absent.
class ORVANE_API SileroVADAnalyser {
 public:
  /// What the detector works on.
  struct Input {
    std::vector<float> samples16k{};    ///< mono at 16 kHz
    std::int64_t sourceFrameCount = 0;  ///< frames before resampling
    double sourceSampleRate = 0;        ///< Hz, before resampling

    bool operator==(const Input&) const = default;
  };

  using ManagerMaker = std::function<std::unique_ptr<VadManager>(const VadManager::Config&)>;

  /// The one of the process, made when first asked for.
  static SileroVADAnalyser& shared();

  /// With a source of managers other than the library's resources.
  explicit SileroVADAnalyser(ManagerMaker makeManager);
  ~SileroVADAnalyser();
  SileroVADAnalyser(const SileroVADAnalyser&) = delete;
  SileroVADAnalyser& operator=(const SileroVADAnalyser&) = delete;

  /// Mixes a buffer down to mono (the mean of its channels) and brings it to 16 kHz by linear
  /// interpolation, without a filter. Absent for a buffer without channels or frames.
  static std::optional<Input> prepareInput(const PCMBuffer& buffer, std::size_t threadCount = 1);

  /// The same for one pointer per channel. Absent without channels, for `frameCount` below 1, for a
  /// rate that is not above 0, and when not even one sample at 16 kHz results.
  static std::optional<Input> prepareInput(std::span<const float* const> channels,
                                           std::int64_t frameCount, double sampleRate,
                                           std::size_t threadCount = 1);

  /// One flag per 100 ms of the source, at least one. Absent when no model can be loaded or there
  /// are no samples. The stage is "Detecting speech"; only cancelling throws (`Cancelled`).
  std::optional<std::vector<bool>> classify(const Input& input, const SileroVADTuning& tuning);
  std::optional<std::vector<bool>> classify(const Input& input, const SileroVADTuning& tuning,
                                            const Execution& execution);

  /// The same for audio that comes in order, in pieces. Null when no model can be loaded. Any
  /// number of them may be had at a time.
  std::unique_ptr<SpeechDetection> begin(double sampleRate, std::size_t channelCount,
                                         const SileroVADTuning& tuning);

  /// The same for mono samples at any rate.
  std::optional<std::vector<bool>> classify(std::span<const float> mono, double sourceSampleRate,
                                            const SileroVADTuning& tuning);
  std::optional<std::vector<bool>> classify(std::span<const float> mono, double sourceSampleRate,
                                            const SileroVADTuning& tuning,
                                            const Execution& execution);

  /// Flag k is set when any part of a segment lies in [k, k + 1) × `blockDuration` seconds.
  /// Segments may overlap, and reach beyond the blocks. Times are finite, `blockDuration` is above
  /// 0.
  static std::vector<bool> blockHistory(std::span<const VadSegment> segments,
                                        std::int64_t totalBlocks, double blockDuration);

  /// The flags of a file's segments: one per 100 ms of the source, at least one.
  static std::vector<bool> historyOf(std::span<const VadSegment> segments,
                                     std::int64_t sourceFrameCount, double sourceSampleRate);

  /// Linear interpolation without a filter. Rates are above 0.
  static std::vector<float> linInterp(std::span<const float> samples, double fromRate,
                                      double toRate);

 private:
  /// The model for a threshold; null when none can be loaded. For the holder of the mutex.
  const VadManager* managerFor(float threshold);
  std::optional<std::vector<bool>> classify16k(std::span<const float> samples16k,
                                               std::int64_t sourceFrameCount,
                                               double sourceSampleRate,
                                               const SileroVADTuning& tuning,
                                               const Execution& execution);

  ManagerMaker makeManager_;
  std::mutex mutex_{};  ///< held by the caller whose classification runs
  std::unique_ptr<VadManager> manager_{};
  float managerThreshold_ = 0.5F;
};

}  // namespace orvane
