#include "cli/options/nearest_word.h"

#include <gtest/gtest.h>

#include <vector>

namespace orvane::cli {
namespace {

TEST(NearestWord, IsNoFurtherThanAMisprint) {
  const std::vector<std::string> words = {"analyze", "identify", "raw", "report"};
  EXPECT_EQ(nearestWord("analyse", words), "analyze");
  EXPECT_EQ(nearestWord("anlayze", words), "analyze");
  EXPECT_EQ(nearestWord("rwa", words), std::nullopt);
  EXPECT_EQ(nearestWord("rap", words), "raw");
  EXPECT_EQ(nearestWord("ident", words), "identify");
  EXPECT_EQ(nearestWord("re", words), std::nullopt);
  EXPECT_EQ(nearestWord("cooking", words), std::nullopt);
  EXPECT_EQ(nearestWord("x", {}), std::nullopt);
}

}  // namespace
}  // namespace orvane::cli
