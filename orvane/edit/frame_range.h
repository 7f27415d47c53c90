#pragma once

#include <algorithm>
#include <cstdint>

namespace orvane {

/// The frames [start, end) of a programme.
struct FrameRange {
  std::int64_t start = 0;
  std::int64_t end = 0;

  bool operator==(const FrameRange&) const = default;

  bool isEmpty() const noexcept { return end <= start; }
  std::int64_t length() const noexcept { return isEmpty() ? 0 : end - start; }

  /// What of it lies in `other`.
  FrameRange within(const FrameRange& other) const noexcept {
    return {std::max(start, other.start), std::min(end, other.end)};
  }
  /// What of it a programme of so many frames has.
  FrameRange clamped(std::int64_t frameCount) const noexcept { return within({0, frameCount}); }
};

}  // namespace orvane
