#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <span>
#include <stdexcept>

namespace orvane::test {

/// Memory between two pages that must not be touched: a read or write outside of it stops the test.
class FencedBytes {
 public:
  explicit FencedBytes(std::size_t minimumSize) : page_(static_cast<std::size_t>(getpagesize())) {
    size_ = (minimumSize + page_ - 1) / page_ * page_;
    void* memory = mmap(nullptr, size_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::runtime_error("no memory for a fenced block");
    start_ = static_cast<std::byte*>(memory) + page_;
    if (mprotect(start_, size_, PROT_READ | PROT_WRITE) != 0)
      throw std::runtime_error("cannot open a fenced block");
  }
  ~FencedBytes() { munmap(start_ - page_, size_ + 2 * page_); }
  FencedBytes(const FencedBytes&) = delete;
  FencedBytes& operator=(const FencedBytes&) = delete;

  std::span<std::byte> all() const { return {start_, size_}; }
  /// The first `count` bytes: nothing may be read before them.
  std::span<std::byte> first(std::size_t count) const { return all().first(count); }
  /// The last `count` bytes: nothing may be read behind them.
  std::span<std::byte> last(std::size_t count) const { return all().last(count); }

 private:
  std::size_t page_;
  std::size_t size_ = 0;
  std::byte* start_ = nullptr;
};

}  // namespace orvane::test
