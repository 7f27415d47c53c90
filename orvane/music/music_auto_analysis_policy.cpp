#include "orvane/music/music_auto_analysis_policy.h"

#include <cstddef>

namespace orvane {
namespace {

struct Names {
  std::string_view rawValue;
  std::string_view displayName;
};

/// In the order of the enumeration.
constexpr std::array<Names, 3> kNames = {
    {{"never", "Never"}, {"songs", "Songs"}, {"always", "Every file"}}};

}  // namespace

std::string_view rawValue(MusicAutoAnalysisPolicy policy) noexcept {
  return kNames[static_cast<std::size_t>(policy)].rawValue;
}

std::optional<MusicAutoAnalysisPolicy> musicAutoAnalysisPolicyFromRawValue(
    std::string_view text) noexcept {
  for (const auto policy : kAllMusicAutoAnalysisPolicies)
    if (rawValue(policy) == text) return policy;
  return std::nullopt;
}

std::string_view displayName(MusicAutoAnalysisPolicy policy) noexcept {
  return kNames[static_cast<std::size_t>(policy)].displayName;
}

bool shouldRun(MusicAutoAnalysisPolicy policy, double durationSeconds,
               double songLimitSeconds) noexcept {
  switch (policy) {
    case MusicAutoAnalysisPolicy::never:
      return false;
    case MusicAutoAnalysisPolicy::songs:
      return durationSeconds > 0 && durationSeconds <= songLimitSeconds;
    case MusicAutoAnalysisPolicy::always:
      return true;
  }
  return false;
}

std::optional<MusicAutoAnalysisPolicy> musicAutoAnalysisPolicyFromStored(
    std::string_view stored) noexcept {
  constexpr std::string_view kFormerSongs = "musicMode";
  if (stored == kFormerSongs) return MusicAutoAnalysisPolicy::songs;
  return musicAutoAnalysisPolicyFromRawValue(stored);
}

MusicAutoAnalysisPolicy resolveMusicAutoAnalysisPolicy(
    std::optional<std::string_view> stored) noexcept {
  if (!stored) return kDefaultMusicAutoAnalysisPolicy;
  return musicAutoAnalysisPolicyFromStored(*stored).value_or(kDefaultMusicAutoAnalysisPolicy);
}

}  // namespace orvane
