#pragma once

#include <cstdint>

#include "orvane/core/generator/reproducible_math.h"

namespace orvane::core {

/// A band-limited train of clicks: a constant and the cosines 1 … `partialCount` in equal shares
/// (the Dirichlet kernel), 1 at phase 0.
double clickAt(ReproducibleMath::Phase phase, std::uint64_t partialCount) noexcept;

}  // namespace orvane::core
