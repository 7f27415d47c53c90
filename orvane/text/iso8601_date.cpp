#include "orvane/text/iso8601_date.h"

#include "orvane/platform/precondition.h"
#include "orvane/text/number_text.h"

namespace orvane {

Date currentDate() {
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

namespace ISO8601Date {
namespace {

constexpr std::string_view kPattern = "dddd-dd-ddTdd:dd:ddZ";

bool matchesPattern(std::string_view text) noexcept {
  if (text.size() != kPattern.size()) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool matches =
        kPattern[i] == 'd' ? text[i] >= '0' && text[i] <= '9' : text[i] == kPattern[i];
    if (!matches) return false;
  }
  return true;
}

int number(std::string_view digits) noexcept {
  int result = 0;
  for (const char digit : digits) result = result * 10 + (digit - '0');
  return result;
}

}  // namespace

bool hasText(Date date) noexcept {
  using namespace std::chrono;
  return date >= sys_days(year(0) / January / 1) && date < sys_days(year(10000) / January / 1);
}

std::string text(Date date) {
  precondition(hasText(date), "a date that is written lies in the years 0 to 9999");
  const auto day = std::chrono::floor<std::chrono::days>(date);
  const std::chrono::year_month_day calendar(day);
  const std::chrono::hh_mm_ss time(date - day);
  const auto two = [](std::int64_t value) { return NumberText::padded(value, 2); };
  return NumberText::padded(int{calendar.year()}, 4) + "-" + two(unsigned{calendar.month()}) + "-" +
         two(unsigned{calendar.day()}) + "T" + two(time.hours().count()) + ":" +
         two(time.minutes().count()) + ":" + two(time.seconds().count()) + "Z";
}

std::optional<Date> parse(std::string_view text) noexcept {
  if (!matchesPattern(text)) return std::nullopt;
  const std::chrono::year_month_day calendar{
      std::chrono::year(number(text.substr(0, 4))),
      std::chrono::month(static_cast<unsigned>(number(text.substr(5, 2)))),
      std::chrono::day(static_cast<unsigned>(number(text.substr(8, 2))))};
  const int hours = number(text.substr(11, 2));
  const int minutes = number(text.substr(14, 2));
  const int seconds = number(text.substr(17, 2));
  if (!calendar.ok() || hours > 23 || minutes > 59 || seconds > 59) return std::nullopt;
  return std::chrono::sys_days(calendar) + std::chrono::hours(hours) +
         std::chrono::minutes(minutes) + std::chrono::seconds(seconds);
}

}  // namespace ISO8601Date
}  // namespace orvane
