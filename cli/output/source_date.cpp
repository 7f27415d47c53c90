#include "cli/output/source_date.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>

#include "cli/usage_error.h"
#include "orvane/text/number_text.h"

namespace orvane::cli {
namespace {

/// The last second that four digits of a year can tell.
constexpr std::int64_t kLatest = 253'402'300'799;

}  // namespace

std::optional<Date> sourceDate() {
  const char* const value = std::getenv("SOURCE_DATE_EPOCH");
  if (value == nullptr || *value == '\0') return std::nullopt;
  const auto seconds = NumberText::parsed<std::int64_t>(value);
  if (!seconds || *seconds < 0 || *seconds > kLatest)
    throw UsageError("SOURCE_DATE_EPOCH is no number of seconds since 1970");
  return Date(std::chrono::seconds(*seconds));
}

}  // namespace orvane::cli
