#include "orvane/core/targets/loudness_target.h"

#include <algorithm>
#include <array>
#include <utility>

namespace orvane::core {
namespace {

template <typename Value, std::size_t count>
using Names = std::array<std::pair<Value, std::string_view>, count>;

constexpr Names<LoudnessTargetMode, 4> kModeNames = {
    {{LoudnessTargetMode::music, "music"},
     {LoudnessTargetMode::podcast, "podcast"},
     {LoudnessTargetMode::vod, "vod"},
     {LoudnessTargetMode::broadcast, "broadcast"}}};

constexpr Names<LoudnessTargetSource, 3> kSourceNames = {
    {{LoudnessTargetSource::integrated, "integrated"},
     {LoudnessTargetSource::dialogGated, "dialogGated"},
     {LoudnessTargetSource::rms, "rms"}}};

constexpr Names<LoudnessTargetSource, 3> kUnits = {{{LoudnessTargetSource::integrated, "LUFS"},
                                                    {LoudnessTargetSource::dialogGated, "LKFS"},
                                                    {LoudnessTargetSource::rms, "dB RMS"}}};

constexpr Names<BoostBehaviour, 2> kBoostNames = {
    {{BoostBehaviour::symmetric, "symmetric"}, {BoostBehaviour::turnsDownOnly, "turnsDownOnly"}}};

template <typename Value, std::size_t count>
std::string_view nameOf(const Names<Value, count>& names, Value value) noexcept {
  for (const auto& [candidate, name] : names)
    if (candidate == value) return name;
  return {};
}

template <typename Value, std::size_t count>
std::optional<Value> valueOf(const Names<Value, count>& names, std::string_view text) noexcept {
  for (const auto& [value, name] : names)
    if (name == text) return value;
  return std::nullopt;
}

}  // namespace

std::string_view rawValue(LoudnessTargetMode mode) noexcept {
  return nameOf(kModeNames, mode);
}
std::optional<LoudnessTargetMode> loudnessTargetModeFromRawValue(std::string_view text) noexcept {
  return valueOf(kModeNames, text);
}

std::string_view rawValue(LoudnessTargetSource source) noexcept {
  return nameOf(kSourceNames, source);
}
std::optional<LoudnessTargetSource> loudnessTargetSourceFromRawValue(
    std::string_view text) noexcept {
  return valueOf(kSourceNames, text);
}
std::string_view unitText(LoudnessTargetSource source) noexcept {
  return nameOf(kUnits, source);
}

std::string_view rawValue(BoostBehaviour behaviour) noexcept {
  return nameOf(kBoostNames, behaviour);
}
std::optional<BoostBehaviour> boostBehaviourFromRawValue(std::string_view text) noexcept {
  return valueOf(kBoostNames, text);
}

std::optional<LoudnessTarget> LoudnessTargetSelection::target(std::string_view id) const {
  const auto found = std::ranges::find(houseTargets, id, &LoudnessTarget::id);
  return found != houseTargets.end() ? std::optional(*found) : LoudnessTargetCatalog::target(id);
}

std::vector<LoudnessTarget> LoudnessTargetSelection::activeTargets() const {
  std::vector<LoudnessTarget> active;
  for (const auto* candidates : {&LoudnessTargetCatalog::all(), &houseTargets}) {
    for (const LoudnessTarget& candidate : *candidates) {
      if (active.size() == kMaximumActiveTargets) return active;
      const bool isChosen = targetIDs
                                ? std::ranges::find(*targetIDs, candidate.id) != targetIDs->end()
                                : candidate.mode == mode;
      if (isChosen) active.push_back(candidate);
    }
  }
  return active;
}

}  // namespace orvane::core
