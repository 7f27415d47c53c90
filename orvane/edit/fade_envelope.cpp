#include "orvane/edit/fade_envelope.h"

#include <algorithm>
#include <array>
#include <span>

#include "orvane/edit/channel_arrays.h"
#include "orvane/edit/fade_gain_kernel.h"
#include "orvane/platform/sample_arithmetic.h"

namespace orvane::EditOperations {
namespace {

/// By which t is divided; a fade of one frame has the gain of its start.
float divisorOf(std::int64_t count) {
  return static_cast<float>(std::max<std::int64_t>(count, 2) - 1);
}

}  // namespace

std::vector<float> fadeEnvelope(std::int64_t count, FadeDirection direction, FadeCurve curve) {
  std::vector<float> gains(static_cast<std::size_t>(std::max<std::int64_t>(count, 0)));
  fillFadeGains(curve, direction, 0, divisorOf(count), gains);
  return gains;
}

EditResult fade(ChannelArrays channelData, double sampleRate, std::int64_t startFrame,
                std::int64_t endFrame, FadeDirection direction, FadeCurve curve) {
  return edited(std::move(channelData), sampleRate, [&](MutablePlanarView audio) {
    fadeInPlace(audio, startFrame, endFrame, direction, curve);
  });
}

void fadeInPlace(MutablePlanarView audio, std::int64_t startFrame, std::int64_t endFrame,
                 FadeDirection direction, FadeCurve curve) {
  fadeSlice({audio}, clampedTo(audio, startFrame, endFrame), direction, curve);
}

void fadeSlice(const ProgrammeSlice& slice, const FrameRange& range, FadeDirection direction,
               FadeCurve curve) {
  constexpr std::size_t kBlock = 1024;
  std::array<float, kBlock> room;
  const ProgrammeSlice part = slice.within(range);
  for (std::size_t at = 0; at < part.audio.frameCount(); at += kBlock) {
    const auto block = part.audio.slice(at, std::min(kBlock, part.audio.frameCount() - at));
    const auto gains = std::span(room).first(block.frameCount());
    fillFadeGains(curve, direction, part.firstFrame + static_cast<std::int64_t>(at) - range.start,
                  divisorOf(range.length()), gains);
    for (std::size_t c = 0; c < block.channelCount(); ++c)
      SampleArithmetic::multiply(block.samples(c), gains.data());
  }
}

}  // namespace orvane::EditOperations
