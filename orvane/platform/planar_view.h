#pragma once

#include <cstddef>
#include <span>

namespace orvane {

/// Planar audio that belongs to somebody else: one pointer per channel and the same stretch of
/// frames behind each. Slices share the pointers, so that cutting a programme copies nothing; the
/// pointers must outlive every view of them.
template <class Sample>
class BasicPlanarView {
 public:
  BasicPlanarView() = default;
  /// `channels`: each channel's first sample.
  BasicPlanarView(std::span<Sample* const> channels, std::size_t frameCount)
      : channels_(channels), frameCount_(frameCount) {}

  std::size_t channelCount() const noexcept { return channels_.size(); }
  std::size_t frameCount() const noexcept { return frameCount_; }

  /// The channel's first sample of this stretch.
  Sample* channel(std::size_t index) const noexcept { return channels_[index] + first_; }
  std::span<Sample> samples(std::size_t channel) const noexcept {
    return {this->channel(channel), frameCount_};
  }

  /// The frames [first, first + count) of this stretch, which must be there.
  BasicPlanarView slice(std::size_t first, std::size_t count) const noexcept {
    BasicPlanarView part = *this;
    part.first_ += first;
    part.frameCount_ = count;
    return part;
  }
  /// The channels first … first + count − 1, which must be there.
  BasicPlanarView channels(std::size_t first, std::size_t count) const noexcept {
    BasicPlanarView part = *this;
    part.channels_ = channels_.subspan(first, count);
    return part;
  }
  /// The frames from `first` on.
  BasicPlanarView from(std::size_t first) const noexcept {
    return slice(first, frameCount_ - first);
  }

  /// What may be written may be read.
  operator BasicPlanarView<const Sample>() const noexcept {
    BasicPlanarView<const Sample> all({channels_.data(), channels_.size()}, first_ + frameCount_);
    return all.slice(first_, frameCount_);
  }

 private:
  std::span<Sample* const> channels_{};
  std::size_t first_ = 0;
  std::size_t frameCount_ = 0;
};

using PlanarView = BasicPlanarView<const float>;
using MutablePlanarView = BasicPlanarView<float>;

}  // namespace orvane
