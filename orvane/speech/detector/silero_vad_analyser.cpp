#include "orvane/speech/detector/silero_vad_analyser.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

#include "orvane/core/loudness/loudness_grid.h"
#include "orvane/platform/precondition.h"
#include "orvane/speech/detector/mono_resampler.h"
#include "orvane/speech/detector/speech_detection.h"

namespace orvane {
namespace {

constexpr double kModelRate = 16000;
/// 100 ms, the hop of the gating blocks of ITU-R BS.1770.
constexpr double kBlockDuration = core::LoudnessGrid::kStepSeconds;

/// Whole numbers up to here are exact in a double.
constexpr double kLargestCount = 9007199254740992.0;

std::int64_t toCount(double value) {
  precondition(value > -kLargestCount && value < kLargestCount, "counts of samples are finite");
  return static_cast<std::int64_t>(value);
}

std::unique_ptr<VadManager> makeInstalledManager(const VadManager::Config& config) {
  return std::make_unique<VadManager>(config);
}

std::vector<float> resample(const MonoResampler& resampler, std::int64_t outputCount,
                            std::size_t threadCount) {
  std::vector<float> output(static_cast<std::size_t>(outputCount));
  resampler.run(0, outputCount, output.data(), threadCount);
  return output;
}

std::optional<SileroVADAnalyser::Input> inputOf(PlanarView audio, double sampleRate,
                                                std::size_t threadCount) {
  if (audio.channelCount() == 0 || audio.frameCount() == 0 || !(sampleRate > 0))
    return std::nullopt;
  const double ratio = sampleRate / kModelRate;
  const auto frameCount = static_cast<std::int64_t>(audio.frameCount());
  const std::int64_t outputCount = toCount(static_cast<double>(frameCount) / ratio);
  if (outputCount < 1) return std::nullopt;
  return SileroVADAnalyser::Input{
      .samples16k = resample({audio, frameCount, ratio}, outputCount, threadCount),
      .sourceFrameCount = frameCount,
      .sourceSampleRate = sampleRate};
}

}  // namespace

SileroVADAnalyser& SileroVADAnalyser::shared() {
  static SileroVADAnalyser analyser(makeInstalledManager);
  return analyser;
}

SileroVADAnalyser::SileroVADAnalyser(ManagerMaker makeManager)
    : makeManager_(std::move(makeManager)) {}
SileroVADAnalyser::~SileroVADAnalyser() = default;

std::optional<SileroVADAnalyser::Input> SileroVADAnalyser::prepareInput(const PCMBuffer& buffer,
                                                                        std::size_t threadCount) {
  return inputOf(buffer.view(), buffer.sampleRate(), threadCount);
}

std::optional<SileroVADAnalyser::Input> SileroVADAnalyser::prepareInput(
    std::span<const float* const> channels, std::int64_t frameCount, double sampleRate,
    std::size_t threadCount) {
  if (frameCount < 1) return std::nullopt;
  return inputOf({channels, static_cast<std::size_t>(frameCount)}, sampleRate, threadCount);
}

std::vector<float> SileroVADAnalyser::linInterp(std::span<const float> samples, double fromRate,
                                                double toRate) {
  if (fromRate == toRate || samples.empty()) return {samples.begin(), samples.end()};
  const double ratio = fromRate / toRate;
  const auto count = static_cast<std::int64_t>(samples.size());
  const std::int64_t outputCount = toCount(static_cast<double>(count) / ratio);
  if (outputCount < 1) return {};
  const float* const channel = samples.data();
  return resample({{{&channel, 1}, samples.size()}, count, ratio}, outputCount, 1);
}

const VadManager* SileroVADAnalyser::managerFor(float threshold) {
  if (!manager_ || managerThreshold_ != threshold) {
    auto manager = makeManager_(VadManager::Config{.defaultThreshold = threshold});
    if (!manager) return nullptr;
    manager_ = std::move(manager);
    managerThreshold_ = threshold;
  }
  return manager_.get();
}

std::unique_ptr<SpeechDetection> SileroVADAnalyser::begin(double sampleRate,
                                                          std::size_t channelCount,
                                                          const SileroVADTuning& tuning) {
  if (!(sampleRate > 0) || channelCount == 0) return nullptr;
  try {
    const std::lock_guard lock(mutex_);
    const VadManager* const manager = managerFor(tuning.threshold);
    if (manager == nullptr) return nullptr;
    return std::make_unique<SpeechDetection>(*manager, tuning, sampleRate, channelCount);
  } catch (const std::exception&) {
    return nullptr;
  }
}

std::optional<std::vector<bool>> SileroVADAnalyser::classify(const Input& input,
                                                             const SileroVADTuning& tuning) {
  return classify(input, tuning, Execution{});
}

std::optional<std::vector<bool>> SileroVADAnalyser::classify(const Input& input,
                                                             const SileroVADTuning& tuning,
                                                             const Execution& execution) {
  return classify16k(input.samples16k, input.sourceFrameCount, input.sourceSampleRate, tuning,
                     execution);
}

std::optional<std::vector<bool>> SileroVADAnalyser::classify(std::span<const float> mono,
                                                             double sourceSampleRate,
                                                             const SileroVADTuning& tuning) {
  return classify(mono, sourceSampleRate, tuning, Execution{});
}

std::optional<std::vector<bool>> SileroVADAnalyser::classify(std::span<const float> mono,
                                                             double sourceSampleRate,
                                                             const SileroVADTuning& tuning,
                                                             const Execution& execution) {
  return classify16k(linInterp(mono, sourceSampleRate, kModelRate),
                     static_cast<std::int64_t>(mono.size()), sourceSampleRate, tuning, execution);
}

std::optional<std::vector<bool>> SileroVADAnalyser::classify16k(std::span<const float> samples16k,
                                                                std::int64_t sourceFrameCount,
                                                                double sourceSampleRate,
                                                                const SileroVADTuning& tuning,
                                                                const Execution& execution) {
  std::vector<VadSegment> segments;
  try {
    const std::lock_guard lock(mutex_);
    const VadManager* const manager = managerFor(tuning.threshold);
    if (manager == nullptr || samples16k.empty()) return std::nullopt;
    segments = manager->segmentSpeech(samples16k, tuning.segmentation(), execution);
  } catch (const Cancelled&) {
    throw;
  } catch (const std::exception&) {
    return std::nullopt;
  }
  return historyOf(segments, sourceFrameCount, sourceSampleRate);
}

std::vector<bool> SileroVADAnalyser::historyOf(std::span<const VadSegment> segments,
                                               std::int64_t sourceFrameCount,
                                               double sourceSampleRate) {
  const double blocks =
      std::round(static_cast<double>(sourceFrameCount) / sourceSampleRate / kBlockDuration);
  return blockHistory(segments, std::max<std::int64_t>(1, toCount(blocks)), kBlockDuration);
}

std::vector<bool> SileroVADAnalyser::blockHistory(std::span<const VadSegment> segments,
                                                  std::int64_t totalBlocks, double blockDuration) {
  std::vector<bool> flags(static_cast<std::size_t>(std::max<std::int64_t>(totalBlocks, 0)));
  for (const VadSegment& segment : segments) {
    precondition(std::isfinite(segment.startTime) && std::isfinite(segment.endTime),
                 "segments have finite times");
    const double first = std::max(0.0, std::floor(segment.startTime / blockDuration));
    const double last = std::min(std::ceil(segment.endTime / blockDuration) - 1,
                                 static_cast<double>(totalBlocks - 1));
    if (last >= first)
      std::fill(flags.begin() + static_cast<std::ptrdiff_t>(first),
                flags.begin() + static_cast<std::ptrdiff_t>(last) + 1, true);
  }
  return flags;
}

}  // namespace orvane
