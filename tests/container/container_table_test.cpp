#include "orvane/container/container_table.h"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace orvane {
namespace {

TEST(ContainerTable, HasOneRowForACode) {
  std::set<FourCC> codes;
  for (const ContainerKind& kind : containerKinds())
    EXPECT_TRUE(codes.insert(kind.code).second) << fourCC(kind.code);
}

TEST(ContainerTable, HasTheWritableContainersInTheirOrder) {
  std::vector<AudioContainer> writable;
  for (const ContainerKind& kind : containerKinds())
    if (kind.writable) writable.push_back(*kind.writable);
  EXPECT_EQ(writable, std::vector(kAllAudioContainers.begin(), kAllAudioContainers.end()));
}

TEST(ContainerTable, GivesAnExtensionToOneWritableContainer) {
  std::multiset<std::string> extensions;
  for (const ContainerKind& kind : containerKinds()) {
    if (!kind.writable) continue;
    std::istringstream words{std::string(kind.extensions)};
    for (std::string word; words >> word;) extensions.insert(word);
  }
  EXPECT_EQ(extensions.size(), 11U);
  for (const auto& word : extensions) EXPECT_EQ(extensions.count(word), 1U) << word;
}

TEST(ContainerTable, FindsWholeWordsInAList) {
  EXPECT_TRUE(holdsWord("wav wave bwf", "wav"));
  EXPECT_TRUE(holdsWord("wav wave bwf", "bwf"));
  EXPECT_FALSE(holdsWord("wav wave bwf", "wa"));
  EXPECT_FALSE(holdsWord("wav wave bwf", "wav wave"));
  EXPECT_FALSE(holdsWord("wav", ""));
  EXPECT_FALSE(holdsWord("", ""));
}

}  // namespace
}  // namespace orvane
