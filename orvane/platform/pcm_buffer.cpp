#include "orvane/platform/pcm_buffer.h"

#include <sys/mman.h>

#include <limits>
#include <utility>

#include "orvane/platform/precondition.h"

namespace orvane {
namespace {

constexpr std::size_t kAlignment = 64;
constexpr std::size_t kHugePage = std::size_t{2} << 20;

/// Bytes from one channel's start to the next. An odd number of cache lines, so that equal frames
/// of different channels do not compete for the same cache sets.
constexpr std::size_t channelStride(std::uint32_t frames) {
  const std::size_t lines = (std::size_t{frames} * sizeof(float) + kAlignment - 1) / kAlignment;
  return (lines | 1) * kAlignment;
}

}  // namespace

std::shared_ptr<PCMBuffer> PCMBuffer::make(const AudioFormat& format,
                                           std::uint32_t frameCapacity) noexcept {
  try {
    const std::size_t stride = channelStride(frameCapacity);
    const std::size_t channels = format.channelCount;
    if (channels != 0 && stride > std::numeric_limits<std::size_t>::max() / 2 / channels) return {};
    std::shared_ptr<PCMBuffer> buffer(new PCMBuffer);
    buffer->format_ = format;
    buffer->frameCapacity_ = frameCapacity;
    buffer->channels_.resize(channels);
    const std::size_t bytes = stride * channels;
    if (bytes > 0) {
      // A mapping instead of the heap: refused cleanly when too large, given back at once when
      // freed. Huge mappings start on a huge page so that the kernel can use them throughout.
      const std::size_t slack = bytes >= kHugePage ? kHugePage : 0;
      void* memory = mmap(nullptr, bytes + slack, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
      if (memory == MAP_FAILED) return {};
      buffer->memory_ = memory;
      buffer->memoryBytes_ = bytes + slack;
      auto start = reinterpret_cast<std::uintptr_t>(memory);
      if (slack != 0) {
        start = (start + kHugePage - 1) / kHugePage * kHugePage;
        madvise(reinterpret_cast<void*>(start), bytes, MADV_HUGEPAGE);
      }
      for (std::size_t c = 0; c < channels; ++c)
        buffer->channels_[c] = reinterpret_cast<float*>(start + c * stride);
    }
    return buffer;
  } catch (const std::bad_alloc&) {
    return {};
  }
}

PCMBuffer::~PCMBuffer() {
  if (memory_ != nullptr) munmap(memory_, memoryBytes_);
}

void PCMBuffer::setFrameLength(std::uint32_t frames) {
  precondition(frames <= frameCapacity_, "frame length must not exceed the buffer's capacity");
  frameLength_ = frames;
}

void PCMBuffer::permuteChannels(const std::vector<std::uint32_t>& order,
                                std::optional<ChannelLayout> newLayout) {
  precondition(order.size() == channels_.size(), "a channel order must name every channel once");
  std::vector<float*> reordered(order.size(), nullptr);
  std::vector<bool> used(order.size(), false);
  for (std::size_t i = 0; i < order.size(); ++i) {
    precondition(order[i] < order.size() && !used[order[i]],
                 "a channel order must name every channel once");
    used[order[i]] = true;
    reordered[i] = channels_[order[i]];
  }
  channels_ = std::move(reordered);
  format_.layout = std::move(newLayout);
}

}  // namespace orvane
