#include "orvane/edit/level.h"

#include <utility>

#include "orvane/edit/channel_arrays.h"
#include "orvane/platform/sample_arithmetic.h"

namespace orvane::EditOperations {

EditResult changeLevel(ChannelArrays channelData, double sampleRate, double gainDB,
                       std::int64_t startFrame, std::int64_t endFrame) {
  return edited(std::move(channelData), sampleRate, [&](MutablePlanarView audio) {
    changeLevelInPlace(audio, gainDB, startFrame, endFrame);
  });
}

void changeLevelInPlace(MutablePlanarView audio, double gainDB, std::int64_t startFrame,
                        std::int64_t endFrame) {
  changeLevelOfSlice({audio}, clampedTo(audio, startFrame, endFrame), gainDB);
}

void changeLevelOfSlice(const ProgrammeSlice& slice, const FrameRange& range, double gainDB) {
  const float gain = linearGain(gainDB);
  const auto audio = slice.within(range).audio;
  for (std::size_t c = 0; c < audio.channelCount(); ++c)
    SampleArithmetic::scale(audio.samples(c), gain);
}

EditResult invertPhase(ChannelArrays channelData, double sampleRate, std::int64_t startFrame,
                       std::int64_t endFrame) {
  return edited(std::move(channelData), sampleRate,
                [&](MutablePlanarView audio) { invertPhaseInPlace(audio, startFrame, endFrame); });
}

void invertPhaseInPlace(MutablePlanarView audio, std::int64_t startFrame, std::int64_t endFrame) {
  invertPhaseOfSlice({audio}, clampedTo(audio, startFrame, endFrame));
}

void invertPhaseOfSlice(const ProgrammeSlice& slice, const FrameRange& range) {
  const auto audio = slice.within(range).audio;
  for (std::size_t c = 0; c < audio.channelCount(); ++c) SampleArithmetic::negate(audio.samples(c));
}

EditResult swapChannels(ChannelArrays channelData, double sampleRate) {
  requireEqualLengths(channelData, sampleRate);
  if (channelData.size() == 2) std::swap(channelData[0], channelData[1]);
  return resultOf(std::move(channelData), sampleRate);
}

std::vector<EditResult> splitToMono(ChannelArrays channelData, double sampleRate) {
  requireEqualLengths(channelData, sampleRate);
  std::vector<EditResult> results;
  for (auto& channel : channelData) {
    EditResult& mono = results.emplace_back(EditResult{{}, sampleRate, 1});
    mono.channelData.push_back(std::move(channel));
  }
  return results;
}

}  // namespace orvane::EditOperations
