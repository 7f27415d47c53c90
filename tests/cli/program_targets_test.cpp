#include "orvane/report/orvane_report.h"
#include "tests/cli/program_fixture.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

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
  EXPECT_THAT(end.output, HasSubstr("not judged: no speech measured\n"));
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

TEST_F(ProgramTargets, RefuseChoicesThatMakeNoSense) {
  for (const auto& [arguments, reason] :
       std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{"--targets", "bogus"}, "unknown target 'bogus'; \"orvane targets\" lists them"},
           {{"--targets", ""}, "unknown target ''"},
           {{"--targets", "spotify,youtube,tidal,deezer,amazon-music"}, "at most 4 targets"},
           {{"--mode", "radio"}, "--mode is one of music, podcast, vod, broadcast, not 'radio'"},
           {{"--enforce"}, "--enforce needs --targets or --mode"},
           // It could not be missed, as nothing is measured that it is about.
           {{"--enforce", "--targets", "netflix"}, "--enforce needs --speech or --dialogue"}}) {
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
