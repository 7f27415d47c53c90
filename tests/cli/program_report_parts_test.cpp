#include "orvane/report/orvane_report.h"
#include "tests/cli/program_fixture.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// steps.wav: 12 s at −26 dBFS, 12 s at −20, 12 s at −14.
class ProgramReportParts : public ProgramTest {
 protected:
  ProgramReportParts() {
    std::string samples;
    for (const double level : {-26.0, -20.0, -14.0})
      samples += sineSamples(12 * 48'000, std::pow(10, level / 20));
    folder().write("steps.wav", waveFile(samples));
  }
  ProgramEnd analyze(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"analyze", "steps.wav"});
    return run(arguments);
  }
  Json document(std::vector<std::string> arguments) const {
    arguments.emplace_back("--json");
    const auto end = analyze(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return jsonLines(end.output).at(0);
  }
  void writeMusic(const std::string& name, double duration = 36) const {
    const Json span0 = {{"start", 0}, {"end", 12}};
    const Json span1 = {{"start", 12}, {"end", 24}};
    const Json span2 = {{"start", 24}, {"end", 36}};
    const Json vocal = {{"stem", "vocal"}, {"ranges", {span2}}, {"activity", Json::array()}};
    const Json key = {{"span", span0}, {"tonic", "fSharp"}, {"mode", "minor"}};
    folder().write(name, Json{{"source", "a test"},
                              {"analysedAt", "2024-01-31T12:00:00Z"},
                              {"duration", duration},
                              {"stems", {vocal}},
                              {"beats", Json::array()},
                              {"bars", Json::array()},
                              {"sections", {span0, span1, span2}},
                              {"segments", Json::array()},
                              {"phrases", Json::array()},
                              {"keys", {key}},
                              {"paces", Json::array()}}
                             .dump());
  }
};

TEST_F(ProgramReportParts, ASelectionIsMeasuredOnItsOwn) {
  const auto selection = document({"--selection", "12.5-0:23.5"}).at("selection");
  EXPECT_EQ(selection.at("startTime"), 12.5);
  EXPECT_EQ(selection.at("endTime"), 23.5);
  EXPECT_NEAR(selection.at("integratedLUFS").get<double>(), -20, 0.05);
  EXPECT_TRUE(selection.at("speechGatedLUFS").is_null());
  EXPECT_FALSE(selection.contains("momentaryCurve"));
  const auto table = analyze({"--selection", "12.5-0:23.5"}).output;
  EXPECT_THAT(table, HasSubstr("\n  Selection 0:12.500 – 0:23.500\n  Integrated      -20.0 LUFS"));
}

TEST_F(ProgramReportParts, ASelectionHasItsCurvesOnRequest) {
  const auto selection = document({"--selection", "12-", "--curves"}).at("selection");
  EXPECT_EQ(selection.at("momentaryCurve").size(), 240U);
  EXPECT_EQ(selection.at("endTime"), 36.0);
}

TEST_F(ProgramReportParts, ASelectionBeyondTheEndIsCutOrRefused) {
  const auto cut = analyze({"--selection", "30-99"});
  EXPECT_EQ(cut.exitCode, 0);
  EXPECT_THAT(cut.output, AllOf(HasSubstr("Selection 0:30.000 – 0:36.000"),
                                HasSubstr("The selection is cut to the end of the audio")));
  const auto outside = analyze({"--selection", "40-50"});
  EXPECT_EQ(outside.exitCode, 1);
  EXPECT_EQ(outside.errors,
            "orvane: steps.wav: the selection lies behind the end of the audio at 0:36.000\n");
  EXPECT_EQ(analyze({"--selection", "5-4"}).exitCode, 2);
}

TEST_F(ProgramReportParts, ViolationsAreTheLoudStretches) {
  const auto violations =
      document({"--max-momentary", "-17", "--max-short-term", "-10"}).at("violations");
  EXPECT_EQ(violations.at("momentaryThreshold"), -17.0);
  EXPECT_EQ(violations.at("momentaryCount"), 1);
  EXPECT_EQ(violations.at("shortTermCount"), 0);
  EXPECT_NEAR(violations.at("momentaryRanges")[0].at("start").get<double>(), 24.2, 0.3);
  EXPECT_EQ(violations.at("momentaryRanges")[0].at("end"), 36.0);
  const auto table = analyze({"--max-momentary", "-17", "--max-short-term", "-10"}).output;
  EXPECT_THAT(table, HasSubstr("Momentary above -17.0 LUFS: 1 region, "));
  EXPECT_THAT(table, HasSubstr("Short-term above -10.0 LUFS: nowhere\n"));
}

TEST_F(ProgramReportParts, ViolationsNeedALevel) {
  for (const char* value : {"loud", "nan", "inf", "1e9", ""}) {
    const auto end = analyze({"--max-momentary", value});
    EXPECT_EQ(end.exitCode, 2) << value;
    EXPECT_THAT(end.output, IsEmpty());
  }
}

