#include "orvane/text/time_text.h"

#include <gtest/gtest.h>

#include <string>

namespace orvane {
namespace {

TEST(TimeText, ReadsSecondsMinutesAndHours) {
  EXPECT_EQ(secondsFromTimeText("0"), 0.0);
  EXPECT_EQ(secondsFromTimeText("90"), 90.0);
  EXPECT_EQ(secondsFromTimeText("90.25"), 90.25);
  EXPECT_EQ(secondsFromTimeText("1:30"), 90.0);
  EXPECT_EQ(secondsFromTimeText("01:30.5"), 90.5);
  EXPECT_EQ(secondsFromTimeText("100:00"), 6000.0);
  EXPECT_EQ(secondsFromTimeText("1:02:03.004"), 3723.004);
  EXPECT_EQ(secondsFromTimeText("0:59:59"), 3599.0);
}

TEST(TimeText, RefusesEverythingElse) {
  for (const char* text :
       {"",           " ",         "-1",    "+1",     "1 ",      " 1",      ".5",     "1.",
        "1e3",        "nan",       "inf",   "0x10",   "1,5",     "1:60",    "1:2",    "1:002",
        "1:",         ":30",       "1:30:", "1.5:30", "1:30:60", "1:60:00", "1:2:03", "1:02:3",
        "1:02:03:04", "1:02.5:03", "1;30",  "1:-2",   "1:+2"})
    EXPECT_EQ(secondsFromTimeText(text), std::nullopt) << text;
  EXPECT_EQ(secondsFromTimeText(std::string(400, '9')), std::nullopt);
  EXPECT_EQ(secondsFromTimeText(std::string(308, '9') + ":00:00"), std::nullopt);
}

}  // namespace
}  // namespace orvane
