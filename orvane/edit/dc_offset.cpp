#include "orvane/edit/dc_offset.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "orvane/edit/channel_arrays.h"
#include "orvane/platform/sample_arithmetic.h"
#include "orvane/platform/signal_kernels.h"

namespace orvane::EditOperations {
namespace {

/// Samples that are summed up at a time, counted from the first one: so the sum does not depend on
/// the pieces.
constexpr std::size_t kBlock = std::size_t{1} << 16;

double sumOf(std::span<const float> samples) noexcept {
  return SignalKernels::runStatistics(samples.data(), samples.size()).sum;
}

}  // namespace

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

float dcOffset(std::span<const float> samples) {
  DCOffsetMeter meter;
  meter.process(samples);
  return meter.offset();
}

void DCOffsetMeter::process(std::span<const float> samples) {
  while (!samples.empty()) {
    const std::size_t count = std::min(samples.size(), kBlock - pending_.size());
    if (count == kBlock) {
      sum_ += sumOf(samples.first(count));
      ++blocks_;
    } else {
      pending_.insert(pending_.end(), samples.begin(),
                      samples.begin() + static_cast<std::ptrdiff_t>(count));
    }
    if (pending_.size() == kBlock) {
      sum_ += sumOf(pending_);
      ++blocks_;
      pending_.clear();
    }
    samples = samples.subspan(count);
  }
}

float DCOffsetMeter::offset() const noexcept {
  const auto count =
      static_cast<double>(blocks_ * std::int64_t{kBlock}) + static_cast<double>(pending_.size());
  return count == 0 ? 0 : static_cast<float>((sum_ + sumOf(pending_)) / count);
}

void subtractFromSlice(const ProgrammeSlice& slice, const FrameRange& range,
                       std::span<const float> offsets) {
  const auto audio = slice.within(range).audio;
  for (std::size_t c = 0; c < audio.channelCount(); ++c)
    SampleArithmetic::offset(audio.samples(c), -offsets[c]);
}

}  // namespace orvane::EditOperations
