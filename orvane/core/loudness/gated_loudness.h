#pragma once

#include <cstddef>
#include <functional>
#include <span>

#include "orvane/platform/export.h"

/// Gated loudness of a choice of gating blocks.
namespace orvane::core::GatedLoudness {

/// Whether the block of that index is admitted.
using Include = std::function<bool(std::size_t)>;

/// How many admitted blocks survive the absolute and the relative gate of BS.1770-5, Annex 1, both
/// applied to the admitted blocks alone.
ORVANE_API std::size_t gatedBlockCount(std::span<const double> blockPowers, const Include& include);

/// Integrated loudness over the same blocks, in LUFS; minus infinity when none survives.
ORVANE_API double integratedLUFS(std::span<const double> blockPowers, const Include& include);

}  // namespace orvane::core::GatedLoudness
