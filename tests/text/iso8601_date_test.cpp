#include "orvane/text/iso8601_date.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

using std::chrono::seconds;

TEST(ISO8601Date, WritesWholeSecondsInUTC) {
  EXPECT_EQ(ISO8601Date::text(Date{}), "1970-01-01T00:00:00Z");
  EXPECT_EQ(ISO8601Date::text(Date{seconds(1709251199)}), "2024-02-29T23:59:59Z");
  EXPECT_EQ(ISO8601Date::text(Date{seconds(-1)}), "1969-12-31T23:59:59Z");
  EXPECT_EQ(ISO8601Date::text(Date{seconds(-62135596800)}), "0001-01-01T00:00:00Z");
  EXPECT_EQ(ISO8601Date::text(Date{seconds(253402300799)}), "9999-12-31T23:59:59Z");
}

TEST(ISO8601Date, ReadsWhatItWrites) {
  for (const std::int64_t value : {0L, 1L, -1L, 951782400L, 1709251199L, 253402300799L}) {
    const Date date{seconds(value)};
    EXPECT_EQ(ISO8601Date::parse(ISO8601Date::text(date)), date);
  }
  const auto now = currentDate();
  EXPECT_EQ(ISO8601Date::parse(ISO8601Date::text(now)), now);
}

TEST(ISO8601Date, RefusesEveryOtherForm) {
  for (const char* text :
       {"", "2024-02-29", "2024-02-29T23:59:59", "2024-02-29T23:59:59.0Z", "2024-02-29T23:59:59z",
        "2024-02-29 23:59:59Z", "2024-02-29T23:59:59+00:00", "20240229T235959Z",
        "+024-02-29T23:59:59Z", "2024-2-29T23:59:59ZZ", " 2024-02-29T23:59:59Z",
        "2024-02-29T23:59:59Z "})
    EXPECT_EQ(ISO8601Date::parse(text), std::nullopt) << text;
}

TEST(ISO8601Date, RefusesMomentsThatDoNotExist) {
  for (const char* text : {"2023-02-29T00:00:00Z", "1900-02-29T00:00:00Z", "2024-04-31T00:00:00Z",
                           "2024-00-10T00:00:00Z", "2024-13-10T00:00:00Z", "2024-01-00T00:00:00Z",
                           "2024-01-01T24:00:00Z", "2024-01-01T23:60:00Z", "2016-12-31T23:59:60Z"})
    EXPECT_EQ(ISO8601Date::parse(text), std::nullopt) << text;
  EXPECT_TRUE(ISO8601Date::parse("2000-02-29T00:00:00Z"));
}

TEST(ISO8601DateDeathTest, AYearOfFiveDigitsIsAProgrammingError) {
  EXPECT_DEATH((void)ISO8601Date::text(Date{seconds(253402300800)}), "years 0 to 9999");
  EXPECT_DEATH((void)ISO8601Date::text(Date::max()), "years 0 to 9999");
}

}  // namespace
}  // namespace orvane
