#pragma once

#include <optional>

#include "orvane/text/iso8601_date.h"

namespace orvane::cli {

/// The moment that SOURCE_DATE_EPOCH names
/// (https://reproducible-builds.org/specs/source-date-epoch), which takes the place of the present
/// one in what the program writes, so that equal input gives equal bytes. Absent when the variable
/// is not set; throws `UsageError` when it is no such number.
std::optional<Date> sourceDate();

}  // namespace orvane::cli
