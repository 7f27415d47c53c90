#pragma once

#include <optional>
#include <string_view>

#include "orvane/platform/export.h"

namespace orvane {

/// The seconds that people write as "90", "90.25", "1:30", "1:30.25" or "1:02:03.5": seconds, or
/// minutes and seconds, or hours, minutes and seconds. What follows a colon is below 60 and has two
/// digits before its point. Absent for anything else, signs and blanks included.
ORVANE_API std::optional<double> secondsFromTimeText(std::string_view text) noexcept;

}  // namespace orvane
