#include "cli/options/edit_time.h"

#include <gtest/gtest.h>

#include "cli/usage_error.h"

namespace orvane::cli {
namespace {

std::int64_t frameOf(const char* text, double rate = 48'000) {
  return EditTime::parse(text, "START").frameAt(rate);
}

TEST(EditTime, IsSecondsMinutesOrFrames) {
  EXPECT_EQ(frameOf("62.5"), 3'000'000);
  EXPECT_EQ(frameOf("62.5s"), 3'000'000);
  EXPECT_EQ(frameOf("1:02.5"), 3'000'000);
  EXPECT_EQ(frameOf("1:00:00"), 172'800'000);
  EXPECT_EQ(frameOf("250ms"), 12'000);
  EXPECT_EQ(frameOf("#17"), 17);
  EXPECT_EQ(frameOf("#17", 44'100), 17);
  EXPECT_EQ(frameOf("0"), 0);
}

TEST(EditTime, IsTheNearestFrame) {
  EXPECT_EQ(frameOf("0.00001"), 0);
  EXPECT_EQ(frameOf("0.00002"), 1);
  EXPECT_EQ(frameOf("1.3", 44'100), 57'330);
}

TEST(EditTime, StaysWithinBoundsHoweverFar) {
  EXPECT_GT(frameOf("#9223372036854775807"), std::int64_t{1} << 40);
  EXPECT_EQ(frameOf("99999999999999999999"), frameOf("#9223372036854775807"));
}

TEST(EditTime, RefusesEverythingElse) {
  for (const char* text : {"", "s", "ms", "#", "#-1", "#1.5", "-1", "1:2", "1:02s", "1:02ms", "1e3",
                           "inf", "nan", "1 s", "end", "1ss", "1sms"}) {
    try {
      EditTime::parse(text, "START");
      ADD_FAILURE() << text;
    } catch (const UsageError& error) {
      EXPECT_EQ(std::string(error.what()),
                "START: '" + std::string(text) +
                    "' is no time; times are seconds, [h:]mm:ss[.fff] or #FRAME");
    }
  }
}

TEST(EditTime, TellsEmptyRangesBeforeTheRateIsKnown) {
  const auto check = [](const char* start, const char* end) {
    requireOrder(EditTime::parse(start, "START"), EditTime::parse(end, "END"));
  };
  EXPECT_THROW(check("2", "1"), UsageError);
  EXPECT_THROW(check("1:00", "60s"), UsageError);
  EXPECT_THROW(check("#5", "#5"), UsageError);
  EXPECT_NO_THROW(check("1", "2"));
  EXPECT_NO_THROW(check("#5", "#6"));
  EXPECT_NO_THROW(check("1", "#5"));
}

}  // namespace
}  // namespace orvane::cli
