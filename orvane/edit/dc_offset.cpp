#include "orvane/edit/dc_offset.h"

#include <utility>
#include <vector>

#include "orvane/edit/channel_arrays.h"
#include "orvane/platform/sample_arithmetic.h"
#include "orvane/platform/signal_kernels.h"

namespace orvane::EditOperations {

EditResult removeDCOffset(ChannelArrays channelData, double sampleRate, std::int64_t startFrame,
                          std::int64_t endFrame) {
  return edited(std::move(channelData), sampleRate, [&](MutablePlanarView audio) {
    removeDCOffsetInPlace(audio, startFrame, endFrame);
  });
}

void removeDCOffsetInPlace(MutablePlanarView audio, std::int64_t startFrame,
                           std::int64_t endFrame) {
  const ProgrammeSlice whole{audio};
  const FrameRange range = clampedTo(audio, startFrame, endFrame);
  const auto affected = whole.within(range).audio;
  std::vector<float> offsets;
  for (std::size_t c = 0; c < affected.channelCount(); ++c)
    offsets.push_back(dcOffset(affected.samples(c)));
  subtractFromSlice(whole, range, offsets);
}

float dcOffset(std::span<const float> samples) noexcept {
  if (samples.empty()) return 0;
  return static_cast<float>(SignalKernels::runStatistics(samples.data(), samples.size()).sum /
                            static_cast<double>(samples.size()));
}

void subtractFromSlice(const ProgrammeSlice& slice, const FrameRange& range,
                       std::span<const float> offsets) {
  const auto audio = slice.within(range).audio;
  for (std::size_t c = 0; c < audio.channelCount(); ++c)
    SampleArithmetic::offset(audio.samples(c), -offsets[c]);
}

}  // namespace orvane::EditOperations
