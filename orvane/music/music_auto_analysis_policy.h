#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "orvane/platform/export.h"

namespace orvane {

/// Which files the user wants analysed without asking. Has a JSON form.
enum class ORVANE_API MusicAutoAnalysisPolicy { never, songs, always };

inline constexpr std::array kAllMusicAutoAnalysisPolicies = {MusicAutoAnalysisPolicy::never,
                                                             MusicAutoAnalysisPolicy::songs,
                                                             MusicAutoAnalysisPolicy::always};
inline constexpr auto kDefaultMusicAutoAnalysisPolicy = MusicAutoAnalysisPolicy::songs;
/// What lasts longer is no song: a quarter of an hour.
inline constexpr double kDefaultSongLimitSeconds = 900;

/// "never", "songs", "always".
ORVANE_API std::string_view rawValue(MusicAutoAnalysisPolicy policy) noexcept;
ORVANE_API std::optional<MusicAutoAnalysisPolicy> musicAutoAnalysisPolicyFromRawValue(
    std::string_view text) noexcept;
/// "Never", "Songs", "Every file".
ORVANE_API std::string_view displayName(MusicAutoAnalysisPolicy policy) noexcept;

/// Whether a file of that length is analysed; songs are above 0 seconds and not above the limit.
ORVANE_API bool shouldRun(MusicAutoAnalysisPolicy policy, double durationSeconds,
                          double songLimitSeconds = kDefaultSongLimitSeconds) noexcept;

/// A stored setting: a raw value, or "musicMode" of earlier versions for songs. Absent for anything
/// else.
ORVANE_API std::optional<MusicAutoAnalysisPolicy> musicAutoAnalysisPolicyFromStored(
    std::string_view stored) noexcept;
/// The same with the default policy for what is absent or unknown.
ORVANE_API MusicAutoAnalysisPolicy
resolveMusicAutoAnalysisPolicy(std::optional<std::string_view> stored) noexcept;

}  // namespace orvane
