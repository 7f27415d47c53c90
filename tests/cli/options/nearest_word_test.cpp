#include "cli/options/nearest_word.h"

#include <gtest/gtest.h>

#include <vector>

namespace orvane::cli {
namespace {

TEST(NearestWord, IsNoFurtherThanAMisprint) {
  const std::vector<std::string> words = {"analyze", "identify", "raw", "report"};
  EXPECT_EQ(nearestWord("analyse", words), "analyze");
  EXPECT_EQ(nearestWord("anlayze", words), "analyze");
  EXPECT_EQ(nearestWord("rwx", words), std::nullopt);
  EXPECT_EQ(nearestWord("rap", words), "raw");
  EXPECT_EQ(nearestWord("ident", words), "identify");
  EXPECT_EQ(nearestWord("re", words), std::nullopt);
  EXPECT_EQ(nearestWord("cooking", words), std::nullopt);
  EXPECT_EQ(nearestWord("x", {}), std::nullopt);
}

// They counted as two, and no short word was found again.
TEST(NearestWord, TakesLettersThatChangedPlacesForOneMisprint) {
  const std::vector<std::string> words = {"edit", "raw", "dialogue", "identify"};
  EXPECT_EQ(nearestWord("edti", words), "edit");
  EXPECT_EQ(nearestWord("rwa", words), "raw");
  EXPECT_EQ(nearestWord("diaolgeu", words), "dialogue");
  EXPECT_EQ(nearestWord("idnetfiy", words), "identify");
  EXPECT_EQ(nearestWord("dite", words), std::nullopt);
}

}  // namespace
}  // namespace orvane::cli
