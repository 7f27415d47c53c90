#include "orvane/speech/detector/speech_input_maker.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orvane/speech/detector/mono_resampler.h"

namespace orvane {
namespace {

constexpr double kModelRate = 16000;  // that the network was trained at

std::int64_t outputCount(std::int64_t frames, double ratio) {
  return static_cast<std::int64_t>(static_cast<double>(frames) / ratio);
}

}  // namespace

SpeechInputMaker::SpeechInputMaker(double sampleRate, std::size_t channelCount)
    : ratio_(sampleRate / kModelRate), lastFrame_(channelCount) {}

std::int64_t SpeechInputMaker::outputsWithin(std::int64_t frames) const {
  if (ratio_ == 1) return frames;
  // Sample i lies between the frames ⌊ratio × i⌋ and the next one.
  const auto needsMore = [&](std::int64_t i) {
    return static_cast<std::int64_t>(ratio_ * static_cast<double>(i)) + 1 >= frames;
  };
  auto output = std::max<std::int64_t>(0, outputCount(frames - 1, ratio_));
  while (output > 0 && needsMore(output - 1)) --output;
  while (!needsMore(output)) ++output;
  return output;
}

void SpeechInputMaker::run(PlanarView audio, std::int64_t firstFrame, std::int64_t endOutput,
                           std::size_t threadCount) {
  if (endOutput <= endOutput_) return;
  // Room is not cleared again for every piece.
  const auto needed = static_cast<std::size_t>(endOutput - firstOutput_);
  if (output_.size() < needed) output_.resize(needed);
  const std::int64_t endFrame = firstFrame + static_cast<std::int64_t>(audio.frameCount());
  MonoResampler{audio, endFrame, ratio_, firstFrame}.run(
      endOutput_, endOutput, output_.data() + (endOutput_ - firstOutput_), threadCount);
  endOutput_ = endOutput;
}

void SpeechInputMaker::dropGiven() {
  std::copy(output_.begin() + (given_ - firstOutput_), output_.begin() + (endOutput_ - firstOutput_),
            output_.begin());
  firstOutput_ = given_;
}

std::span<const float> SpeechInputMaker::give(std::int64_t endOutput) {
  const auto first = static_cast<std::size_t>(given_ - firstOutput_);
  given_ = std::clamp(endOutput, given_, endOutput_);
  return std::span(output_).subspan(first, static_cast<std::size_t>(given_ - firstOutput_) - first);
}

std::span<const float> SpeechInputMaker::process(PlanarView audio, std::size_t threadCount) {
  dropGiven();
  if (audio.frameCount() == 0) return {};
  const std::size_t channelCount = audio.channelCount();
  if (frames_ > 0) {
    // What lies between the piece before and this one.
    std::vector<float> seam;
    std::vector<const float*> seamChannels;
    for (std::size_t c = 0; c < channelCount; ++c)
      seam.insert(seam.end(), {lastFrame_[c], *audio.channel(c)});
    for (std::size_t c = 0; c < channelCount; ++c) seamChannels.push_back(&seam[2 * c]);
    run({seamChannels, 2}, frames_ - 1, outputsWithin(frames_ + 1));
  }
  const std::int64_t end = frames_ + static_cast<std::int64_t>(audio.frameCount());
  run(audio, frames_, outputsWithin(end), threadCount);
  for (std::size_t c = 0; c < channelCount; ++c) lastFrame_[c] = audio.samples(c).back();
  frames_ = end;
  // A sample that the audio would lose if it ended here is kept back.
  return give(outputCount(frames_, ratio_));
}

std::span<const float> SpeechInputMaker::finish() {
  dropGiven();
  if (frames_ == 0) return {};
  std::vector<const float*> lastFrame;
  for (const float& sample : lastFrame_) lastFrame.push_back(&sample);
  const std::int64_t count = outputCount(frames_, ratio_);
  run({lastFrame, 1}, frames_ - 1, count);  // nothing comes behind the last frame
  return give(count);
}

}  // namespace orvane
