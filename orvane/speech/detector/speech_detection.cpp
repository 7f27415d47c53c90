#include "orvane/speech/detector/speech_detection.h"

#include <algorithm>

#include "orvane/audio/slice_relay.h"
#include "orvane/speech/detector/silero_vad_analyser.h"
#include "orvane/speech/detector/speech_input_maker.h"

namespace orvane {

struct SpeechDetection::State {
  SileroVADTuning tuning;
  double sampleRate;
  SpeechInputMaker input;
  VadManager::Stream stream;
};

SpeechDetection::SpeechDetection(const VadManager& model, const SileroVADTuning& tuning,
                                 double sampleRate, std::size_t channelCount)
    : state_(std::make_unique<State>(State{.tuning = tuning,
                                           .sampleRate = sampleRate,
                                           .input = SpeechInputMaker(sampleRate, channelCount),
                                           .stream = VadManager::Stream(model)})) {}
SpeechDetection::~SpeechDetection() = default;

void SpeechDetection::process(PlanarView audio, std::size_t threadCount) {
  state_->stream.process(state_->input.process(audio, threadCount), threadCount);
}

std::optional<std::vector<bool>> SpeechDetection::finish() {
  state_->stream.process(state_->input.finish());
  if (state_->stream.sampleCount() == 0) return std::nullopt;
  const auto segments = state_->stream.finish(state_->tuning.segmentation());
  return SileroVADAnalyser::historyOf(segments, frameCount(), state_->sampleRate);
}

std::int64_t SpeechDetection::frameCount() const noexcept {
  return state_->input.frameCount();
}

void detectSpeech(AudioSource& source, SpeechDetection& detection, std::size_t threadCount) {
  // Enough for each thread to have several of the network's tiles. Of many channels fewer: each
  // begins on memory of its own.
  constexpr std::uint32_t kMostFrames = 1U << 20;
  constexpr std::uint32_t kMostSamples = 1U << 22;
  const std::uint32_t frames =
      std::clamp(kMostSamples / std::max(source.format().channelCount, 1U), 1U, kMostFrames);
  const SliceTaker take = [&](PlanarView audio) { detection.process(audio, threadCount); };
  relaySlices(source, frames, {.threadCount = threadCount}, {&take, 1});
}

}  // namespace orvane
