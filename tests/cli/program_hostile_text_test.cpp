#include "orvane/report/orvane_report.h"
#include "orvane/text/utf8.h"
#include "tests/cli/program_fixture.h"
#include "tests/support/whole_file.h"

namespace orvane::cli::test {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

/// Markup, quotes, a formula, a terminal's colour, reversed writing and bytes that are no text.
constexpr const char* kFileName = "=cmd <b title=\"x\">'&\x1B[31m\u202E\xFF.wav";
constexpr const char* kText = "=cmd</script><script>alert(\"1\")'&\x1B[31m\u202E";

/// The same text in the names of a file, its channels, its chapters and its targets.
class ProgramHostileText : public ProgramTest {
 protected:
  ProgramHostileText() {
    std::filesystem::rename(folder() / "good.wav", folder() / kFileName);
    folder().write("chapters.json", Json({{{"startSec", 0}, {"name", kText}}}).dump());
  }

  ProgramEnd analyze(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"analyze", kFileName, "--chapters", "chapters.json",
                                         "--channel-labels", std::string(kText) + ",\xFFR"});
    const auto end = run(arguments);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return end;
  }
  std::string content(const std::string& name) const {
    return orvane::test::readFile(folder() / name);
  }

  /// What no reader may ever meet.
  static void expectHarmless(const std::string& text) {
    EXPECT_TRUE(isValidUTF8(text));
    EXPECT_THAT(text, Not(HasSubstr("\x1B")));
    EXPECT_THAT(text, Not(HasSubstr("\u202E")));
  }
};

// Sentences once ended at a NUL.
TEST_F(ProgramHostileText, DoesNotCutSentencesShort) {
  folder().write("list.csv", std::string("start,end,label\n1") + '\0' + "2,3,x\n");
  const auto end = run({"dialogue", "import", "list.csv", kFileName});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors,
            "orvane: list.csv: Line 2: the start \"1\\x002\" is no number of seconds.\n");
}

TEST_F(ProgramHostileText, IsEscapedOnTheTerminal) {
  const auto end = analyze({"--targets", "spotify"});
  expectHarmless(end.output);
  EXPECT_THAT(end.output, HasSubstr("=cmd <b title=\"x\">'&\\x1B[31m\\u202E\\xFF.wav\n"));
  EXPECT_THAT(end.output, HasSubstr("=cmd</script><script>"));
}

TEST_F(ProgramHostileText, IsEscapedInErrors) {
  const auto end = run({"analyze", std::string("no") + kFileName, "--html", "r.html"});
  EXPECT_EQ(end.exitCode, 1);
  expectHarmless(end.errors);
  EXPECT_THAT(end.errors, HasSubstr("no=cmd <b title=\"x\">'&\\x1B[31m\\u202E\\xFF.wav"));
}

TEST_F(ProgramHostileText, IsASCIIInJSON) {
  const auto end = analyze({"--json", "--mode", "music"});
  for (const char byte : end.output) EXPECT_LT(static_cast<unsigned char>(byte), 0x80);
  EXPECT_THAT(end.output, Not(HasSubstr("\x1B")));
  const auto document = jsonLines(end.output).at(0);
  EXPECT_EQ(document.at("chapters").at("entries")[0].at("name"), kText);
  EXPECT_EQ(document.at("channelLabels")[1], "\uFFFDR");
}

TEST_F(ProgramHostileText, IsEscapedInTheRecord) {
  analyze({"--report", "r.json"});
  expectHarmless(content("r.json"));
  const auto report = decodeJSON<OrvaneReport>(content("r.json"));
  EXPECT_EQ(report.chapters->entries.at(0).name, kText);
  EXPECT_EQ(report.channels.at(0).label, kText);
  EXPECT_EQ(report.file.fileName, "=cmd <b title=\"x\">'&\x1B[31m\u202E\uFFFD.wav");
}

TEST_F(ProgramHostileText, IsEscapedInHTML) {
  analyze({"--html", "r.html"});
  const auto page = content("r.html");
  expectHarmless(page);
  EXPECT_THAT(page, AllOf(Not(HasSubstr("<script")), Not(HasSubstr("</script")),
                          Not(HasSubstr("<b title"))));
  EXPECT_THAT(page, HasSubstr("=cmd &lt;b title=&quot;x&quot;&gt;&#39;&amp;"));
  EXPECT_THAT(page, HasSubstr("=cmd&lt;/script&gt;&lt;script&gt;alert(&quot;1&quot;)&#39;&amp;"));
}

TEST_F(ProgramHostileText, IsNoFormulaInCSV) {
  analyze({"--csv", "chapters.csv"});
  expectHarmless(content("chapters.csv"));
  EXPECT_THAT(content("chapters.csv"), HasSubstr("\"'=cmd</script><script>alert(\"\"1\"\")"));
  const auto end = run({"analyze", kFileName, "--csv", "-"});
  expectHarmless(end.output);
  EXPECT_THAT(end.output, HasSubstr("File,\"'=cmd <b title=\"\"x\"\">"));
}

// A record may come from anywhere.
TEST_F(ProgramHostileText, IsEscapedWhereARecordBringsIt) {
  analyze({"--report", "r.json", "--targets", "spotify"});
  auto report = decodeJSON<OrvaneReport>(content("r.json"));
  report.appVersion = kText;
  report.file.fileFormat = kText;
  report.file.channelLayout = kText;
  report.chapters->origin = kText;
  report.loudnessTargets.activeMode = kText;
  report.loudnessTargets.targets.at(0).id = "unknown";
  report.loudnessTargets.targets.at(0).name = kText;  // also part of the badge's tooltip
  report.musicAnalysis =
      MusicAnalysisResult{.source = kText, .duration = 1, .keys = {{{0, 1}, kText, kText}}};
  folder().write("hostile.json", encodeJSON(report));
  const auto end =
      run({"report", "hostile.json", "--html", "r.html", "--csv", "-", "--pdf", "r.pdf"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  expectHarmless(content("r.html"));
  EXPECT_THAT(content("r.html"), AllOf(Not(HasSubstr("<script")), Not(HasSubstr("</script"))));
  expectHarmless(end.output);
}

}  // namespace
}  // namespace orvane::cli::test
