#include "orvane/core/loudness/gated_loudness.h"

#include <vector>

#include "orvane/core/loudness/k_weighting.h"
#include "orvane/core/loudness/loudness_gating.h"

namespace orvane::core::GatedLoudness {
namespace {

std::vector<double> admitted(std::span<const double> blockPowers, const Include& include) {
  std::vector<double> powers;
  for (std::size_t block = 0; block < blockPowers.size(); ++block)
    if (include(block)) powers.push_back(blockPowers[block]);
  return powers;
}

}  // namespace

std::size_t gatedBlockCount(std::span<const double> blockPowers, const Include& include) {
  return LoudnessGating::gatedBlockCount(admitted(blockPowers, include));
}

double integratedLUFS(std::span<const double> blockPowers, const Include& include) {
  return loudnessOfPower(LoudnessGating::gatedPower(admitted(blockPowers, include)));
}

}  // namespace orvane::core::GatedLoudness