TEST_F(ProgramReportParts, MusicGivesLoudnessByStemsAndSectionsAndChapters) {
  writeMusic("music.json");
  const auto all = document({"--music", "music.json", "--chapters-from-music"});
  const auto vocal = all.at("stemGatedLoudness").at("vocal");
  EXPECT_NEAR(vocal.at("presentLUFS").get<double>(), -14, 0.1);
  EXPECT_GT(vocal.at("balanceLU").get<double>(), 5);
  const auto sections = all.at("sectionLoudness");
  ASSERT_EQ(sections.at("entries").size(), 3U);
  EXPECT_NEAR(sections.at("medianLUFS").get<double>(), -20, 0.2);
  EXPECT_NEAR(sections.at("entries")[2].at("deviationLU").get<double>(), 6, 0.2);
  const auto chapters = all.at("chapters");
  EXPECT_EQ(chapters.at("origin"), "music");
  EXPECT_EQ(chapters.at("deviationThresholdLU"), 2.0);
  ASSERT_EQ(chapters.at("entries").size(), 3U);
  EXPECT_EQ(chapters.at("entries")[1].at("name"), "Section 2");
  EXPECT_NEAR(chapters.at("entries")[1].at("integratedLUFS").get<double>(), -20, 0.05);
  const auto table = analyze({"--music", "music.json", "--chapters-from-music"}).output;
  EXPECT_THAT(table, AllOf(HasSubstr("Vocal"), HasSubstr("Section 3"), HasSubstr("+6.0!")));
}

TEST_F(ProgramReportParts, MusicIsPartOfTheReport) {
  writeMusic("music.json");
  EXPECT_EQ(analyze({"--music", "music.json", "--report", "r.json"}).exitCode, 0);
  const auto report = decodeJSON<OrvaneReport>(orvane::test::readFile(folder() / "r.json"));
  ASSERT_TRUE(report.musicAnalysis);
  EXPECT_EQ(report.musicAnalysis->source, "a test");
  EXPECT_EQ(report.musicAnalysis->dominantKey()->label(), "F♯ minor");
  EXPECT_TRUE(report.stemGatedLoudness);
}

TEST_F(ProgramReportParts, MusicOfAnotherLengthIsToldAndCut) {
  writeMusic("music.json", 100);
  const auto end = run({"analyze", "good.wav", "--music", "music.json"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output, HasSubstr("The music analysis is of 1:40.000, the file lasts 0:01.000."));
}

TEST_F(ProgramReportParts, BrokenMusicIsToldBeforeAnythingIsMeasured) {
  folder().write("broken.json", "{\"source\": 1}");
  folder().write("cut.json", "{\"source\": \"x");
  for (const auto& [file, reason] : std::vector<std::pair<std::string, std::string>>{
           {"broken.json", "broken.json: "},
           {"cut.json", "cut.json: "},
           {"steps.wav", "steps.wav: "},
           {"missing.json", "missing.json: No such file or directory"}}) {
    const auto end = analyze({"--music", file});
    EXPECT_EQ(end.exitCode, 1) << file;
    EXPECT_THAT(end.errors, HasSubstr("orvane: " + reason));
    EXPECT_THAT(end.output, IsEmpty());
  }
  const auto several = analyze({"good.wav", "--music", "broken.json"});
  EXPECT_EQ(several.exitCode, 2);
}

TEST_F(ProgramReportParts, ChannelsAreCalledAsTheUserSays) {
  const auto end = analyze({"--channel-labels", "Boom,Lav"});
  EXPECT_THAT(end.output, AllOf(HasSubstr("(Boom Lav)"), HasSubstr("\n  Boom ")));
  EXPECT_EQ(document({"--channel-labels", "Boom,Lav"}).at("channelLabels"), Json({"Boom", "Lav"}));
  EXPECT_EQ(analyze({"--channel-labels", "Boom,Lav", "--report", "r.json"}).exitCode, 0);
  const auto report = decodeJSON<OrvaneReport>(orvane::test::readFile(folder() / "r.json"));
  EXPECT_EQ(report.file.channelLayout, "Boom Lav");
  EXPECT_EQ(report.channels.at(1).label, "Lav");
  const auto wrong = analyze({"--channel-labels", "A,B,C"});
  EXPECT_EQ(wrong.exitCode, 1);
  EXPECT_EQ(wrong.errors, "orvane: steps.wav: --channel-labels names 3 channels, the file has 2\n");
}

TEST_F(ProgramReportParts, ChannelsOfUnknownPlaceHaveTheReportsNames) {
  folder().write("twelve.wav", waveFile(sineSamples(4800, 0.5, 12), 12));
  const auto end = run({"analyze", "twelve.wav", "--report", "-"});
  const auto report = decodeJSON<OrvaneReport>(end.output);
  EXPECT_EQ(report.file.channelLayout, "Ch1 Ch2 Ch3 Ch4 Ch5 Ch6 Ch7 Ch8 Ch9 Ch10 Ch11 Ch12");
  EXPECT_EQ(report.channels.at(11).label, "Ch12");
}

TEST_F(ProgramReportParts, StandardInputIsReadOnlyOnce) {
  writeMusic("music.json");
  ProgramSetup setup;
  setup.input = orvane::test::readFile(folder() / "music.json");
  setup.arguments = {"analyze", "steps.wav", "--music", "-", "--json"};
  EXPECT_TRUE(jsonLines(run(setup).output).at(0).contains("stemGatedLoudness"));
  for (const auto& arguments : std::vector<std::vector<std::string>>{
           {"analyze", "-", "--music", "-"},
           {"analyze", "steps.wav", "--music", "-", "--chapters", "-"}}) {
    setup.arguments = arguments;
    const auto end = run(setup);
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_THAT(end.errors, HasSubstr("standard input can be read only once"));
  }
}

}  // namespace
}  // namespace orvane::cli::test
