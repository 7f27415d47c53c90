#pragma once

#include <cstdint>
#include <optional>

#include "orvane/platform/export.h"
#include "orvane/platform/planar_view.h"

/// Finds out by how many frames one rendering of a programme is late.
namespace orvane::AlignmentSearch {

/// How far is searched, either way; at rates above 524,288 Hz less, to bound the memory.
inline constexpr double kReachSeconds = 2;

struct Offset {
  std::int64_t frames = 0;  ///< by which B is later than A; negative: earlier
  double correlation = 0;   ///< of A and B thus moved, 0 … 1, without regard to gain

  bool operator==(const Offset&) const = default;
};

/// The offset at which B is most alike to A's loudest seconds, by normalised cross-correlation of
/// the differences of neighbouring samples. Absent where they are alike at none, or where moving B
/// would not make the null by 6 dB deeper, and of audio below 1024 frames. Both have the same
/// channels; samples that are not finite count as 0.
ORVANE_API std::optional<Offset> find(PlanarView a, PlanarView b, double sampleRate);

}  // namespace orvane::AlignmentSearch
