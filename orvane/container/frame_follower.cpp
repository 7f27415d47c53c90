#include "orvane/container/frame_follower.h"

#include <algorithm>
#include <cmath>

namespace orvane {

bool FrameFollower::movesNothing() const noexcept {
  std::int64_t end = 0;
  for (const Stretch& stretch : kept) {
    if (stretch.first != end || stretch.place != end) return false;
    end += stretch.count;
  }
  return end == oldFrameCount && end == newFrameCount;
}

std::optional<std::int64_t> FrameFollower::placeOf(std::int64_t frame) const noexcept {
  if (frame >= oldFrameCount) return frame - oldFrameCount + newFrameCount;
  for (const Stretch& stretch : kept) {
    const std::int64_t offset = frame - stretch.first;
    if (offset >= 0 && offset < stretch.count) return stretch.place + offset;
  }
  return std::nullopt;
}

std::optional<double> FrameFollower::placeOf(double frame) const noexcept {
  if (!(frame >= 0 && frame < 0x1p53)) return frame;
  const double whole = std::floor(frame);
  const auto place = placeOf(static_cast<std::int64_t>(whole));
  if (!place) return std::nullopt;
  return static_cast<double>(*place) + (frame - whole);
}

std::int64_t FrameFollower::endOf(std::int64_t first, std::int64_t end,
                                  std::int64_t start) const noexcept {
  std::int64_t place = start;
  for (const Stretch& stretch : kept) {
    const std::int64_t last = std::min(end, stretch.first + stretch.count);
    if (std::max(first, stretch.first) < last)
      place = std::max(place, stretch.place + last - stretch.first);
  }
  return place + std::max<std::int64_t>(0, end - std::max(first, oldFrameCount));
}

std::int64_t FrameFollower::headFrames() const noexcept {
  return kept.empty() ? 0 : kept.front().first - kept.front().place;
}

std::uint64_t FrameFollower::movedReference(std::uint64_t reference) const noexcept {
  const std::int64_t head = headFrames();
  const auto frames = static_cast<std::uint64_t>(head < 0 ? -head : head);
  return head < 0 ? reference - std::min(frames, reference)
                  : std::max(reference + frames, reference);
}

}  // namespace orvane
