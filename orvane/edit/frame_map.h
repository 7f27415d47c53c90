#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "orvane/edit/frame_range.h"
#include "orvane/platform/export.h"

namespace orvane {

/// Where an edit puts the frames of a programme: markers follow it, and so do the samples where an
/// edit moves them.
struct ORVANE_API FrameMap {
  /// A stretch that keeps its order.
  struct Piece {
    std::int64_t sourceFirst = 0;
    std::int64_t count = 0;
    std::int64_t place = 0;  ///< of its first frame in the result

    bool operator==(const Piece&) const = default;
  };

  /// In the order of the source and of the result. Where two overlap in the result the first is
  /// faded into the second; what none covers is silence.
  std::vector<Piece> pieces{};
  std::int64_t frameCount = 0;  ///< of the result

  bool operator==(const FrameMap&) const = default;

  /// Of an edit that moves nothing.
  static FrameMap identity(std::int64_t frameCount);

  /// Where a frame of the source is in the result; absent when it was removed.
  std::optional<std::int64_t> placeOf(std::int64_t sourceFrame) const noexcept;

  /// Where the frames of a range are in the result, those of each piece on their own.
  std::vector<FrameRange> placesOf(const FrameRange& sourceFrames) const;

  /// Where the frames are after `next` was done to the result. Samples take both steps, one after
  /// the other, since the second edit may cut into a crossfade of the first.
  FrameMap then(const FrameMap& next) const;
};

}  // namespace orvane
