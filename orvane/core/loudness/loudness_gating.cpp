#include "orvane/core/loudness/loudness_gating.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "orvane/core/loudness/k_weighting.h"

namespace orvane::core {
namespace {

/// A power ratio of as many LU.
double ratioOfLU(double lu) {
  return std::pow(10.0, lu / 10.0);
}

struct Gated {
  double power = 0;
  std::size_t count = 0;
};

/// Mean of the blocks strictly above `gate`.
Gated meanAbove(std::span<const double> powers, double gate) {
  double sum = 0;
  std::size_t count = 0;
  for (const double power : powers)
    if (power > gate) {
      sum += power;
      ++count;
    }
  return {count > 0 ? sum / static_cast<double>(count) : 0.0, count};
}

Gated gated(std::span<const double> blockPowers) {
  const double absoluteGate = powerOfLoudness(LoudnessGating::kAbsoluteGateLUFS);
  const Gated absolute = meanAbove(blockPowers, absoluteGate);
  if (absolute.count == 0) return {};
  const double relativeGate = absolute.power * ratioOfLU(LoudnessGating::kRelativeGateLU);
  return meanAbove(blockPowers, std::max(absoluteGate, relativeGate));
}

/// Sums and counts of values by rank, each prefix in O(log n) (a binary indexed tree).
class RankedSums {
 public:
  explicit RankedSums(std::size_t count) : sums_(count + 1, 0.0), counts_(count + 1, 0) {}

  void insert(std::size_t rank, double value) {
    for (std::size_t i = rank + 1; i < sums_.size(); i += i & (~i + 1)) {
      sums_[i] += value;
      ++counts_[i];
    }
  }

  /// Mean of all inserted values with this rank or a higher one. Values are ranked from the
  /// greatest down, so that this is a prefix and no difference of sums is formed.
  Gated meanOfFirst(std::size_t ranks) const {
    double sum = 0;
    std::size_t count = 0;
    for (std::size_t i = ranks; i > 0; i &= i - 1) {
      sum += sums_[i];
      count += counts_[i];
    }
    return {count > 0 ? sum / static_cast<double>(count) : 0.0, count};
  }

 private:
  std::vector<double> sums_;
  std::vector<std::size_t> counts_;
};

}  // namespace

double LoudnessGating::gatedPower(std::span<const double> blockPowers) {
  return gated(blockPowers).power;
}

std::size_t LoudnessGating::gatedBlockCount(std::span<const double> blockPowers) {
  return gated(blockPowers).count;
}

std::vector<double> LoudnessGating::runningGatedPowers(std::span<const double> blockPowers) {
  const double absoluteGate = powerOfLoudness(kAbsoluteGateLUFS);
  const double relativeRatio = ratioOfLU(kRelativeGateLU);

  std::vector<std::size_t> byPower(blockPowers.size());
  std::iota(byPower.begin(), byPower.end(), std::size_t{0});
  std::sort(byPower.begin(), byPower.end(), [&](std::size_t a, std::size_t b) {
    return blockPowers[a] > blockPowers[b] || (blockPowers[a] == blockPowers[b] && a < b);
  });
  std::vector<double> descending(blockPowers.size());
  std::vector<std::size_t> rankOf(blockPowers.size());
  for (std::size_t rank = 0; rank < byPower.size(); ++rank) {
    descending[rank] = blockPowers[byPower[rank]];
    rankOf[byPower[rank]] = rank;
  }
  /// How many of all powers lie strictly above a gate: a prefix of the ranks.
  const auto ranksAbove = [&](double gate) {
    return static_cast<std::size_t>(
        std::partition_point(descending.begin(), descending.end(),
                             [gate](double power) { return power > gate; }) -
        descending.begin());
  };

  RankedSums inserted(blockPowers.size());
  const std::size_t aboveAbsolute = ranksAbove(absoluteGate);
  std::vector<double> running;
  running.reserve(blockPowers.size());
  for (std::size_t block = 0; block < blockPowers.size(); ++block) {
    inserted.insert(rankOf[block], blockPowers[block]);
    const Gated absolute = inserted.meanOfFirst(aboveAbsolute);
    const double gate = std::max(absoluteGate, absolute.power * relativeRatio);
    running.push_back(inserted.meanOfFirst(ranksAbove(gate)).power);
  }
  return running;
}

double loudnessRangeOfPowers(std::span<const double> shortTermPowers) {
  // EBU Tech 3342 v4: the gate below the mean, and what is cut at both ends.
  constexpr double kRelativeGateLU = -20.0;
  constexpr double kLowPercentile = 0.10;
  constexpr double kHighPercentile = 0.95;
  const double absoluteGate = powerOfLoudness(LoudnessGating::kAbsoluteGateLUFS);

  std::vector<double> kept;
  double sum = 0;
  for (const double power : shortTermPowers)
    if (power >= absoluteGate) {
      kept.push_back(power);
      sum += power;
    }
  if (kept.empty()) return 0.0;
  const double relativeGate = sum / static_cast<double>(kept.size()) * ratioOfLU(kRelativeGateLU);
  std::erase_if(kept, [relativeGate](double power) { return power < relativeGate; });
  if (kept.empty()) return 0.0;

  // The nearest rank, halves upwards.
  const auto percentile = [&kept](double share) {
    const auto rank =
        static_cast<std::ptrdiff_t>(std::floor(static_cast<double>(kept.size() - 1) * share + 0.5));
    std::nth_element(kept.begin(), kept.begin() + rank, kept.end());
    return kept[static_cast<std::size_t>(rank)];
  };
  const double high = percentile(kHighPercentile);
  const double low = percentile(kLowPercentile);
  return loudnessOfPower(high) - loudnessOfPower(low);
}

}  // namespace orvane::core
