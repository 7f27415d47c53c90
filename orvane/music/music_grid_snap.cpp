#include "orvane/music/music_grid_snap.h"

#include <algorithm>
#include <cstddef>

namespace orvane::MusicGridSnap {
namespace {

struct Names {
  std::string_view rawValue;
  std::string_view displayName;
};

/// In the order of the enumeration.
constexpr std::array<Names, 3> kNames = {{{"off", "Off"}, {"beat", "Beat"}, {"bar", "Bar"}}};

/// The upper end of a selection that has collapsed onto `lower`.
double widened(double lower, double unsnappedUpper, std::span<const double> grid, double duration) {
  constexpr double kLeastLength = 0.001;  // seconds
  const auto next = std::upper_bound(grid.begin(), grid.end(), lower);
  if (next != grid.end()) return *next;
  return unsnappedUpper > lower ? unsnappedUpper : std::min(lower + kLeastLength, duration);
}

}  // namespace

std::string_view rawValue(Mode mode) noexcept {
  return kNames[static_cast<std::size_t>(mode)].rawValue;
}

std::optional<Mode> modeFromRawValue(std::string_view text) noexcept {
  for (const Mode mode : kAllModes)
    if (rawValue(mode) == text) return mode;
  return std::nullopt;
}

std::string_view displayName(Mode mode) noexcept {
  return kNames[static_cast<std::size_t>(mode)].displayName;
}

std::optional<double> nearest(double t, std::span<const double> grid) {
  if (grid.empty()) return std::nullopt;
  const auto after = std::lower_bound(grid.begin(), grid.end(), t);
  if (after == grid.begin()) return grid.front();
  if (after == grid.end()) return grid.back();
  const double before = *(after - 1);
  return t - before <= *after - t ? before : *after;
}

ClosedTimeRange snapSelection(const ClosedTimeRange& range, std::span<const double> grid,
                              double duration) {
  if (grid.empty()) return range;
  const double lower = range.lowerBound == 0 ? 0 : *nearest(range.lowerBound, grid);
  double upper = range.upperBound >= duration ? range.upperBound : *nearest(range.upperBound, grid);
  if (!(upper > lower)) upper = widened(lower, range.upperBound, grid, duration);
  return {.lowerBound = lower, .upperBound = std::max(lower, upper)};
}

}  // namespace orvane::MusicGridSnap
