#include "orvane/music/music_section_loudness.h"

#include <algorithm>
#include <cmath>

#include "orvane/core/loudness/gated_loudness.h"
#include "orvane/music/stem_gated_loudness.h"

namespace orvane {
namespace {

using TimeSpan = MusicAnalysisResult::TimeSpan;
using Entry = MusicSectionLoudness::Entry;

std::optional<float> sectionLoudness(std::span<const double> blockPowers, double blockDuration,
                                     const TimeSpan& section) {
  const auto mask =
      StemGatedLoudness::presenceMask(blockPowers.size(), blockDuration, std::span(&section, 1));
  const auto include = [&mask](std::size_t block) -> bool { return mask[block]; };
  const auto count = core::GatedLoudness::gatedBlockCount(blockPowers, include);
  if (blockDuration * static_cast<double>(count) < MusicSectionLoudness::kMinimumSeconds)
    return std::nullopt;
  const double loudness = core::GatedLoudness::integratedLUFS(blockPowers, include);
  if (!std::isfinite(loudness)) return std::nullopt;
  return static_cast<float>(loudness);
}

std::optional<float> median(const std::vector<Entry>& entries) {
  std::vector<float> values;
  for (const Entry& entry : entries)
    if (entry.integratedLUFS) values.push_back(*entry.integratedLUFS);
  if (values.empty()) return std::nullopt;
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  if (values.size() % 2 == 1) return values[middle];
  return (values[middle - 1] + values[middle]) * 0.5F;
}

/// The first entry with a value that no other one precedes by `isBefore`.
template <typename Order>
const Entry* firstBy(const std::vector<Entry>& entries, Order isBefore) {
  const Entry* best = nullptr;
  for (const Entry& entry : entries) {
    if (!entry.integratedLUFS) continue;
    if (best == nullptr || isBefore(*entry.integratedLUFS, *best->integratedLUFS)) best = &entry;
  }
  return best;
}

}  // namespace

const Entry* MusicSectionLoudness::loudest() const noexcept {
  return firstBy(entries, [](float a, float b) { return a > b; });
}

const Entry* MusicSectionLoudness::quietest() const noexcept {
  return firstBy(entries, [](float a, float b) { return a < b; });
}

std::optional<MusicSectionLoudness> MusicSectionLoudness::compute(
    std::span<const double> blockPowers, double blockDuration, std::span<const TimeSpan> sections) {
  if (blockPowers.empty() || sections.empty()) return std::nullopt;
  MusicSectionLoudness result;
  for (const TimeSpan& section : sections)
    result.entries.push_back(
        {.index = static_cast<std::int64_t>(result.entries.size()),
         .span = section,
         .integratedLUFS = sectionLoudness(blockPowers, blockDuration, section)});
  result.medianLUFS = median(result.entries);
  for (Entry& entry : result.entries)
    if (entry.integratedLUFS) entry.deviationLU = *entry.integratedLUFS - *result.medianLUFS;
  return result;
}

}  // namespace orvane
