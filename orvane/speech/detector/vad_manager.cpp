#include "orvane/speech/detector/vad_manager.h"

#include "orvane/speech/detector/onnx_weights.h"
#include "orvane/speech/detector/silero_network.h"
#include "orvane/speech/detector/speech_model.h"

namespace orvane {
namespace {

std::filesystem::path installedModel() {
  if (const auto model = SpeechModel::installed()) return model->path;
  throw SpeechModelError("silero_vad_v6.onnx", "The speech model is not installed.");
}

/// Of the frames that the samples begin.
std::size_t stepCount(std::size_t samples) {
  constexpr std::size_t kFrame = VadSegmentation::kFrameSamples;
  return (samples + kFrame - 1) / kFrame * VadSegmentation::kStepsPerFrame;
}

}  // namespace

VadManager::VadManager(const Config& config, const std::filesystem::path& vadModel)
    : config_(config), network_(std::make_shared<SileroNetwork>(loadSileroWeights(vadModel))) {}

VadManager::VadManager(const Config& config) : VadManager(config, installedModel()) {}

std::vector<float> VadManager::frameProbabilities(std::span<const float> samples16k,
                                                  const Execution& execution) const {
  return VadSegmentation::frameProbabilities(
      network_->stepProbabilities(samples16k, stepCount(samples16k.size()), execution));
}

std::vector<VadSegment> VadManager::segmentSpeech(std::span<const float> samples16k,
                                                  const VadSegmentationConfig& segmentation,
                                                  const Execution& execution) const {
  return VadSegmentation::segments(frameProbabilities(samples16k, execution), samples16k.size(),
                                   config_.defaultThreshold, segmentation);
}

struct VadManager::Stream::State {
  std::shared_ptr<const SileroNetwork> network;
  float threshold;
  SileroNetwork::Stream steps;
  std::size_t sampleCount = 0;
};

VadManager::Stream::Stream(const VadManager& manager)
    : state_(std::make_unique<State>(State{.network = manager.network_,
                                           .threshold = manager.config_.defaultThreshold,
                                           .steps = SileroNetwork::Stream(*manager.network_)})) {}
VadManager::Stream::~Stream() = default;
VadManager::Stream::Stream(Stream&&) noexcept = default;

void VadManager::Stream::process(std::span<const float> samples16k, std::size_t threadCount) {
  state_->sampleCount += samples16k.size();
  state_->steps.process(samples16k, threadCount);
}

std::size_t VadManager::Stream::sampleCount() const noexcept {
  return state_->sampleCount;
}

std::vector<VadSegment> VadManager::Stream::finish(const VadSegmentationConfig& segmentation) {
  const auto steps = state_->steps.finish(stepCount(state_->sampleCount));
  return VadSegmentation::segments(VadSegmentation::frameProbabilities(steps), state_->sampleCount,
                                   state_->threshold, segmentation);
}

}  // namespace orvane
