#include "cli/output/source_date.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "cli/usage_error.h"

namespace orvane::cli {
namespace {

/// The last second that four digits of a year can tell.
constexpr std::int64_t kLatest = 253'402'300'799;

}  // namespace

std::optional<Date> sourceDate() {
  const char* const value = std::getenv("SOURCE_DATE_EPOCH");
  if (value == nullptr || *value == '\0') return std::nullopt;
  const std::string_view text(value);
  std::int64_t seconds = -1;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (error != std::errc() || end != text.data() + text.size() || seconds < 0 || seconds > kLatest)
    throw UsageError("SOURCE_DATE_EPOCH is no number of seconds since 1970");
  return Date(std::chrono::seconds(seconds));
}

}  // namespace orvane::cli
