#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "orvane/platform/audio_format.h"
#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

namespace orvane {

/// Owned planar 32-bit float audio: one run of `frameCapacity` samples per channel, of which the
/// first `frameLength` are valid. Each run starts on a 64-byte boundary; large buffers ask for huge
/// pages. Memory is zero until written and is taken from the system only as it is written.
class ORVANE_API PCMBuffer {
 public:
  /// Nothing when the memory cannot be had.
  static std::shared_ptr<PCMBuffer> make(const AudioFormat& format,
                                         std::uint32_t frameCapacity) noexcept;
  ~PCMBuffer();
  PCMBuffer(const PCMBuffer&) = delete;
  PCMBuffer& operator=(const PCMBuffer&) = delete;

  const AudioFormat& format() const noexcept { return format_; }
  double sampleRate() const noexcept { return format_.sampleRate; }
  std::uint32_t channelCount() const noexcept { return format_.channelCount; }
  std::uint32_t frameCapacity() const noexcept { return frameCapacity_; }
  std::uint32_t frameLength() const noexcept { return frameLength_; }
  /// `frames` must not exceed the capacity.
  void setFrameLength(std::uint32_t frames);

  float* channel(std::uint32_t index) noexcept { return channels_[index]; }
  const float* channel(std::uint32_t index) const noexcept { return channels_[index]; }
  /// The valid frames.
  PlanarView view() const noexcept { return {channels_, frameLength_}; }
  /// Everything up to the capacity, to be written.
  MutablePlanarView room() noexcept { return {channels_, frameCapacity_}; }

  /// Makes stored channel `order[i]` the new channel `i`, without moving samples, and replaces the
  /// layout. `order` must be a permutation of 0 … channelCount − 1.
  void permuteChannels(const std::vector<std::uint32_t>& order,
                       std::optional<ChannelLayout> newLayout);

 private:
  PCMBuffer() = default;

  AudioFormat format_{};
  std::uint32_t frameCapacity_ = 0;
  std::uint32_t frameLength_ = 0;
  std::vector<float*> channels_{};
  void* memory_ = nullptr;
  std::size_t memoryBytes_ = 0;
};

}  // namespace orvane
