#include "orvane/speech/dialogue/dialogue_region.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <utility>

#include "orvane/platform/precondition.h"

namespace orvane {
namespace {

constexpr std::array kSourceNames{
    std::pair{DialogueRegionSource::silero, std::string_view("silero")},
    std::pair{DialogueRegionSource::userEdited, std::string_view("user-edited")},
    std::pair{DialogueRegionSource::imported, std::string_view("imported")}};

void requireFinite(double value) {
  precondition(std::isfinite(value), "a time that becomes a block index is finite");
}

/// For values known to be at least 0: far beyond any index, the largest one will do.
std::int64_t clampedIndex(double value) {
  constexpr double kLimit = 9223372036854775807.0;  // 2^63 as a double
  return value >= kLimit ? INT64_MAX : static_cast<std::int64_t>(value);
}

}  // namespace

DialogueRegion::DialogueRegion(const UUID& regionId, double regionStart, double regionEnd,
                               std::optional<std::string> regionLabel,
                               std::optional<ClosedTimeRange> regionOrigin)
    : id(regionId),
      start(std::min(regionStart, regionEnd)),
      end(std::max(regionStart, regionEnd)),
      label(std::move(regionLabel)),
      vadOrigin(regionOrigin) {}

bool DialogueRegion::isPristineVAD() const noexcept {
  return vadOrigin && std::abs(vadOrigin->lowerBound - start) < pristineTolerance &&
         std::abs(vadOrigin->upperBound - end) < pristineTolerance;
}

std::optional<DialogueRegion::BlockRange> DialogueRegion::blockRange(
    double length, std::int64_t totalBlocks) const {
  requireFinite(start);
  requireFinite(end);
  precondition(std::isfinite(length) && length > 0, "a block has a length");
  // Bounded before they become integers: a file may hold any finite time.
  const double first = std::max(0.0, std::floor(start / length));
  const double last =
      std::min(std::ceil(end / length) - 1.0, static_cast<double>(totalBlocks) - 1.0);
  if (last < first) return std::nullopt;
  return BlockRange{.lowerBound = clampedIndex(first),
                    .upperBound = std::min(clampedIndex(last), totalBlocks - 1)};
}

std::vector<bool> DialogueRegion::toHistory(const std::vector<DialogueRegion>& regions,
                                            std::int64_t totalBlocks, double length) {
  if (totalBlocks < 1) return {};
  std::vector<bool> history(static_cast<std::size_t>(totalBlocks), false);
  for (const auto& region : regions) {
    const auto range = region.blockRange(length, totalBlocks);
    if (!range) continue;
    std::fill(history.begin() + range->lowerBound, history.begin() + range->upperBound + 1, true);
  }
  return history;
}

std::vector<DialogueRegion> DialogueRegion::fromHistory(const std::vector<bool>& history,
                                                        double length) {
  std::vector<DialogueRegion> regions;
  auto position = history.begin();
  while (true) {
    const auto first = std::find(position, history.end(), true);
    if (first == history.end()) return regions;
    position = std::find(first, history.end(), false);
    const double start = length * static_cast<double>(first - history.begin());
    const double end = length * static_cast<double>(position - history.begin());
    regions.emplace_back(UUID::random(), start, end, std::nullopt,
                         ClosedTimeRange{.lowerBound = start, .upperBound = end});
  }
}

std::optional<std::vector<bool>> DialogueRegion::sliceHistory(const std::vector<bool>& history,
                                                              std::int64_t startFrame,
                                                              std::int64_t frameCount,
                                                              double sampleRate, double length) {
  if (history.empty() || frameCount < 1 || sampleRate <= 0) return std::nullopt;
  requireFinite(sampleRate * length);
  const double framesPerBlock = std::max(1.0, std::round(sampleRate * length));
  const double count = static_cast<double>(history.size());
  const double firstBlock =
      std::round(static_cast<double>(std::max<std::int64_t>(startFrame, 0)) / framesPerBlock);
  if (firstBlock >= count) return std::nullopt;
  const double blocks = std::max(1.0, std::ceil(static_cast<double>(frameCount) / framesPerBlock));
  const double endBlock = std::min(firstBlock + blocks, count);
  return std::vector<bool>(history.begin() + static_cast<std::ptrdiff_t>(firstBlock),
                           history.begin() + static_cast<std::ptrdiff_t>(endBlock));
}

std::string_view rawValue(DialogueRegionSource source) {
  const auto* const found = std::find_if(kSourceNames.begin(), kSourceNames.end(),
                                         [&](const auto& entry) { return entry.first == source; });
  precondition(found != kSourceNames.end(), "a dialogue region source is one of its cases");
  return found->second;
}

std::optional<DialogueRegionSource> dialogueRegionSourceFromRawValue(
    std::string_view rawValue) noexcept {
  for (const auto& [source, name] : kSourceNames)
    if (name == rawValue) return source;
  return std::nullopt;
}

}  // namespace orvane

std::size_t std::hash<orvane::DialogueRegion>::operator()(
    const orvane::DialogueRegion& region) const noexcept {
  std::size_t result = std::hash<orvane::UUID>{}(region.id);
  const auto mix = [&](std::size_t value) {
    constexpr std::size_t kGoldenRatio = 0x9E3779B97F4A7C15U;  // spreads equal fields apart
    result ^= value + kGoldenRatio + (result << 6U) + (result >> 2U);
  };
  mix(std::hash<double>{}(region.start));
  mix(std::hash<double>{}(region.end));
  mix(std::hash<std::optional<std::string>>{}(region.label));
  mix(region.vadOrigin ? 1U : 0U);
  if (region.vadOrigin) {
    mix(std::hash<double>{}(region.vadOrigin->lowerBound));
    mix(std::hash<double>{}(region.vadOrigin->upperBound));
  }
  return result;
}
