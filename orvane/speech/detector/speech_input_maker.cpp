#include "orvane/speech/detector/speech_input_maker.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "orvane/audio/audio_source.h"
#include "orvane/speech/detector/mono_resampler.h"

namespace orvane {
namespace {

constexpr double kModelRate = 16000;  // that the network was trained at

std::int64_t outputCount(std::int64_t frames, double ratio) {
  return static_cast<std::int64_t>(static_cast<double>(frames) / ratio);
}

}  // namespace

SpeechInputMaker::SpeechInputMaker(double sampleRate, std::size_t channelCount,
                                   std::int64_t expectedFrames)
    : sampleRate_(sampleRate), ratio_(sampleRate / kModelRate), lastFrame_(channelCount) {
  // What a header says may be anything; what lies beyond half a day is not made room for.
  constexpr double kMostSeconds = 43'200;
  const auto frames = std::min(static_cast<double>(expectedFrames), kMostSeconds * sampleRate);
  output_.reserve(static_cast<std::size_t>(frames / ratio_) + 1);
}

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

void SpeechInputMaker::run(PlanarView audio, std::int64_t firstFrame, std::int64_t endOutput) {
  const auto start = static_cast<std::int64_t>(output_.size());
  if (endOutput <= start) return;
  output_.resize(static_cast<std::size_t>(endOutput));
  const std::int64_t endFrame = firstFrame + static_cast<std::int64_t>(audio.frameCount());
  MonoResampler{audio, endFrame, ratio_, firstFrame}.run(start, endOutput, output_.data() + start);
}

void SpeechInputMaker::process(PlanarView audio) {
  if (audio.frameCount() == 0) return;
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
  run(audio, frames_, outputsWithin(end));
  for (std::size_t c = 0; c < channelCount; ++c) lastFrame_[c] = audio.samples(c).back();
  frames_ = end;
}

std::optional<SileroVADAnalyser::Input> SpeechInputMaker::finish() {
  const std::int64_t count = frames_ > 0 ? outputCount(frames_, ratio_) : 0;
  if (count < 1) return std::nullopt;
  std::vector<const float*> lastFrame;
  for (const float& sample : lastFrame_) lastFrame.push_back(&sample);
  run({lastFrame, 1}, frames_ - 1, count);  // nothing comes behind the last frame
  output_.resize(static_cast<std::size_t>(count));
  return SileroVADAnalyser::Input{.samples16k = std::move(output_),
                                  .sourceFrameCount = frames_,
                                  .sourceSampleRate = sampleRate_};
}

std::optional<SileroVADAnalyser::Input> speechInputOf(AudioSource& source) {
  constexpr std::uint32_t kPieceFrames = 1U << 17;
  SpeechInputMaker maker(source.format().sampleRate, source.format().channelCount,
                         source.expectedFrameLength().value_or(0));
  const auto piece = source.makeBuffer(kPieceFrames);
  do {
    source.read(*piece);
    maker.process(piece->view());
  } while (piece->frameLength() == piece->frameCapacity());
  return maker.finish();
}

}  // namespace orvane
