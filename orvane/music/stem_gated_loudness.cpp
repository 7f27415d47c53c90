#include "orvane/music/stem_gated_loudness.h"

#include <algorithm>
#include <cmath>

#include "orvane/core/loudness/gated_loudness.h"

namespace orvane {
namespace {

using TimeSpan = MusicAnalysisResult::TimeSpan;

/// One side of the split: the blocks with that flag.
struct Part {
  double seconds = 0;
  std::optional<float> loudness{};
};

Part measure(std::span<const double> blockPowers, double blockDuration,
             const std::vector<bool>& mask, bool flag) {
  const auto include = [&mask, flag](std::size_t block) { return mask[block] == flag; };
  const auto count = core::GatedLoudness::gatedBlockCount(blockPowers, include);
  Part part{.seconds = blockDuration * static_cast<double>(count)};
  if (part.seconds >= StemGatedLoudness::kMinimumSeconds)
    part.loudness = static_cast<float>(core::GatedLoudness::integratedLUFS(blockPowers, include));
  return part;
}

std::span<const TimeSpan> rangesOf(const MusicAnalysisResult& analysis,
                                   MusicAnalysisResult::Stem stem) {
  const auto* lane = analysis.lane(stem);
  return lane == nullptr ? std::span<const TimeSpan>() : lane->ranges;
}

}  // namespace

std::vector<bool> StemGatedLoudness::presenceMask(std::size_t blockCount, double blockDuration,
                                                  std::span<const TimeSpan> ranges) {
  std::vector<TimeSpan> sorted(ranges.begin(), ranges.end());
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const TimeSpan& a, const TimeSpan& b) { return a.start < b.start; });
  std::vector<bool> mask(blockCount, false);
  auto cursor = sorted.begin();
  for (std::size_t block = 0; block < blockCount; ++block) {
    const double centre = blockDuration * (static_cast<double>(block) + 0.5);
    while (cursor != sorted.end() && cursor->end <= centre) ++cursor;
    if (cursor == sorted.end()) break;
    mask[block] = cursor->contains(centre);
  }
  return mask;
}

StemGatedLoudness::Pair StemGatedLoudness::pair(std::span<const double> blockPowers,
                                                double blockDuration,
                                                std::span<const TimeSpan> ranges) {
  const auto mask = presenceMask(blockPowers.size(), blockDuration, ranges);
  const Part present = measure(blockPowers, blockDuration, mask, true);
  const Part absent = measure(blockPowers, blockDuration, mask, false);
  Pair result{.presentLUFS = present.loudness,
              .absentLUFS = absent.loudness,
              .presentSeconds = present.seconds,
              .absentSeconds = absent.seconds};
  const auto isFinite = [](std::optional<float> level) { return level && std::isfinite(*level); };
  if (isFinite(present.loudness) && isFinite(absent.loudness))
    result.balanceLU = *present.loudness - *absent.loudness;
  return result;
}

std::optional<StemGatedLoudness> StemGatedLoudness::compute(std::span<const double> blockPowers,
                                                            double blockDuration,
                                                            const MusicAnalysisResult& analysis) {
  if (blockPowers.empty() || analysis.stems.empty()) return std::nullopt;
  using Stem = MusicAnalysisResult::Stem;
  return StemGatedLoudness{
      .vocal = pair(blockPowers, blockDuration, rangesOf(analysis, Stem::vocal)),
      .drums = pair(blockPowers, blockDuration, rangesOf(analysis, Stem::drum)),
      .source = kSource};
}

}  // namespace orvane
