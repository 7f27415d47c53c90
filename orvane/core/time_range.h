#pragma once

namespace orvane {

/// Seconds from `lowerBound` to `upperBound`, both included.
struct ClosedTimeRange {
  double lowerBound = 0;
  double upperBound = 0;

  bool operator==(const ClosedTimeRange&) const = default;
};

/// Seconds from `lowerBound` up to, but without, `upperBound`.
struct HalfOpenTimeRange {
  double lowerBound = 0;
  double upperBound = 0;

  bool operator==(const HalfOpenTimeRange&) const = default;
};

}  // namespace orvane
