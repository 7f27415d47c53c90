#include "orvane/report/html/date_text.h"

#include <unicode/datefmt.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <chrono>
#include <memory>

namespace orvane::HTMLReportBuilder {
namespace {

icu::Locale icuLocale(const std::string& name) {
  return name.empty() ? icu::Locale::getDefault() : icu::Locale(name.c_str());
}

/// Owned by whoever takes it, as ICU wants it.
icu::TimeZone* newTimeZone(const std::string& name) {
  return name.empty() ? icu::TimeZone::createDefault()
                      : icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(name));
}

}  // namespace

std::string longDateText(Date date, const ReportLocale& locale) {
  const std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateTimeInstance(
      icu::DateFormat::kLong, icu::DateFormat::kShort, icuLocale(locale.locale)));
  if (!format) return ISO8601Date::text(date);  // without ICU's data
  format->adoptTimeZone(newTimeZone(locale.timeZone));
  const auto milliseconds = std::chrono::milliseconds(date.time_since_epoch()).count();
  icu::UnicodeString text;
  format->format(static_cast<UDate>(milliseconds), text);
  std::string result;
  text.toUTF8String(result);
  return result;
}

}  // namespace orvane::HTMLReportBuilder
