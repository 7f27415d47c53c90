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

}  // namespace

VadManager::VadManager(const Config& config, const std::filesystem::path& vadModel)
    : config_(config), network_(std::make_shared<SileroNetwork>(loadSileroWeights(vadModel))) {}

VadManager::VadManager(const Config& config) : VadManager(config, installedModel()) {}

std::vector<float> VadManager::frameProbabilities(std::span<const float> samples16k,
                                                  const Execution& execution) const {
  constexpr std::size_t kFrame = VadSegmentation::kFrameSamples;
  const std::size_t frames = (samples16k.size() + kFrame - 1) / kFrame;
  return VadSegmentation::frameProbabilities(
      network_->stepProbabilities(samples16k, frames * VadSegmentation::kStepsPerFrame, execution));
}

std::vector<VadSegment> VadManager::segmentSpeech(std::span<const float> samples16k,
                                                  const VadSegmentationConfig& segmentation,
                                                  const Execution& execution) const {
  return VadSegmentation::segments(frameProbabilities(samples16k, execution), samples16k.size(),
                                   config_.defaultThreshold, segmentation);
}

}  // namespace orvane
