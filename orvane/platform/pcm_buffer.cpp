#include "orvane/platform/pcm_buffer.h"

#include <sys/mman.h>

#include <cstdint>
#include <limits>
#include <mutex>
#include <new>
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

// A mapping instead of the heap: refused cleanly when too large, given back at once when freed.
// Huge ones start on a huge page so that the kernel can use these throughout.
std::optional<PCMBuffer::Mapping> PCMBuffer::Mapping::make(std::size_t bytes) noexcept {
  Mapping mapping;
  if (bytes == 0) return mapping;
  const std::size_t slack = bytes >= kHugePage ? kHugePage : 0;
  void* const pages =
      mmap(nullptr, bytes + slack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) return std::nullopt;
  mapping.pages_ = pages;
  mapping.pageBytes_ = bytes + slack;
  auto start = reinterpret_cast<std::uintptr_t>(pages);
  if (slack != 0) start = (start + kHugePage - 1) / kHugePage * kHugePage;
  mapping.start_ = reinterpret_cast<std::byte*>(start);
  mapping.bytes_ = bytes;
  if (slack != 0) madvise(mapping.start_, bytes, MADV_HUGEPAGE);
  return mapping;
}

PCMBuffer::Mapping::~Mapping() {
  if (pages_ != nullptr) munmap(pages_, pageBytes_);
}

void PCMBuffer::Mapping::swap(Mapping& other) noexcept {
  std::swap(pages_, other.pages_);
  std::swap(pageBytes_, other.pageBytes_);
  std::swap(start_, other.start_);
  std::swap(bytes_, other.bytes_);
}

std::optional<std::size_t> PCMBuffer::bytesFor(std::size_t channels,
                                               std::uint32_t frames) noexcept {
  const std::size_t stride = channelStride(frames);
  if (channels != 0 && stride > std::numeric_limits<std::size_t>::max() / 2 / channels) return {};
  return stride * channels;
}

std::unique_ptr<PCMBuffer> PCMBuffer::makeIn(Mapping memory, const AudioFormat& format,
                                             std::uint32_t frameCapacity) {
  std::unique_ptr<PCMBuffer> buffer(new PCMBuffer);
  buffer->format_ = format;
  buffer->frameCapacity_ = frameCapacity;
  for (std::size_t c = 0; c < format.channelCount; ++c)
    buffer->channels_.push_back(
        reinterpret_cast<float*>(memory.start() + c * channelStride(frameCapacity)));
  buffer->memory_ = std::move(memory);
  return buffer;
}

std::shared_ptr<PCMBuffer> PCMBuffer::make(const AudioFormat& format,
                                           std::uint32_t frameCapacity) noexcept {
  try {
    const auto bytes = bytesFor(format.channelCount, frameCapacity);
    auto memory = bytes ? Mapping::make(*bytes) : std::nullopt;
    return memory ? makeIn(*std::move(memory), format, frameCapacity) : nullptr;
  } catch (const std::bad_alloc&) {
    return {};
  }
}

PCMBuffer::~PCMBuffer() = default;

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

struct PCMBufferPool::Unused {
  /// The smallest one that is large enough; else one that is no longer kept, because it was not.
  std::optional<PCMBuffer::Mapping> take(std::size_t bytes) noexcept {
    const std::lock_guard lock(mutex);
    auto best = memory.end();
    for (auto each = memory.begin(); each != memory.end(); ++each)
      if (each->bytes() >= bytes && (best == memory.end() || each->bytes() < best->bytes()))
        best = each;
    if (best == memory.end()) {
      if (!memory.empty()) memory.pop_back();
      return std::nullopt;
    }
    auto taken = std::move(*best);
    memory.erase(best);
    return taken;
  }

  void give(PCMBuffer::Mapping mapping) noexcept {
    try {
      const std::lock_guard lock(mutex);
      memory.push_back(std::move(mapping));
    } catch (const std::bad_alloc&) {
      // Then it goes back to the system.
    }
  }

  std::mutex mutex{};
  std::vector<PCMBuffer::Mapping> memory{};
};

PCMBufferPool::PCMBufferPool() : unused_(std::make_shared<Unused>()) {}
PCMBufferPool::~PCMBufferPool() = default;

std::shared_ptr<PCMBuffer> PCMBufferPool::make(const AudioFormat& format,
                                               std::uint32_t frameCapacity) noexcept {
  try {
    const auto bytes = PCMBuffer::bytesFor(format.channelCount, frameCapacity);
    if (!bytes) return {};
    auto memory = unused_->take(*bytes);
    if (!memory) memory = PCMBuffer::Mapping::make(*bytes);
    if (!memory) return {};
    const auto giveBack = [unused = unused_](PCMBuffer* buffer) noexcept {
      unused->give(std::move(buffer->memory_));
      delete buffer;
    };
    return {PCMBuffer::makeIn(*std::move(memory), format, frameCapacity).release(), giveBack};
  } catch (const std::bad_alloc&) {
    return {};
  }
}

}  // namespace orvane
