#include "cli/options/shell_words.h"

#include <gtest/gtest.h>

#include "cli/usage_error.h"

namespace orvane::cli {
namespace {

using Words = std::vector<std::string>;

TEST(ShellWords, ArePartedAtBlanks) {
  EXPECT_EQ(shellWords("fade out 58s 60s"), (Words{"fade", "out", "58s", "60s"}));
  EXPECT_EQ(shellWords("  a\t b\n"), (Words{"a", "b"}));
  EXPECT_EQ(shellWords(" "), Words{});
}

TEST(ShellWords, KeepBlanksWithinQuotes) {
  EXPECT_EQ(shellWords("a 'b c' \"d e\""), (Words{"a", "b c", "d e"}));
  EXPECT_EQ(shellWords("a'b c'd \"it's\" 'say \"so\"'"), (Words{"ab cd", "it's", "say \"so\""}));
  EXPECT_EQ(shellWords("'' a"), (Words{"", "a"}));
}

TEST(ShellWords, RefuseAnOpenQuote) {
  EXPECT_THROW(shellWords("a 'b"), UsageError);
  EXPECT_THROW(shellWords("a \"b'"), UsageError);
}

}  // namespace
}  // namespace orvane::cli
