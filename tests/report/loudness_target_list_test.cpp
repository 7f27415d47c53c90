#include "orvane/report/loudness_target_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orvane {
namespace {

using ::testing::ElementsAre;

constexpr const char* kHouse = R"({
  "id": "house-tv", "name": "House television", "mode": "broadcast", "source": "integrated",
  "treatmentKind": "compliance", "referenceLUFS": -23, "toleranceLU": 0.5,
  "truePeakCeilingDBTP": -3, "maxShortTermLUFS": -18, "provenance": "Technical manual, 2026"})";

/// The document with one key's value replaced or, behind its opening brace, added.
std::string with(const std::string& key, const std::string& value) {
  std::string text = kHouse;
  const auto at = text.find("\"" + key + "\"");
  if (at == std::string::npos) return "{\"" + key + "\": " + value + "," + text.substr(1);
  const auto start = text.find(':', at) + 1;
  return text.replace(start, text.find_first_of(",}", start) - start, " " + value);
}

std::string errorOf(const std::string& text) {
  try {
    LoudnessTargetList::read(text);
  } catch (const DecodingError& error) {
    return error.errorDescription();
  }
  return "";
}

TEST(LoudnessTargetList, ReadsOneTargetOrAnArray) {
  const core::LoudnessTarget house{.id = "house-tv",
                                   .name = "House television",
                                   .mode = core::LoudnessTargetMode::broadcast,
                                   .treatment = core::ComplianceTreatment{0.5F},
                                   .referenceLUFS = -23,
                                   .truePeakCeilingDBTP = -3,
                                   .maxShortTermLUFS = -18.0F,
                                   .provenance = "Technical manual, 2026"};
  EXPECT_THAT(LoudnessTargetList::read(kHouse), ElementsAre(house));
  EXPECT_THAT(LoudnessTargetList::read(std::string("[") + kHouse + "]"), ElementsAre(house));
}

TEST(LoudnessTargetList, ReadsWhatTheCatalogueSaysOfItself) {
  for (auto target : core::LoudnessTargetCatalog::all()) {
    target.id += "-ours";
    EXPECT_THAT(LoudnessTargetList::read(LoudnessTargetList::text(target)), ElementsAre(target));
  }
}

TEST(LoudnessTargetList, NamesTheKeyThatIsWrong) {
  EXPECT_EQ(errorOf(with("tolerance", "1")), "\"tolerance\" is a key that no target has.");
  EXPECT_EQ(errorOf(with("id", "\"a,b\"")),
            "\"id\" is no word of letters, digits, '-', '_' and '.'.");
  EXPECT_EQ(errorOf(with("id", "\"spotify\"")), "\"id\" is the one of another target.");
  EXPECT_EQ(errorOf(with("name", "\"\"")), "\"name\" is empty.");
  EXPECT_EQ(errorOf(with("mode", "\"radio\"")),
            "\"mode\" is none of music, podcast, vod and broadcast.");
  EXPECT_EQ(errorOf(with("treatmentKind", "\"penalty\"")),
            "The key \"boostBehaviour\" is missing.");
  EXPECT_EQ(errorOf(with("boostBehaviour", "\"symmetric\"")),
            "\"boostBehaviour\" is for penalty targets.");
  EXPECT_EQ(errorOf(with("toleranceLU", "-1")), "\"toleranceLU\" is below 0.");
  EXPECT_EQ(errorOf(with("maxSpeechPercentage", "0")),
            "\"maxSpeechPercentage\" lies outside 0 to 100.");
  // A null is minus infinity elsewhere, and no limit would ever be broken.
  EXPECT_THAT(errorOf(with("referenceLUFS", "null")), ::testing::StartsWith("\"referenceLUFS\" "));
  EXPECT_EQ(errorOf("[]"), "The document holds no target.");
  EXPECT_EQ(errorOf(std::string("[") + kHouse + "," + kHouse + "]"),
            "\"[1].id\" is the one of another target.");
  EXPECT_EQ(errorOf("{}"), "The key \"id\" is missing.");
}

TEST(LoudnessTargetList, RefusesLimitsThatNoServiceHas) {
  core::LoudnessTarget service{.id = "radio",
                               .name = "Radio",
                               .treatment = core::PenaltyTreatment{},
                               .referenceLUFS = -16,
                               .truePeakCeilingDBTP = -1};
  EXPECT_EQ(errorOf(LoudnessTargetList::text(service)), "");
  service.noiseFloorMaxDBRMS = -60.0F;
  EXPECT_EQ(errorOf(LoudnessTargetList::text(service)),
            "\"noiseFloorMaxDBRMS\" is for compliance targets.");
}

}  // namespace
}  // namespace orvane
