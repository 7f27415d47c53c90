#include "orvane/report/orvane_report.h"
#include "tests/cli/program_fixture.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// book.wav: ten seconds each at −30, −20 and −24 dBFS; cue points at their starts.
class ProgramChapters : public ProgramTest {
 protected:
  ProgramChapters() {
    std::string samples;
    for (const double level : {-30.0, -20.0, -24.0})
      samples += sineSamples(10 * 48'000, std::pow(10, level / 20));
    folder().write("book.wav", waveFile(samples) + cuePoints());
  }

  static std::string cuePoints() {
    std::string cue = littleEndian(3, 4);
    std::string list = "adtl";
    for (unsigned i = 0; i < 3; ++i) {
      const std::string name = "Cue " + std::to_string(i + 1) + "!";
      cue += littleEndian(i, 4) + littleEndian(0, 4) + "data" + littleEndian(0, 8) +
             littleEndian(std::uint64_t{i} * 480'000, 4);
      list += "labl" + littleEndian(5 + name.size(), 4) + littleEndian(i, 4) + name + '\0';
      if (name.size() % 2 == 0) list += '\0';
    }
    return "cue " + littleEndian(cue.size(), 4) + cue + "LIST" + littleEndian(list.size(), 4) +
           list;
  }

  ProgramEnd analyze(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"analyze", "book.wav"});
    return run(arguments);
  }
  Json chaptersBy(std::vector<std::string> arguments) const {
    arguments.emplace_back("--json");
    const auto end = analyze(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return jsonLines(end.output).at(0).at("chapters");
  }
};

TEST_F(ProgramChapters, OfAListAreMeasured) {
  folder().write("labels.txt", "0\t10\tOne\n10\t20\tTwo\n20\t30\tThree\n");
  const auto table = chaptersBy({"--chapters", "labels.txt"});
  EXPECT_EQ(table.at("origin"), "imported (Audacity labels)");
  EXPECT_EQ(table.at("deviationThresholdLU"), 2.0);
  EXPECT_NEAR(table.at("medianLUFS").get<double>(), -24, 0.1);
  ASSERT_EQ(table.at("entries").size(), 3U);
  EXPECT_EQ(table.at("entries")[1].at("name"), "Two");
  EXPECT_NEAR(table.at("entries")[1].at("deviationFromMedianLU").get<double>(), 4, 0.1);
  EXPECT_NEAR(table.at("entries")[0].at("rmsDBFS").get<double>(), -33, 0.1);
}

TEST_F(ProgramChapters, ThatDifferFromTheOthersAreFlagged) {
  folder().write("list.csv", "start,name\n0,One\n10,Two\n20,Three\n");
  const auto end = analyze({"--chapters", "list.csv", "--chapter-tolerance", "5"});
  EXPECT_THAT(end.output, HasSubstr("1  One      0:00.000 – 0:10.000   -30.0      -6.0!"));
  EXPECT_THAT(end.output, HasSubstr("2  Two      0:10.000 – 0:20.000   -20.0      +4.0 "));
  EXPECT_THAT(end.output, HasSubstr("Median -24.0 LUFS; flagged (!) when further than ±5.0 LU"));
}

TEST_F(ProgramChapters, ComeFromEveryKindOfList) {
  folder().write("a.json", R"({"chapters":[{"startTime":0,"title":"A"}]})");
  folder().write("a.cue", "FILE x WAVE\nTRACK 1 AUDIO\nTITLE A\nINDEX 01 00:00:00\n");
  EXPECT_EQ(chaptersBy({"--chapters", "a.json"}).at("origin"), "imported");
  EXPECT_EQ(chaptersBy({"--chapters", "a.cue"}).at("origin"), "imported (cue sheet)");
  EXPECT_EQ(chaptersBy({"--chapters", "a.cue"}).at("entries")[0].at("endSec"), 30.0);
}

TEST_F(ProgramChapters, OfAReportCanBeTakenAgain) {
  EXPECT_EQ(analyze({"--chapters-from-file", "--report", "r.json", "--csv", "r.csv"}).exitCode, 0);
  const auto first = chaptersBy({"--chapters-from-file"}).at("entries");
  EXPECT_EQ(chaptersBy({"--chapters", "r.json"}).at("entries"), first);
  EXPECT_EQ(chaptersBy({"--chapters", "r.csv"}).at("entries"), first);
}

TEST_F(ProgramChapters, OfTheFileItselfAreItsCuePoints) {
  const auto table = chaptersBy({"--chapters-from-file"});
  EXPECT_EQ(table.at("origin"), "from the file itself");
  ASSERT_EQ(table.at("entries").size(), 3U);
  EXPECT_EQ(table.at("entries")[2].at("name"), "Cue 3!");
  EXPECT_EQ(table.at("entries")[2].at("startSec"), 20.0);
  EXPECT_EQ(table.at("entries")[2].at("endSec"), 30.0);
}

TEST_F(ProgramChapters, ThatDoNotExistAreTold) {
  const auto none = run({"analyze", "good.wav", "--chapters-from-file"});
  EXPECT_EQ(none.exitCode, 0);
  EXPECT_THAT(none.output, HasSubstr("Warning: The file holds no chapters."));
  folder().write("late.txt", "50\t60\tlate\n");
  EXPECT_THAT(analyze({"--chapters", "late.txt"}).output,
              HasSubstr("Warning: None of the list's chapters lies in the file."));
}

// They were dropped without a word.
TEST_F(ProgramChapters, WithoutAudioAreNamed) {
  folder().write(
      "list.csv",
      "start,end,name\n0,10,One\n20,,No \x1Blength\n20,30,Two\n50,60,late\n3600,3700,\n");
  const auto end = analyze({"--chapters", "list.csv", "--csv", "-"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(end.errors,
            "orvane: warning: book.wav: 3 of the chapters have no audio and are left out: "
            "\"No \\x1Blength\" at 0:20.000, \"late\" at 0:50.000, one at 1:00:00.000.\n");
  const auto figures = jsonLines(analyze({"--chapters", "list.csv", "--json"}).output).at(0);
  EXPECT_THAT(figures.at("notes")[0].get<std::string>(), HasSubstr("\"late\" at 0:50.000"));
}

// They were shown as if they had not been measured.
TEST_F(ProgramChapters, ThatAreSilentSaySo) {
  folder().write("gap.wav", waveFile(sineSamples(96'000, 0.1) + std::string(96'000 * 4, '\0')));
  folder().write("list.csv", "start,name\n0,Sound\n2,Gap\n");
  const auto end = run({"analyze", "gap.wav", "--chapters", "list.csv", "--report", "r.json",
                        "--html", "first.html"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, HasSubstr("silence"));
  EXPECT_EQ(run({"report", "r.json", "--html", "again.html"}).exitCode, 0);
  for (const char* page : {"first.html", "again.html"})
    EXPECT_THAT(orvane::test::readFile(folder() / page),
                HasSubstr("<td class=\"chap-lufs\">silence</td>"));
}

TEST_F(ProgramChapters, AreTheSectionsOfMusicWhenAskedFor) {
  folder().write("music.json",
                 R"({"source":"x","analysedAt":"2024-01-31T12:00:00Z","duration":30,"stems":[],)"
                 R"("beats":[],"bars":[],"sections":[{"start":0,"end":15},{"start":15,"end":30}],)"
                 R"("segments":[],"phrases":[],"keys":[],"paces":[]})");
  EXPECT_EQ(chaptersBy({"--music", "music.json", "--chapters-from-music"}).at("entries").size(),
            2U);
  EXPECT_EQ(chaptersBy({"--music", "music.json", "--chapters-from-file"}).at("entries").size(), 3U);
  // They once were chapters unasked, and took the place of the music's figures in the CSV.
  const auto end = analyze({"--music", "music.json", "--csv", "-"});
  EXPECT_THAT(end.output, HasSubstr("\r\nKey (Apple Music Understanding),"));
}

TEST_F(ProgramChapters, OfBrokenListsAreToldInOneSentenceBeforeAnythingIsMeasured) {
  folder().write("broken.csv", "start,name\n0,a\nsoon,b\n");
  folder().write("broken.json", "[{\"startSec\":0},{\"name\":\"x\"}]");
  folder().write("empty.txt", "");
  for (const auto& [list, sentence] : std::vector<std::pair<std::string, std::string>>{
           {"broken.csv", "broken.csv: Line 3: the start \"soon\" is no time in the file."},
           {"broken.json", "broken.json: The key \"[1].startSec\" is missing."},
           {"empty.txt", "empty.txt: The list holds no chapters."},
           {"missing.txt", "missing.txt: No such file or directory"},
           {".", ".: Is a directory"}}) {
    const auto end = analyze({"--chapters", list});
    EXPECT_EQ(end.exitCode, 1) << list;
    EXPECT_EQ(end.errors, "orvane: " + sentence + "\n");
    EXPECT_THAT(end.output, IsEmpty());
  }
  // The audio itself is no list either.
  const auto end = analyze({"--chapters", "good.wav"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1);
}

TEST_F(ProgramChapters, RefuseChoicesThatMakeNoSense) {
  folder().write("a.txt", "0\t1\ta\n");
  for (const auto& arguments : std::vector<std::vector<std::string>>{
           {"--chapters", "a.txt", "--chapters-from-file"},
           {"good.wav", "--chapters", "a.txt"},
           {"--chapters-from-music"},
           {"--chapters-from-music", "--music", "m.json", "--chapters-from-file"},
           {"--chapters", "a.txt", "--chapter-tolerance", "-1"},
           {"--chapters-from-file", "--raw", "s16le,48000,2"}})
    EXPECT_EQ(analyze(arguments).exitCode, 2) << arguments[0];
}

TEST_F(ProgramChapters, AreProtectedFromReports) {
  folder().write("a.txt", "0\t1\ta\n");
  const auto end = analyze({"--chapters", "a.txt", "--csv", "a.txt", "--force"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(orvane::test::readFile(folder() / "a.txt"), "0\t1\ta\n");
}

}  // namespace
}  // namespace orvane::cli::test
