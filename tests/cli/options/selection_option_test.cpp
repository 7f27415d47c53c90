#include "cli/options/selection_option.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/usage_error.h"

namespace orvane::cli {
namespace {

TEST(SelectionOptionTest, IsAStartAndAnEnd) {
  EXPECT_EQ(SelectionOption::parse("90-120.5"), (ReportParts::Selection{90, 120.5}));
  EXPECT_EQ(SelectionOption::parse("1:30-1:02:03.25"), (ReportParts::Selection{90, 3723.25}));
  EXPECT_EQ(SelectionOption::parse("0-0.1"), (ReportParts::Selection{0, 0.1}));
}

TEST(SelectionOptionTest, MayReachToTheEndOfTheFile) {
  EXPECT_EQ(SelectionOption::parse("5-"), (ReportParts::Selection{5, std::nullopt}));
}

TEST(SelectionOptionTest, RefusesWhatIsNone) {
  for (const char* text : {"", "-", "5", "-5", "5-5", "6-5", "5--6", "5-x", "x-5", "1:75-2:00",
                           "5-6-7", "nan-inf", "5 - 6"})
    EXPECT_THROW(SelectionOption::parse(text), UsageError) << text;
}

}  // namespace
}  // namespace orvane::cli
