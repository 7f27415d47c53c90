#include "orvane/music/music_auto_analysis_policy.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "orvane/text/json/json_text.h"

namespace orvane {
namespace {

using Policy = MusicAutoAnalysisPolicy;

TEST(MusicAutoAnalysisPolicy, HasNamesForFilesAndForPeople) {
  std::vector<std::string> stored, shown;
  for (const Policy policy : kAllMusicAutoAnalysisPolicies) {
    stored.emplace_back(rawValue(policy));
    shown.emplace_back(displayName(policy));
    EXPECT_EQ(musicAutoAnalysisPolicyFromStored(rawValue(policy)), policy);
    EXPECT_EQ(decodeJSON<Policy>(encodeJSON(policy)), policy);
  }
  EXPECT_EQ(stored, (std::vector<std::string>{"never", "songs", "always"}));
  EXPECT_EQ(shown, (std::vector<std::string>{"Never", "Songs", "Every file"}));
  EXPECT_EQ(encodeJSON(Policy::songs), "\"songs\"");
  EXPECT_THROW(decodeJSON<Policy>("\"musicMode\""), DecodingError);
}

TEST(MusicAutoAnalysisPolicy, RunsForSongsByTheirLength) {
  EXPECT_TRUE(shouldRun(Policy::songs, 0.001));
  EXPECT_TRUE(shouldRun(Policy::songs, 900));
  EXPECT_FALSE(shouldRun(Policy::songs, 900.001));
  EXPECT_FALSE(shouldRun(Policy::songs, 901));
  EXPECT_FALSE(shouldRun(Policy::songs, 0));
  EXPECT_FALSE(shouldRun(Policy::songs, -1));
  EXPECT_FALSE(shouldRun(Policy::songs, std::numeric_limits<double>::quiet_NaN()));
  EXPECT_FALSE(shouldRun(Policy::songs, 61, 60));
  EXPECT_TRUE(shouldRun(Policy::songs, 901, 1000));
}

TEST(MusicAutoAnalysisPolicy, RunsAlwaysOrNever) {
  for (const double seconds : {-1.0, 0.0, 60.0, 1e9}) {
    EXPECT_TRUE(shouldRun(Policy::always, seconds));
    EXPECT_FALSE(shouldRun(Policy::never, seconds));
  }
}

TEST(MusicAutoAnalysisPolicy, KnowsAnEarlierName) {
  EXPECT_EQ(musicAutoAnalysisPolicyFromStored("musicMode"), Policy::songs);
  EXPECT_EQ(resolveMusicAutoAnalysisPolicy("musicMode"), Policy::songs);
}

TEST(MusicAutoAnalysisPolicy, IsForSongsUnlessItIsStoredOtherwise) {
  EXPECT_EQ(kDefaultMusicAutoAnalysisPolicy, Policy::songs);
  EXPECT_EQ(resolveMusicAutoAnalysisPolicy(std::nullopt), Policy::songs);
  for (const char* const unknown : {"", "Never", "all"}) {
    EXPECT_EQ(musicAutoAnalysisPolicyFromStored(unknown), std::nullopt);
    EXPECT_EQ(resolveMusicAutoAnalysisPolicy(unknown), Policy::songs);
  }
  EXPECT_EQ(resolveMusicAutoAnalysisPolicy("never"), Policy::never);
  EXPECT_EQ(resolveMusicAutoAnalysisPolicy("always"), Policy::always);
}

}  // namespace
}  // namespace orvane
