#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane {

/// Where an edit puts the frames of a file, for what names places in its audio.
struct ORVANE_API FrameFollower {
  /// Frames of the file that the result has.
  struct Stretch {
    std::int64_t first = 0;  ///< in the file
    std::int64_t count = 0;
    std::int64_t place = 0;  ///< of its first frame in the result

    bool operator==(const Stretch&) const = default;
  };

  std::int64_t oldFrameCount = 0;
  std::int64_t newFrameCount = 0;
  std::vector<Stretch> kept{};  ///< in the order of the file and of the result

  bool operator==(const FrameFollower&) const = default;

  bool movesNothing() const noexcept;

  /// Where a place comes to lie; absent when its audio was removed. The end of the audio stays the
  /// end, and what lies behind that keeps its distance.
  std::optional<std::int64_t> placeOf(std::int64_t frame) const noexcept;
  /// The same between frames. What is no place (not finite, below 0, from 2^53 on) stays as it is.
  std::optional<double> placeOf(double frame) const noexcept;

  /// Where what is left of the frames [first, end) ends; `first` itself has the place `start`.
  std::int64_t endOf(std::int64_t first, std::int64_t end, std::int64_t start) const noexcept;

  /// How many frames later than the file the result begins: below 0 when something new stands in
  /// front, 0 when nothing is kept.
  std::int64_t headFrames() const noexcept;

  /// The time of the first frame, in frames since midnight. One that would lie before midnight is
  /// midnight.
  std::uint64_t movedReference(std::uint64_t reference) const noexcept;
};

}  // namespace orvane
