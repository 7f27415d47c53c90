#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

#include "orvane/core/time_range.h"
#include "orvane/platform/export.h"

/// Moves times to the beats or the bars of a piece. A grid is its times in seconds, ascending;
/// which one is meant by a mode is the caller's choice.
namespace orvane::MusicGridSnap {

/// Has a JSON form.
enum class ORVANE_API Mode { off, beat, bar };
inline constexpr std::array kAllModes = {Mode::off, Mode::beat, Mode::bar};

/// "off", "beat", "bar".
ORVANE_API std::string_view rawValue(Mode mode) noexcept;
ORVANE_API std::optional<Mode> modeFromRawValue(std::string_view text) noexcept;
/// "Off", "Beat", "Bar".
ORVANE_API std::string_view displayName(Mode mode) noexcept;

/// The time of the grid that is nearest to `t`, the earlier of two as near. Absent for an empty
/// grid.
ORVANE_API std::optional<double> nearest(double t, std::span<const double> grid);

/// The selection with its ends on the grid; an end that is the file's own stays where it is. What
/// would collapse reaches to the next time of the grid, or keeps what it can of its length.
ORVANE_API ClosedTimeRange snapSelection(const ClosedTimeRange& range, std::span<const double> grid,
                                         double duration);

}  // namespace orvane::MusicGridSnap
