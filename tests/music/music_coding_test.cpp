#include <gtest/gtest.h>

#include <chrono>
#include <limits>

#include "orvane/music/music_analysis_result.h"
#include "orvane/music/music_section_loudness.h"
#include "orvane/music/stem_gated_loudness.h"
#include "orvane/text/json/json_text.h"
#include "tests/support/doubled_keys.h"

namespace orvane {
namespace {

using Stem = MusicAnalysisResult::Stem;

MusicAnalysisResult song() {
  using namespace std::chrono;
  return {.source = "On-device analysis",
          .analysedAt = sys_days(2024y / February / 29) + 23h + 59min + 59s,
          .duration = 180.5,
          .stems = {{.stem = Stem::drum, .ranges = {{0, 4.5}}, .activity = {{0.1, 0.3F}}}},
          .beats = {0.5, 1},
          .bars = {0.5},
          .beatsPerMinute = 120.1F,
          .sections = {{0, 90}},
          .segments = {{0, 45}},
          .phrases = {{0, 10}},
          .keys = {{.span = {0, 90}, .tonic = "fSharp", .mode = "minor"}},
          .paces = {{.span = {0, 180}, .value = 120.05}}};
}

TEST(MusicCoding, WritesTheKeysOfTheRecordInItsOrder) {
  EXPECT_EQ(
      encodeJSON(song()),
      R"({"source":"On-device analysis","analysedAt":"2024-02-29T23:59:59Z","duration":180.5,)"
      R"("stems":[{"stem":"drum","ranges":[{"start":0,"end":4.5}],)"
      R"("activity":[{"time":0.1,"value":0.3}]}],)"
      R"("beats":[0.5,1],"bars":[0.5],"beatsPerMinute":120.1,"sections":[{"start":0,"end":90}],)"
      R"("segments":[{"start":0,"end":45}],"phrases":[{"start":0,"end":10}],)"
      R"("keys":[{"span":{"start":0,"end":90},"tonic":"fSharp","mode":"minor"}],)"
      R"("paces":[{"span":{"start":0,"end":180},"value":120.05}]})");
}

TEST(MusicCoding, BringsTheRecordBack) {
  EXPECT_EQ(decodeJSON<MusicAnalysisResult>(encodeJSON(song())), song());
}

TEST(MusicCoding, RefusesAKeyThatStandsThereTwiceInAnyRecord) {
  test::expectEachKeyOnce(encodeJSON(song()), decodeJSON<MusicAnalysisResult>);
  test::expectEachKeyOnce(encodeJSON(StemGatedLoudness{.vocal = {.presentLUFS = -14.3F}}),
                          decodeJSON<StemGatedLoudness>);
  test::expectEachKeyOnce(encodeJSON(MusicSectionLoudness{.entries = {{.index = 1}}}),
                          decodeJSON<MusicSectionLoudness>);
}

TEST(MusicCoding, LeavesOutAnUnknownTempo) {
  MusicAnalysisResult unknown = song();
  unknown.beatsPerMinute.reset();
  const std::string text = encodeJSON(unknown);
  EXPECT_EQ(text.find("beatsPerMinute"), std::string::npos);
  EXPECT_EQ(decodeJSON<MusicAnalysisResult>(text), unknown);
}

TEST(MusicCoding, RefusesAStemThatIsNone) {
  try {
    decodeJSON<MusicAnalysisResult::StemLane>(R"({"stem":"Drums","ranges":[],"activity":[]})");
    FAIL();
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.kind(), DecodingError::Case::dataCorrupted);
    EXPECT_EQ(error.errorDescription(), "\"stem\" holds an unknown name.");
  }
}

TEST(MusicCoding, NamesThePlaceOfAMissingKeyDeepInside) {
  try {
    decodeJSON<MusicAnalysisResult>(
        R"({"source":"","analysedAt":"2024-01-01T00:00:00Z","duration":1,)"
        R"("stems":[{"stem":"bass","ranges":[{"start":0,"end":1},{"start":2}],"activity":[]}]})");
    FAIL();
  } catch (const DecodingError& error) {
    EXPECT_EQ(error.kind(), DecodingError::Case::keyNotFound);
    EXPECT_EQ(error.keyPath(), "stems[0].ranges[1].end");
    EXPECT_EQ(error.errorDescription(), "The key \"stems[0].ranges[1].end\" is missing.");
  }
}

TEST(StemGatedLoudnessCoding, LeavesOutWhatIsAbsentOrNotFinite) {
  const StemGatedLoudness loudness{.vocal = {.presentLUFS = -14.3F,
                                             .absentLUFS = -std::numeric_limits<float>::infinity(),
                                             .presentSeconds = 20,
                                             .absentSeconds = 10.1},
                                   .source = "s"};
  EXPECT_EQ(encodeJSON(loudness),
            R"({"vocal":{"presentLUFS":-14.3,"presentSeconds":20,"absentSeconds":10.1},)"
            R"("drums":{"presentSeconds":0,"absentSeconds":0},"source":"s"})");
}

TEST(StemGatedLoudnessCoding, BringsTheRecordBack) {
  const StemGatedLoudness loudness{
      .vocal = {.presentLUFS = -14.3F, .absentLUFS = -16.1F, .balanceLU = 1.8F},
      .drums = {.absentSeconds = 60},
      .source = "s"};
  EXPECT_EQ(decodeJSON<StemGatedLoudness>(encodeJSON(loudness)), loudness);
}

TEST(MusicSectionLoudnessCoding, BringsTheRecordBack) {
  const MusicSectionLoudness loudness{
      .entries = {{.index = 0, .span = {0, 10}, .integratedLUFS = -10.5F, .deviationLU = 0.25F},
                  {.index = 1, .span = {10, 12}}},
      .medianLUFS = -10.75F};
  EXPECT_EQ(encodeJSON(loudness),
            R"({"entries":[{"index":0,"span":{"start":0,"end":10},"integratedLUFS":-10.5,)"
            R"("deviationLU":0.25},{"index":1,"span":{"start":10,"end":12}}],)"
            R"("medianLUFS":-10.75})");
  EXPECT_EQ(decodeJSON<MusicSectionLoudness>(encodeJSON(loudness)), loudness);
}

}  // namespace
}  // namespace orvane
