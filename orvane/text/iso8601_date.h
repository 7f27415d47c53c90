#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

#include "orvane/platform/export.h"

namespace orvane {

/// A moment in whole seconds, UTC.
using Date = std::chrono::sys_seconds;

/// The current moment, cut to the whole second.
ORVANE_API Date currentDate();

/// Dates as ISO 8601 text in the internet profile (RFC 3339) with "Z" and without fractions:
/// "2024-02-29T23:59:59Z".
namespace ISO8601Date {

/// Whether a date has such a text: in the years 0 to 9999.
ORVANE_API bool hasText(Date date) noexcept;

/// A date that has none is a programming error.
ORVANE_API std::string text(Date date);

/// Absent for anything that `text` does not write: other separators, fractions, offsets, leap
/// seconds, days that the month does not have.
ORVANE_API std::optional<Date> parse(std::string_view text) noexcept;

}  // namespace ISO8601Date
}  // namespace orvane
