#include "orvane/report/orvane_report.h"
#include "tests/cli/program_fixture.h"
#include "tests/support/test_places.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

/// good.wav is a sine of −6 dBFS on both channels: about −6 LUFS, far too loud for broadcasting.
/// r128.wav has the loudness that EBU R 128 asks for.
class ProgramTargets : public ProgramTest {
 protected:
  ProgramTargets() {
    // A sine of 1 kHz on both channels has the loudness of its peak level, here −23.
    folder().write("r128.wav", waveFile(sineSamples(48'000 * 5, std::pow(10, -23.0 / 20))));
  }
  ProgramEnd analyze(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "analyze");
    return run(arguments);
  }
};

TEST_F(ProgramTargets, AreJudgedInTheTable) {
  const auto end = analyze({"good.wav", "--targets", "ebu-r128,spotify,netflix"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output, HasSubstr("\n  Target      Asks for"));
  EXPECT_THAT(end.output, HasSubstr("-23±0.2 LUFS · ≤ -1 dBTP"));
  EXPECT_THAT(end.output, HasSubstr("Not compliant · L (-6.0 LUFS)\n"));
  EXPECT_THAT(end.output, HasSubstr("-8.0 dB · platform gain\n"));
  EXPECT_THAT(end.output, HasSubstr("not judged: no speech found\n"));
}

TEST_F(ProgramTargets, AreNotShownUnlessAskedFor) {
  EXPECT_THAT(analyze({"good.wav", "--html", "r.html"}).output, Not(HasSubstr("Verdict")));
  EXPECT_FALSE(jsonLines(analyze({"good.wav", "--json"}).output)[0].contains("loudnessTargets"));
}

TEST_F(ProgramTargets, AreInTheJSONAsInTheReport) {
  const auto end = analyze({"r128.wav", "--json", "--targets", "ebu-r128", "--report", "r.json"});
  const auto targets = jsonLines(end.output)[0].at("loudnessTargets");
  EXPECT_EQ(targets.at("activeMode"), "broadcast");
  ASSERT_EQ(targets.at("targets").size(), 1U);
  const auto target = targets.at("targets")[0];
  EXPECT_EQ(target.at("id"), "ebu-r128");
  EXPECT_EQ(target.at("verdict").at("status"), "compliant");
  EXPECT_EQ(target.at("verdict").at("truePeakClean"), true);
  const auto report = Json::parse(orvane::test::readFile(folder() / "r.json"));
  EXPECT_EQ(report.at("loudnessTargets"), targets);
}

TEST_F(ProgramTargets, OfAModeAreItsFirstFour) {
  const auto end = analyze({"good.wav", "--json", "--mode", "podcast"});
  const auto targets = jsonLines(end.output)[0].at("loudnessTargets");
  EXPECT_EQ(targets.at("activeMode"), "podcast");
  EXPECT_EQ(targets.at("targets").size(), 4U);
  const auto both = analyze({"good.wav", "--json", "--mode", "vod", "--targets", "ebu-r128"});
  const auto chosen = jsonLines(both.output)[0].at("loudnessTargets");
  EXPECT_EQ(chosen.at("activeMode"), "vod");
  EXPECT_EQ(chosen.at("targets").size(), 1U);
}

TEST_F(ProgramTargets, ThatAreMissedEndAnEnforcedRunWithThree) {
  const auto end = analyze({"good.wav", "r128.wav", "--targets", "ebu-r128", "--enforce"});
  EXPECT_EQ(end.exitCode, 3);
  EXPECT_EQ(end.errors,
            "orvane: good.wav: misses EBU R 128 (ebu-r128): Not compliant · L (-6.0 LUFS)\n");
  EXPECT_THAT(end.output, HasSubstr("r128.wav"));
  EXPECT_EQ(analyze({"good.wav", "--targets", "ebu-r128"}).exitCode, 0);
}

TEST_F(ProgramTargets, ThatAreMetEndAnEnforcedRunWell) {
  const auto end = analyze({"r128.wav", "--targets", "ebu-r128", "--enforce"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.errors, IsEmpty());
}

TEST_F(ProgramTargets, ThatAreMissedCountLessThanAFileThatFails) {
  for (const auto& files : std::vector<std::vector<std::string>>{{"missing.wav", "good.wav"},
                                                                 {"good.wav", "missing.wav"}}) {
    auto arguments = files;
    arguments.insert(arguments.end(), {"--targets", "ebu-r128", "--enforce"});
    const auto end = analyze(arguments);
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors, HasSubstr("misses EBU R 128"));
  }
}

TEST_F(ProgramTargets, AreEnforcedWithJSONRowsAndReportsAlike) {
  for (const auto& form :
       std::vector<std::vector<std::string>>{{"--json"}, {"-q"}, {"--csv", "-"}}) {
    std::vector<std::string> arguments = {"good.wav", "--targets", "ebu-r128", "--enforce"};
    arguments.insert(arguments.end(), form.begin(), form.end());
    const auto end = analyze(arguments);
    EXPECT_EQ(end.exitCode, 3) << form[0];
    EXPECT_THAT(end.errors, HasSubstr("misses EBU R 128"));
    EXPECT_THAT(end.output, Not(IsEmpty()));
  }
}

TEST_F(ProgramTargets, AreJudgedOnTheSelection) {
  // Two seconds at −23, two at −6.
  folder().write("mixed.wav", waveFile(sineSamples(96'000, std::pow(10, -23.0 / 20)) +
                                       sineSamples(96'000, 0.5)));
  EXPECT_EQ(analyze({"mixed.wav", "--targets", "ebu-r128", "--enforce"}).exitCode, 3);
  EXPECT_EQ(
      analyze({"mixed.wav", "--targets", "ebu-r128", "--enforce", "--selection", "0-2"}).exitCode,
      0);
}

// A target that could not be judged was not missed, and a check for it passed.
TEST_F(ProgramTargets, ThatCannotBeJudgedAreMissed) {
  folder().write("silence.wav", waveFile(std::string(48'000 * 4 * 4, '\0')));
  const auto reason = [&](const std::string& file, const std::string& target) {
    const auto end = analyze({file, "--targets", target, "--enforce"});
    EXPECT_EQ(end.exitCode, 3) << target;
    return end.errors;
  };
  EXPECT_EQ(reason("silence.wav", "ebu-r128"),
            "orvane: silence.wav: misses EBU R 128 (ebu-r128): too quiet to judge\n");
  EXPECT_THAT(reason("silence.wav", "spotify"), HasSubstr("too quiet to judge"));
  EXPECT_THAT(reason("silence.wav", "netflix"), HasSubstr("not judged: no speech found"));
}

// The noise floor is measured of a selection, and nobody had asked for one.
TEST_F(ProgramTargets, WithANoiseFloorTakeTheWholeFileAsTheSelection) {
  // A sine is no speech, so all of it counts as noise.
  folder().write("book.wav", waveFile(sineSamples(48'000 * 5, std::pow(10, -17.5 / 20))));
  const auto end = analyze({"book.wav", "--json", "--targets", "acx", "--enforce"});
  EXPECT_EQ(end.exitCode, 3);
  EXPECT_THAT(end.errors, HasSubstr("misses ACX / Audible (acx): Not compliant · NF (-20.5 dB)"));
  const auto figures = jsonLines(end.output).at(0);
  EXPECT_EQ(figures.at("selection").at("startTime"), 0);
  EXPECT_EQ(figures.at("selection").at("endTime"), 5);
  EXPECT_NEAR(figures.at("selection").at("speechGatedNoiseFloorDBRMS").get<double>(), -20.5, 0.1);
  EXPECT_THAT(analyze({"book.wav", "--targets", "acx", "--selection", "1-2"}).output,
              HasSubstr("Selection 0:01.000"));
}

TEST_F(ProgramTargets, TellEveryBrokenRule) {
  folder().write("loud.wav", waveFile(sineSamples(48'000 * 5, 0.99)));
  const auto table = analyze({"loud.wav", "--targets", "ebu-r128-s1"}).output;
  EXPECT_THAT(table, HasSubstr("Not compliant · L (-0.1 LUFS)\n"));
  EXPECT_THAT(table, HasSubstr("  and S↑ (-0.1 LUFS)\n"));
  EXPECT_THAT(table, HasSubstr("  and TP (-0.1 dBTP)\n"));
  const auto end = analyze({"loud.wav", "--json", "--targets", "ebu-r128-s1", "--enforce"});
  EXPECT_THAT(end.errors, HasSubstr("L (-0.1 LUFS), S↑ (-0.1 LUFS), TP (-0.1 dBTP)\n"));
  const auto verdict = jsonLines(end.output).at(0).at("verdicts").at(0);
  EXPECT_EQ(verdict.at("id"), "ebu-r128-s1");
  EXPECT_EQ(verdict.at("isMet"), false);
  EXPECT_NEAR(verdict.at("deltaLU").get<double>(), 22.9, 0.05);
  std::vector<std::string> rules;
  for (const auto& rule : verdict.at("brokenRules")) rules.push_back(rule.at("rule"));
  EXPECT_THAT(rules, ::testing::ElementsAre("loudness", "shortTerm", "truePeak"));
  EXPECT_EQ(verdict.at("brokenRules").at(2).at("limit"), -1);
}

// It asked that all four be met, which contradict each other, and for speech detection besides.
TEST_F(ProgramTargets, OfAModeAreEnforcedWhenOneIsMet) {
  const auto end = analyze({"r128.wav", "good.wav", "--mode", "broadcast", "--enforce", "-q"});
  EXPECT_EQ(end.exitCode, 3);
  EXPECT_THAT(end.errors,
              StartsWith("orvane: r128.wav: meets EBU R 128 (ebu-r128), EBU R 128 (live) "
                         "(ebu-r128-live), EBU R 128 s1 (short-form) (ebu-r128-s1)\n"
                         "orvane: good.wav: misses EBU R 128 (ebu-r128): "));
  EXPECT_THAT(end.errors, HasSubstr("misses ATSC A/85 (atsc-a85): not judged: no speech found"));
  EXPECT_EQ(analyze({"r128.wav", "--mode", "broadcast", "--enforce", "-q"}).exitCode, 0);
  EXPECT_EQ(analyze({"r128.wav", "--targets", "ebu-r128,atsc-a85", "--enforce"}).exitCode, 3);
}

TEST_F(ProgramTargets, ForLittleDialogueAreJudgedWhereThereIsLittle) {
  folder().write("film.wav", waveFile(sineSamples(48'000 * 5, std::pow(10, -24.0 / 20))));
  const std::vector<std::string> arguments = {"film.wav", "--targets", "netflix-lowdialog",
                                              "--enforce"};
  EXPECT_EQ(analyze(arguments).exitCode, 0);
  auto allSpeech = arguments;
  allSpeech.insert(allSpeech.end(), {"--vad-threshold", "0"});
  const auto end = analyze(allSpeech);
  EXPECT_EQ(end.exitCode, 3);
  EXPECT_THAT(end.errors, HasSubstr("not judged: too much speech"));
}

/// The block of JSON that the document of file formats shows.
std::string documentedTargets() {
  const auto text = orvane::test::readFile(orvane::test::places::formatsDocument);
  const auto start = text.find("```json\n[", text.find("## Delivery targets")) + 8;
  return text.substr(start, text.find("```", start) - start);
}

TEST_F(ProgramTargets, OfTheHouseAreReadAsDocumented) {
  folder().write("house.json", documentedTargets());
  const auto end =
      analyze({"r128.wav", "good.wav", "--json", "--target-file", "house.json", "--enforce"});
  EXPECT_EQ(end.exitCode, 3);
  EXPECT_EQ(end.errors,
            "orvane: good.wav: misses House, television (house-tv): Not compliant · L (-6.0 LUFS), "
            "S↑ (-10.8 LUFS)\n");
  const auto verdicts = jsonLines(end.output).at(0).at("verdicts");
  EXPECT_EQ(verdicts.at(0).at("id"), "house-tv");
  EXPECT_EQ(verdicts.at(1).at("isMet"), true);
  EXPECT_THAT(
      analyze({"r128.wav", "--target-file", "house.json", "--targets", "house-radio,spotify"})
          .output,
      ::testing::AllOf(HasSubstr("House, radio"), HasSubstr("Spotify"),
                       Not(HasSubstr("House, television"))));
  const auto listed = run({"targets", "--mode", "broadcast", "--target-file", "house.json"});
  EXPECT_THAT(listed.output, HasSubstr("\nhouse.json\n  ID "));
  EXPECT_THAT(listed.output, HasSubstr("-23±0.5 LUFS · ≤ -3 dBTP · S ≤ -18 LUFS"));
  const auto targets = jsonLines(run({"targets", "--json", "--target-file", "house.json"}).output);
  EXPECT_EQ(targets.back().at("id"), "house-radio");
}

TEST_F(ProgramTargets, OfTheHouseHaveColumns) {
  folder().write("house.json", documentedTargets());
  const auto end = analyze({"r128.wav", "good.wav", "-q", "--target-file", "house.json",
                            "--targets", "house-radio,house-tv,spotify", "--summary", "s.csv"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, HasSubstr("    spotify  by LU   house-tv  by LU  house-radio  by LU  "
                                    "File\n"));
  EXPECT_THAT(end.output,
              HasSubstr("  normalize   -9.0       pass    0.0         pass   -7.0  r128.wav\n"));
  EXPECT_THAT(end.output,
              HasSubstr("  normalize   +8.0       fail  +17.0    normalize  +10.0  good.wav\n"));
  const std::string summary = orvane::test::readFile(folder() / "s.csv");
  EXPECT_THAT(summary, HasSubstr(",spotify.verdict,spotify.deltaLU,house-tv.verdict,"
                                 "house-tv.deltaLU,house-radio.verdict,house-radio.deltaLU\n"));
  EXPECT_THAT(summary,
              ::testing::ContainsRegex("\nr128.wav,.*,pass,[-0-9.e]+,pass,-[67][.0-9]*\n"));
  EXPECT_THAT(summary,
              ::testing::ContainsRegex("\ngood.wav,.*,fail,1[67][.0-9]+,normalize,[.0-9]+\n"));
}

// Of several rules that could not be judged one was told, and none beside a broken one.
TEST_F(ProgramTargets, TellEveryRuleThatCannotBeJudged) {
  folder().write("silence.wav", waveFile(std::string(48'000 * 4 * 4, '\0')));
  const auto silence = analyze({"silence.wav", "--targets", "acx"});
  EXPECT_THAT(silence.output, HasSubstr("too quiet to judge\n"));
  EXPECT_THAT(silence.output, HasSubstr("  and not judged: no noise floor\n"));
  // All of it is taken for speech, which leaves nothing to measure the noise in.
  folder().write("loud.wav", waveFile(sineSamples(48'000 * 5, 0.99)));
  const std::vector<std::string> loud = {"loud.wav", "--targets", "acx", "--vad-threshold", "0"};
  const auto table = analyze(loud).output;
  EXPECT_THAT(table, HasSubstr("Not compliant · L (-3.1 dB RMS)\n"));
  EXPECT_THAT(table, HasSubstr("  and TP (-0.1 dBTP)\n"));
  EXPECT_THAT(table, HasSubstr("  and not judged: no noise floor\n"));
  auto json = loud;
  json.insert(json.end(), {"--json", "--html", "loud.html"});
  const auto verdict = jsonLines(analyze(json).output).at(0).at("verdicts").at(0);
  EXPECT_EQ(verdict.at("brokenRules").size(), 2U);
  EXPECT_THAT(verdict.at("notJudged"), ::testing::ElementsAre("noiseFloorUnknown"));
  EXPECT_THAT(orvane::test::readFile(folder() / "loud.html"),
              HasSubstr("Also not judged: no noise floor."));
}

TEST_F(ProgramTargets, OfTheHouseThatAreWrongNameTheKey) {
  folder().write("house.json", "[{\"id\":\"a\",\"tolerance\":1}]");
  const auto end = analyze({"good.wav", "--target-file", "house.json"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors, "orvane: house.json: \"[0].tolerance\" is a key that no target has.\n");
  EXPECT_EQ(run({"targets", "--target-file", "missing.json"}).exitCode, 1);
  EXPECT_EQ(analyze({"good.wav", "--target-file", "-"}).exitCode, 2);
}

TEST_F(ProgramTargets, OfTheHouseAreNeverOverwritten) {
  folder().write("house.json", documentedTargets());
  const auto end =
      analyze({"good.wav", "--target-file", "house.json", "--csv", "house.json", "--force"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, StartsWith("orvane: Refusing to overwrite source file"));
}

TEST_F(ProgramTargets, RefuseChoicesThatMakeNoSense) {
  for (const auto& [arguments, reason] :
       std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{"--targets", "bogus"}, "unknown target 'bogus'; \"orvane targets\" lists them"},
           {{"--targets", ""}, "unknown target ''"},
           {{"--targets", "spotify,youtube,tidal,deezer,amazon-music"}, "at most 4 targets"},
           {{"--mode", "radio"}, "--mode is one of music, podcast, vod, broadcast, not 'radio'"},
           {{"--enforce"}, "--enforce needs --targets, --mode or --target-file"}}) {
    auto all = arguments;
    all.insert(all.begin(), "good.wav");
    const auto end = analyze(all);
    EXPECT_EQ(end.exitCode, 2) << reason;
    EXPECT_THAT(end.errors, HasSubstr(reason));
    EXPECT_THAT(end.errors, EndsWith(" (see orvane analyze --help)\n"));
  }
}

}  // namespace
}  // namespace orvane::cli::test
