#pragma once

#include <cstddef>
#include <cstdint>

#include "orvane/platform/export.h"

namespace orvane {

/// All samples as 32-bit integers with full scale at 2³¹, joined by "or": the lowest bit that is
/// set is the lowest one that any sample makes use of. Exact for what was an integer of up to 24
/// bits; what lies beyond full scale counts as full scale, NaN as anything.
ORVANE_API std::uint32_t usedBits(const float* samples, std::size_t count) noexcept;

}  // namespace orvane
