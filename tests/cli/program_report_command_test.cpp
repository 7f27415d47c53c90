#include "orvane/core/targets/loudness_target.h"
#include "orvane/report/orvane_report.h"
#include "tests/cli/program_fixture.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class ProgramReportCommand : public ProgramTest {
 protected:
  ProgramReportCommand() {
    run({"analyze", "good.wav", "--report", "r.json", "--html", "first.html", "--csv",
         "first.csv"});
  }
  std::string content(const std::string& name) const {
    return orvane::test::readFile(folder() / name);
  }
};

TEST_F(ProgramReportCommand, RendersARecordAsItWasRenderedFirst) {
  const auto end = run({"report", "r.json", "--html", "again.html", "--csv", "-"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_EQ(content("again.html"), content("first.html"));
  EXPECT_EQ(end.output, content("first.csv"));
  EXPECT_THAT(end.errors, IsEmpty());
}

TEST_F(ProgramReportCommand, PrintsPDF) {
  const auto end = run({"report", "r.json", "--pdf", "-"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, StartsWith("%PDF-1."));
}

TEST_F(ProgramReportCommand, ReadsStandardInput) {
  ProgramSetup setup;
  setup.arguments = {"report", "-", "--csv", "-"};
  setup.input = content("r.json");
  EXPECT_EQ(run(setup).output, content("first.csv"));
}

TEST_F(ProgramReportCommand, WritesNumbersAndNamesAsReadersNeedThem) {
  auto report = decodeJSON<OrvaneReport>(content("r.json"));
  EXPECT_EQ(report.file.filePath, std::filesystem::canonical(folder() / "good.wav"));
  report.file.fileName = "-nan(1)";
  report.file.channelLayout = "Donau\u00ADdampf \u200F\u05D0";
  report.fullFile.samplePeakDB = report.fullFile.truePeakDB = -0.0F;
  folder().write("odd.json", encodeJSON(report));
  const auto end = run({"report", "odd.json", "--html", "odd.html", "--csv", "-"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output,
              AllOf(HasSubstr("File,\"'-nan(1)\"\r\n"), HasSubstr("Sample Peak (dBFS),0.00\r\n")));
  EXPECT_THAT(content("odd.html"),
              AllOf(HasSubstr("Donau\u00ADdampf \u200F\u05D0"), HasSubstr(">0.0 dBTP<")));
}

TEST_F(ProgramReportCommand, NeverLandsOnItsRecord) {
  const auto before = content("r.json");
  std::filesystem::create_symlink("r.json", folder() / "link");
  for (const char* output : {"r.json", "link"}) {
    const auto end = run({"report", "r.json", "--html", output, "--force"});
    EXPECT_EQ(end.exitCode, 1);
    EXPECT_THAT(end.errors, StartsWith("orvane: Refusing to overwrite source file"));
  }
  EXPECT_EQ(content("r.json"), before);
}

TEST_F(ProgramReportCommand, TellsWhatIsWrongWithARecordInOneSentence) {
  folder().write("cut.json", content("r.json").substr(0, 500));
  folder().write("empty.json", "");
  folder().write("other.json", "{\"generatedAt\":\"2024-01-31T12:00:00Z\"}");
  folder().write("deep.json", std::string(100'000, '['));
  for (const char* record :
       {"cut.json", "empty.json", "other.json", "deep.json", "good.wav", "missing.json", "."}) {
    const auto end = run({"report", record, "--html", "out.html"});
    EXPECT_EQ(end.exitCode, 1) << record;
    EXPECT_THAT(end.errors, EndsWith("\n"));
    EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1) << end.errors;
    EXPECT_FALSE(std::filesystem::exists(folder() / "out.html"));
  }
  EXPECT_EQ(run({"report", "other.json", "--html", "out.html"}).errors,
            "orvane: other.json: The key \"appVersion\" is missing.\n");
}

TEST_F(ProgramReportCommand, JudgesARecordAnew) {
  const auto end = run({"report", "r.json", "--targets", "ebu-r128,deezer", "--enforce"});
  EXPECT_EQ(end.exitCode, 3);
  EXPECT_THAT(end.output, StartsWith("r.json\n\n  Target "));
  EXPECT_THAT(end.output, HasSubstr("Not compliant · L (-6.0 LUFS)\n"));
  EXPECT_THAT(end.output, HasSubstr("-9.0 dB · platform gain\n"));
  EXPECT_EQ(end.errors,
            "orvane: r.json: misses EBU R 128 (ebu-r128): Not compliant · L (-6.0 LUFS)\n");
  const auto mode = run({"report", "r.json", "--mode", "music", "--enforce", "--json"});
  EXPECT_EQ(mode.exitCode, 0);
  EXPECT_THAT(mode.errors, StartsWith("orvane: r.json: meets Spotify (spotify), "));
  const auto verdicts = jsonLines(mode.output).at(0).at("verdicts");
  EXPECT_EQ(verdicts.size(), 4U);
  EXPECT_NEAR(verdicts.at(0).at("deltaLU").get<double>(), 8, 0.05);
}

TEST_F(ProgramReportCommand, RendersTheNewVerdicts) {
  EXPECT_THAT(content("first.html"), HasSubstr(">Spotify<"));
  const auto end = run({"report", "r.json", "--targets", "ebu-r128", "--html", "-"});
  EXPECT_THAT(end.output, StartsWith("<!DOCTYPE html>"));
  EXPECT_THAT(end.output, AllOf(HasSubstr(">EBU R 128<"), Not(HasSubstr(">Spotify<"))));
}

// The record holds no noise floor, and no speech was looked for.
TEST_F(ProgramReportCommand, PassesNothingThatTheRecordDoesNotHold) {
  const auto end = run({"report", "r.json", "--targets", "netflix", "--enforce"});
  EXPECT_EQ(end.exitCode, 3);
  EXPECT_THAT(end.errors, HasSubstr("not judged: no speech detection"));
}

TEST_F(ProgramReportCommand, NeedsSomethingToDo) {
  for (const auto& arguments :
       std::vector<std::vector<std::string>>{{"report"},
                                             {"report", "r.json"},
                                             {"report", "r.json", "--json"},
                                             {"report", "r.json", "--enforce", "--csv", "-"},
                                             {"report", "r.json", "--report", "x.json"}}) {
    const auto end = run(arguments);
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_THAT(end.errors, EndsWith(" (see orvane report --help)\n"));
  }
}

class ProgramTargetsCommand : public ProgramTest {};

TEST_F(ProgramTargetsCommand, ListsEveryTargetOnce) {
  const auto end = run({"targets"});
  EXPECT_EQ(end.exitCode, 0);
  for (const auto& target : core::LoudnessTargetCatalog::all())
    EXPECT_THAT(end.output, HasSubstr("\n  " + target.id + " "));
  for (const char* mode : {"music", "podcast", "vod", "broadcast"})
    EXPECT_THAT(end.output, HasSubstr(std::string("(--mode ") + mode + ")\n"));
  EXPECT_THAT(end.output, HasSubstr(" (unconfirmed) "));
}

TEST_F(ProgramTargetsCommand, ListsThoseOfAModeAlone) {
  const auto end = run({"targets", "--mode", "vod"});
  EXPECT_THAT(end.output, AllOf(HasSubstr("netflix"), Not(HasSubstr("spotify"))));
  EXPECT_EQ(run({"targets", "--mode", "radio"}).exitCode, 2);
}

TEST_F(ProgramTargetsCommand, ListsThemAsJSONWithTheirSources) {
  const auto documents = jsonLines(run({"targets", "--json"}).output);
  ASSERT_EQ(documents.size(), core::LoudnessTargetCatalog::all().size());
  for (const auto& document : documents) {
    EXPECT_FALSE(document.at("provenance").get<std::string>().empty());
    EXPECT_EQ(document.contains("boostBehaviour"), document.at("treatmentKind") == "penalty");
  }
  const auto acx = std::find_if(documents.begin(), documents.end(),
                                [](const auto& document) { return document.at("id") == "acx"; });
  ASSERT_NE(acx, documents.end());
  EXPECT_EQ(acx->at("mode"), "podcast");
  EXPECT_EQ(acx->at("source"), "rms");
  EXPECT_EQ(acx->at("referenceLUFS"), -20.5);
  EXPECT_EQ(acx->at("toleranceLU"), 2.5);
  EXPECT_EQ(acx->at("noiseFloorMaxDBRMS"), -60.0);
}

}  // namespace
}  // namespace orvane::cli::test
