#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
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
  friend class PCMBufferPool;

  /// Pages of the system's, given back at the end.
  class Mapping {
   public:
    Mapping() = default;
    /// Nothing when there are none to be had.
    static std::optional<Mapping> make(std::size_t bytes) noexcept;
    Mapping(Mapping&& other) noexcept { swap(other); }
    Mapping& operator=(Mapping&& other) noexcept {
      swap(other);
      return *this;
    }
    ~Mapping();

    std::byte* start() const noexcept { return start_; }
    std::size_t bytes() const noexcept { return bytes_; }

   private:
    void swap(Mapping& other) noexcept;

    void* pages_ = nullptr;
    std::size_t pageBytes_ = 0;
    std::byte* start_ = nullptr;  ///< of what can be used
    std::size_t bytes_ = 0;
  };

  PCMBuffer() = default;
  /// What so many frames need; absent when no memory can hold them.
  static std::optional<std::size_t> bytesFor(std::size_t channels, std::uint32_t frames) noexcept;
  static std::unique_ptr<PCMBuffer> makeIn(Mapping memory, const AudioFormat& format,
                                           std::uint32_t frameCapacity);

  AudioFormat format_{};
  std::uint32_t frameCapacity_ = 0;
  std::uint32_t frameLength_ = 0;
  std::vector<float*> channels_{};
  Mapping memory_{};
};

/// Makes buffers whose memory serves again when they are gone: who reads file after file spares the
/// system finding and clearing pages for each, half the time of short files. Any thread may ask.
class ORVANE_API PCMBufferPool {
 public:
  PCMBufferPool();
  ~PCMBufferPool();
  PCMBufferPool(const PCMBufferPool&) = delete;
  PCMBufferPool& operator=(const PCMBufferPool&) = delete;

  /// As `PCMBuffer::make`, but what lies behind the frame length may be anything. The buffer may
  /// outlive the pool.
  std::shared_ptr<PCMBuffer> make(const AudioFormat& format, std::uint32_t frameCapacity) noexcept;

 private:
  struct Unused;

  std::shared_ptr<Unused> unused_;
};

}  // namespace orvane
