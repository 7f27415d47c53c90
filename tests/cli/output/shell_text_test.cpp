#include "cli/output/shell_text.h"

#include <gtest/gtest.h>

namespace orvane::cli {
namespace {

TEST(ShellText, LeavesPlainNamesAlone) {
  EXPECT_EQ(shellText("takes/Take_1-b.raw"), "takes/Take_1-b.raw");
}

TEST(ShellText, QuotesWhatAShellWouldTakeApart) {
  EXPECT_EQ(shellText(""), "''");
  EXPECT_EQ(shellText("a b"), "'a b'");
  EXPECT_EQ(shellText("$(x);*"), "'$(x);*'");
  EXPECT_EQ(shellText("it's"), "'it'\\''s'");
  EXPECT_EQ(shellText("ä"), "'ä'");
}

TEST(ShellText, KeepsNamesFromBeingOptions) {
  EXPECT_EQ(shellText("-x.raw"), "./-x.raw");
  EXPECT_EQ(shellText("- x"), "'./- x'");
}

}  // namespace
}  // namespace orvane::cli
