#include "orvane/core/targets/loudness_target.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace orvane::core {
namespace {

using ::testing::SizeIs;

std::vector<std::string> ids(const std::vector<LoudnessTarget>& targets) {
  std::vector<std::string> result;
  for (const auto& target : targets) result.push_back(target.id);
  return result;
}

TEST(LoudnessTargetCatalog, CoversEveryModeBroadly) {
  EXPECT_GE(LoudnessTargetCatalog::targets(LoudnessTargetMode::music).size(), 8U);
  EXPECT_GE(LoudnessTargetCatalog::targets(LoudnessTargetMode::podcast).size(), 4U);
  EXPECT_GE(LoudnessTargetCatalog::targets(LoudnessTargetMode::vod).size(), 4U);
  EXPECT_GE(LoudnessTargetCatalog::targets(LoudnessTargetMode::broadcast).size(), 8U);
}

TEST(LoudnessTargetCatalog, HasSoundRows) {
  std::set<std::string> seen;
  for (const auto& target : LoudnessTargetCatalog::all()) {
    EXPECT_TRUE(seen.insert(target.id).second) << target.id;
    EXPECT_FALSE(target.name.empty()) << target.id;
    EXPECT_FALSE(target.provenance.empty()) << target.id;
    EXPECT_LE(target.referenceLUFS, -9) << target.id;
    EXPECT_GE(target.referenceLUFS, -31) << target.id;
    EXPECT_LT(target.truePeakCeilingDBTP, 0) << target.id;
    if (const auto* compliance = std::get_if<ComplianceTreatment>(&target.treatment)) {
      EXPECT_TRUE(compliance->toleranceLU) << target.id;
    }
    EXPECT_EQ(LoudnessTargetCatalog::target(target.id), target);
  }
  EXPECT_FALSE(LoudnessTargetCatalog::target("no-such-target"));
}

// Rows out of guides and trade press were called confirmed.
TEST(LoudnessTargetCatalog, ConfirmsWhatTheServiceOrTheStandardItselfSays) {
  for (const auto& target : LoudnessTargetCatalog::all()) {
    for (const char* hint : {"third-party", "trade press", "custom", "common practice"}) {
      const bool isSecondHand = target.provenance.find(hint) != std::string::npos;
      EXPECT_FALSE(isSecondHand && target.isConfirmed) << target.id << ": " << target.provenance;
    }
  }
  for (const char* id : {"spotify", "netflix", "ebu-r128", "atsc-a85"})
    EXPECT_TRUE(LoudnessTargetCatalog::target(id)->isConfirmed) << id;
}

TEST(LoudnessTargetCatalog, HasARowForTheWholeProgrammeBesideTheDialogueOfATSC) {
  const auto dialogue = LoudnessTargetCatalog::target("atsc-a85").value();
  const auto programme = LoudnessTargetCatalog::target("atsc-a85-programme").value();
  EXPECT_EQ(dialogue.source, LoudnessTargetSource::dialogGated);
  EXPECT_EQ(programme.source, LoudnessTargetSource::integrated);
  EXPECT_EQ(programme.referenceLUFS, dialogue.referenceLUFS);
  EXPECT_EQ(programme.treatment, dialogue.treatment);
}

TEST(LoudnessTargetCatalog, KnowsWhichTargetsNeedSpeech) {
  for (const char* id : {"netflix", "netflix-lowdialog", "acx", "atsc-a85"})
    EXPECT_TRUE(LoudnessTargetCatalog::target(id)->needsSpeech()) << id;
  for (const char* id : {"spotify", "ebu-r128-s1", "atsc-a85-programme"})
    EXPECT_FALSE(LoudnessTargetCatalog::target(id)->needsSpeech()) << id;
  EXPECT_EQ(LoudnessTargetCatalog::target("netflix-lowdialog")->maxSpeechPercentage, 15.0F);
}

TEST(LoudnessTargetSelection, TakesTheFirstFourOfTheModeByDefault) {
  EXPECT_EQ(ids(LoudnessTargetSelection{}.activeTargets()),
            (std::vector<std::string>{"spotify", "apple-music", "youtube", "tidal"}));
  const LoudnessTargetSelection broadcast{.mode = LoudnessTargetMode::broadcast};
  EXPECT_THAT(broadcast.activeTargets(), SizeIs(4));
}

TEST(LoudnessTargetSelection, KeepsCatalogueOrderAndPassesOverUnknownOnes) {
  const LoudnessTargetSelection selection{
      .mode = LoudnessTargetMode::podcast,
      .targetIDs = std::vector<std::string>{"netflix", "nothing", "acx", "acx", "spotify"}};
  EXPECT_EQ(ids(selection.activeTargets()),
            (std::vector<std::string>{"spotify", "acx", "netflix"}));
}

TEST(LoudnessTargetSelection, ShowsNoneWhenNoneIsChosenAndFourAtMost) {
  EXPECT_THAT((LoudnessTargetSelection{.targetIDs = std::vector<std::string>{}}).activeTargets(),
              SizeIs(0));
  std::vector<std::string> many;
  for (const auto& target : LoudnessTargetCatalog::all()) many.push_back(target.id);
  EXPECT_THAT((LoudnessTargetSelection{.targetIDs = many}).activeTargets(), SizeIs(4));
}

TEST(LoudnessTargetNames, GoBothWays) {
  for (const auto mode : {LoudnessTargetMode::music, LoudnessTargetMode::podcast,
                          LoudnessTargetMode::vod, LoudnessTargetMode::broadcast})
    EXPECT_EQ(loudnessTargetModeFromRawValue(rawValue(mode)), mode);
  for (const auto source : {LoudnessTargetSource::integrated, LoudnessTargetSource::dialogGated,
                            LoudnessTargetSource::rms})
    EXPECT_EQ(loudnessTargetSourceFromRawValue(rawValue(source)), source);
  for (const auto boost : {BoostBehaviour::symmetric, BoostBehaviour::turnsDownOnly})
    EXPECT_EQ(boostBehaviourFromRawValue(rawValue(boost)), boost);
  EXPECT_FALSE(loudnessTargetModeFromRawValue("Music"));
  EXPECT_EQ(unitText(LoudnessTargetSource::dialogGated), "LKFS");
}

}  // namespace
}  // namespace orvane::core
