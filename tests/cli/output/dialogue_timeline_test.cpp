#include "cli/output/dialogue_timeline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include "tests/speech/dialogue/dialogue_samples.h"

namespace orvane::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

DialogueRegion region(double start, double end) {
  return {UUID::random(), start, end};
}

/// Of a file of ten seconds.
DialogueSidecar tenSeconds(std::vector<DialogueRegion> regions) {
  auto sidecar = orvane::test::sidecarWith(std::move(regions));
  sidecar.audioFile.durationSeconds = 10;
  return sidecar;
}

std::string block(const DialogueSidecar& sidecar, const std::string& name = "take1.wav") {
  return DialogueTimeline::block({.path = name, .display = name}, sidecar,
                                 Console(ConsoleTraits{.columns = 24}));
}

TEST(DialogueTimeline, CountsOverlappingRegionsOnceAndNothingOutsideTheFile) {
  const auto sidecar =
      tenSeconds({region(1, 3), region(2, 4), region(4, 5), region(8, 99), region(-3, 0.5)});
  EXPECT_THAT(
      DialogueTimeline::covered(sidecar),
      ElementsAre(HalfOpenTimeRange{0, 0.5}, HalfOpenTimeRange{1, 5}, HalfOpenTimeRange{8, 10}));
  EXPECT_DOUBLE_EQ(DialogueTimeline::totalSeconds(sidecar), 6.5);
  EXPECT_DOUBLE_EQ(DialogueTimeline::percentage(sidecar), 65);
}

TEST(DialogueTimeline, TakesRegionsInAnyOrderAndSkipsThoseThatEndBeforeTheyStart) {
  auto sidecar = tenSeconds({});
  sidecar.regions = {region(6, 7), region(1, 2), region(3, 4)};
  sidecar.regions[2].end = 0;
  EXPECT_THAT(DialogueTimeline::covered(sidecar),
              ElementsAre(HalfOpenTimeRange{1, 2}, HalfOpenTimeRange{6, 7}));
}

TEST(DialogueTimeline, AFileWithoutLengthHasNoDialogue) {
  auto sidecar = tenSeconds({region(0, 1)});
  sidecar.audioFile.durationSeconds = 0;
  EXPECT_THAT(DialogueTimeline::covered(sidecar), IsEmpty());
  EXPECT_EQ(DialogueTimeline::percentage(sidecar), 0);
  EXPECT_THAT(block(sidecar), Not(HasSubstr("·")));
}

TEST(DialogueTimeline, TheBarShowsMostlySomeAndNoDialogue) {
  EXPECT_EQ(DialogueTimeline::bar(tenSeconds({}), 5), "·····");
  EXPECT_EQ(DialogueTimeline::bar(tenSeconds({region(0, 10)}), 5), "█████");
  EXPECT_EQ(DialogueTimeline::bar(tenSeconds({region(2, 4)}), 5), "·█···");
  EXPECT_EQ(DialogueTimeline::bar(tenSeconds({region(2.1, 2.2), region(3.9, 6)}), 5), "·▒█··");
  EXPECT_EQ(DialogueTimeline::bar(tenSeconds({region(2, 2.6), region(3, 3.5)}), 5), "·█···");
  EXPECT_EQ(DialogueTimeline::bar(tenSeconds({region(9.99, 10)}), 5), "····▒");
}

TEST(DialogueTimeline, ShowsFiguresBarAndList) {
  auto sidecar = tenSeconds({region(0, 5), region(7, 8.2)});
  sidecar.regions[1].label = "Anna";
  sidecar.regions[0].vadOrigin = ClosedTimeRange{0, 5};
  EXPECT_EQ(block(sidecar),
            "take1.wav\n"
            "  Duration  0:10.000, 48 kHz\n"
            "  Dialogue  2 regions, 0:06.200 of dialogue (62.0 %)\n"
            "  Source    changed by a user\n"
            "  Saved     2024-03-01T00:00:00Z by Orvane 0.1.0\n"
            "\n"
            "  ██████████····██▒···\n"
            "  0:00.000    0:10.000\n"
            "\n"
            "  #     Start       End    Length  Origin    Label\n"
            "  1  0:00.000  0:05.000  0:05.000  detected\n"
            "  2  0:07.000  0:08.200  0:01.200  drawn     Anna\n");
}

TEST(DialogueTimeline, TellsWhereRegionsComeFrom) {
  auto sidecar = tenSeconds({region(1, 2)});
  EXPECT_THAT(block(sidecar), HasSubstr("drawn"));
  sidecar.source = DialogueRegionSource::imported;
  EXPECT_THAT(block(sidecar), Not(HasSubstr("drawn")));
  EXPECT_THAT(block(sidecar), HasSubstr("Source    imported"));
  sidecar.source = DialogueRegionSource::silero;
  sidecar.regions[0].vadOrigin = ClosedTimeRange{1, 3};
  EXPECT_THAT(block(sidecar), HasSubstr("changed"));
  EXPECT_THAT(block(sidecar), HasSubstr("Source    speech detector"));
}

TEST(DialogueTimeline, HostileTextIsEscaped) {
  auto sidecar = tenSeconds({region(1, 2)});
  sidecar.regions[0].label = "a\x1B[2Jb\nc\u202E";
  sidecar.generator = "x\x1B]0;y\a";
  const auto text = block(sidecar, "take\n1\x1B.wav");
  EXPECT_EQ(text.find('\x1B'), std::string::npos);
  EXPECT_EQ(text.find('\a'), std::string::npos);
  EXPECT_THAT(text, HasSubstr("a\\x1B[2Jb\\nc\\u202E"));
}

TEST(DialogueTimeline, JSONHoldsTheSidecarAndTheFigures) {
  const auto sidecar = tenSeconds({region(1, 3.5)});
  const auto json = nlohmann::json::parse(
      DialogueTimeline::json({.path = "take1.wav", .display = "take1.wav"}, sidecar));
  EXPECT_EQ(json.at("schemaVersion"), 1);
  EXPECT_EQ(json.at("url"), "take1.wav");
  EXPECT_EQ(json.at("dialogueSeconds"), 2.5);
  EXPECT_EQ(json.at("dialoguePercentage"), 25);
  EXPECT_EQ(json.at("sidecar").at("source"), "user-edited");
  EXPECT_EQ(json.at("sidecar").at("regions").at(0).at("end"), 3.5);
}

}  // namespace
}  // namespace orvane::cli
