#include <algorithm>
#include <csignal>
#include <thread>

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

class ProgramReports : public ProgramTest {
 protected:
  ProgramEnd analyze(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), "analyze");
    return run(arguments);
  }
  std::string content(const std::string& name) const {
    return orvane::test::readFile(folder() / name);
  }
  bool exists(const std::string& name) const { return std::filesystem::exists(folder() / name); }
  std::size_t fileCount() const {
    using Iterator = std::filesystem::directory_iterator;
    return static_cast<std::size_t>(std::distance(Iterator(folder().path()), Iterator()));
  }
};

TEST_F(ProgramReports, AreWrittenBesideTheTable) {
  const auto end =
      analyze({"good.wav", "--html", "r.html", "--csv", "r.csv", "--report", "r.json"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, HasSubstr("Integrated"));
  EXPECT_THAT(end.errors, IsEmpty());
  EXPECT_THAT(content("r.html"), AllOf(StartsWith("<!DOCTYPE html>"), HasSubstr("good.wav")));
  EXPECT_THAT(content("r.csv"), StartsWith("Metric,Value\r\nFile,good.wav\r\n"));
  const auto report = decodeJSON<OrvaneReport>(content("r.json"));
  EXPECT_EQ(report.file.fileName, "good.wav");
  EXPECT_EQ(report.file.channelLayout, "L R");
  EXPECT_EQ(report.channels.size(), 2U);
  EXPECT_EQ(report.loudnessTargets.activeMode, "music");
  EXPECT_EQ(report.loudnessTargets.targets.size(), 4U);
  EXPECT_TRUE(report.stereoWidth);
}

TEST_F(ProgramReports, TakeStandardOutputFromTheTable) {
  const auto end = analyze({"good.wav", "--csv", "-"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output, AllOf(StartsWith("Metric,Value\r\n"), Not(HasSubstr("Sample peak"))));
  const auto record = analyze({"good.wav", "--report", "-", "--html", "r.html"});
  EXPECT_EQ(decodeJSON<OrvaneReport>(record.output).file.fileName, "good.wav");
  EXPECT_TRUE(exists("r.html"));
}

TEST_F(ProgramReports, ShareStandardOutputWithNothing) {
  for (const auto& arguments : std::vector<std::vector<std::string>>{
           {"good.wav", "--csv", "-", "--html", "-"}, {"good.wav", "--csv", "-", "--json"}}) {
    const auto end = analyze(arguments);
    EXPECT_EQ(end.exitCode, 2);
    EXPECT_THAT(end.output, IsEmpty());
    EXPECT_THAT(end.errors, HasSubstr("standard output"));
  }
}

TEST_F(ProgramReports, OfSeveralFilesGoIntoAFolder) {
  folder().write("other.wav", waveFile(sineSamples(48'000, 0.1)));
  const auto end = analyze({"good.wav", "other.wav", "--jobs", "2", "--out", "made/here",
                            "--formats", "html,csv,report"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  for (const char* name : {"good.wav.html", "good.wav.csv", "good.wav.report.json",
                           "other.wav.html", "other.wav.csv", "other.wav.report.json"})
    EXPECT_TRUE(exists(std::string("made/here/") + name)) << name;
  const auto report = decodeJSON<OrvaneReport>(content("made/here/other.wav.report.json"));
  EXPECT_NEAR(*report.fullFile.samplePeakDB, -20, 0.01);
}

TEST_F(ProgramReports, OfFilesWithOneNameAreToldApartByTheirFolders) {
  for (const char* name : {"a", "b"}) {
    std::filesystem::create_directory(folder() / name);
    std::filesystem::copy_file(folder() / "good.wav", folder() / name / "song.wav");
  }
  EXPECT_EQ(analyze({"a/song.wav", "b/song.wav", "--out", "o", "--formats", "csv"}).exitCode, 0);
  EXPECT_TRUE(exists("o/a-song.wav.csv"));
  EXPECT_TRUE(exists("o/b-song.wav.csv"));
  const auto twice = analyze({"good.wav", "./good.wav", "--out", "p", "--formats", "csv"});
  EXPECT_EQ(twice.exitCode, 2);
  EXPECT_THAT(twice.errors, HasSubstr("would have the same name"));
  EXPECT_FALSE(exists("p"));
}

TEST_F(ProgramReports, OfAFileThatFailsAreNotWritten) {
  folder().write("bad.wav", "no audio at all");
  const auto end = analyze({"bad.wav", "good.wav", "--out", "o", "--formats", "csv"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_FALSE(exists("o/bad.wav.csv"));
  EXPECT_TRUE(exists("o/good.wav.csv"));
}

TEST_F(ProgramReports, NeedChoicesThatGoTogether) {
  for (const auto& arguments :
       std::vector<std::vector<std::string>>{{"good.wav", "--out", "o"},
                                             {"good.wav", "--formats", "csv"},
                                             {"good.wav", "--html", ""},
                                             {"good.wav", "--out", "o", "--formats", "csv,doc"},
                                             {"good.wav", "good.wav", "--html", "r.html"},
                                             {"good.wav", "--html", "same", "--csv", "./same"}}) {
    const auto end = analyze(arguments);
    EXPECT_EQ(end.exitCode, 2) << end.errors;
    EXPECT_THAT(end.errors, EndsWith(" (see orvane analyze --help)\n"));
    EXPECT_THAT(end.output, IsEmpty());
  }
}

TEST_F(ProgramReports, ReplaceFilesOnlyWhenForced) {
  folder().write("r.csv", "mine");
  const auto end = analyze({"good.wav", "--csv", "r.csv"});
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors, "orvane: r.csv: File exists; --force replaces it\n");
  EXPECT_THAT(end.output, IsEmpty());
  EXPECT_EQ(content("r.csv"), "mine");
  EXPECT_EQ(analyze({"good.wav", "--csv", "r.csv", "--force"}).exitCode, 0);
  EXPECT_THAT(content("r.csv"), StartsWith("Metric"));
}

TEST_F(ProgramReports, NeverLandOnWhatIsRead) {
  const auto before = content("good.wav");
  folder().write("good.wav.dlg.json", "{}");
  folder().write("music.json", "{}");
  folder().write("names.txt", "good.wav\n");
  std::filesystem::create_symlink("good.wav", folder() / "link.html");
  std::filesystem::create_hard_link(folder() / "good.wav", folder() / "twin.html");
  for (const char* output : {"good.wav", "./good.wav", "link.html", "twin.html", "music.json",
                             "good.wav.dlg.json", "names.txt"}) {
    const auto end = analyze({"--files-from", "names.txt", "--dialogue", "--music", "music.json",
                              "--html", output, "--force"});
    EXPECT_EQ(end.exitCode, 1) << output;
    EXPECT_THAT(end.errors, testing::AnyOf(StartsWith("orvane: Refusing to overwrite source file"),
                                           HasSubstr("it is another name of \"good.wav\"")))
        << output;
    EXPECT_THAT(end.output, IsEmpty());
  }
  EXPECT_EQ(content("good.wav"), before);
}

TEST_F(ProgramReports, AreRefusedBeforeAnythingIsMeasured) {
  std::filesystem::create_directory(folder() / "taken");
  std::filesystem::create_symlink("nowhere/r.html", folder() / "dangling.html");
  const auto files = fileCount();
  for (const auto& [output, reason] : std::vector<std::pair<std::string, std::string>>{
           {"missing/r.html", "r.html: there is no folder \"missing\""},
           {"good.wav/r.html", "r.html: there is no folder \"good.wav\""},
           {"taken", "taken: Is a directory"},
           {"dangling.html", "dangling.html: No such file or directory"},
           {"/dev/full", "full: Not a regular file"},
           {"/sys/r.html", "r.html: Permission denied"},  // not even root may write there
           {std::string(300, 'x'), "File name too long"}}) {
    // The second output would be fine, and the first is only found out about by trying.
    const auto end = analyze({"good.wav", "--csv", "fine.csv", "--html", output});
    EXPECT_EQ(end.exitCode, 1) << output;
    EXPECT_THAT(end.errors, HasSubstr(reason));
    EXPECT_THAT(end.output, IsEmpty());
  }
  EXPECT_THAT(analyze({"good.wav", "--html", "taken", "--force"}).errors,
              HasSubstr("taken: Is a directory"));
  EXPECT_THAT(analyze({"good.wav", "--html", "/dev/full", "--force"}).errors,
              HasSubstr("full: Not a regular file"));
  EXPECT_EQ(fileCount(), files);
}

TEST_F(ProgramReports, ArePrintedAsPDFOfOnePage) {
  const auto end = analyze({"good.wav", "--pdf", "-"});
  EXPECT_EQ(end.exitCode, 0) << end.errors;
  EXPECT_THAT(end.output, AllOf(StartsWith("%PDF-1."), HasSubstr("/MediaBox [0 0 794 1123]")));
}

TEST_F(ProgramReports, AreNoPDFForATerminal) {
  ProgramSetup setup;
  setup.arguments = {"analyze", "good.wav", "--pdf", "-"};
  setup.isOnTerminal = true;
  const auto end = run(setup);
  EXPECT_EQ(end.exitCode, 2);
  EXPECT_THAT(end.output, HasSubstr("PDF is nothing for a terminal"));
}

// A browser that never answers must not keep the user waiting.
TEST_F(ProgramReports, ThatTakeLongCanBeInterrupted) {
  folder().write("chromium-headless-shell", "#!/bin/sh\n: >\"$0.started\"\nexec /bin/sleep 100\n");
  std::filesystem::permissions(folder() / "chromium-headless-shell",
                               std::filesystem::perms::owner_all);
  const orvane::test::TemporaryDirectory temporary;
  ProgramSetup setup;
  setup.arguments = {"analyze", "good.wav", "--pdf", "r.pdf"};
  setup.environment = {"PATH=" + folder().path().string(), "TMPDIR=" + temporary.path().string()};
  setup.meanwhile = [&](int process) {
    for (int i = 0; i < 1'000 && !exists("chromium-headless-shell.started"); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    kill(process, SIGINT);
  };
  const auto end = run(setup);
  EXPECT_EQ(end.exitCode, 130);
  EXPECT_THAT(end.errors, IsEmpty());
  EXPECT_FALSE(exists("r.pdf"));
  EXPECT_TRUE(std::filesystem::is_empty(temporary.path()));
}

TEST_F(ProgramReports, AreAllButPDFWithoutABrowser) {
  ProgramSetup setup;
  setup.arguments = {"analyze", "good.wav", "--html", "r.html", "--pdf", "r.pdf"};
  setup.environment = {"PATH=" + folder().path().string()};
  const auto end = run(setup);
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_THAT(end.errors, AllOf(HasSubstr("chromium-headless-shell"), EndsWith("\n")));
  EXPECT_EQ(std::count(end.errors.begin(), end.errors.end(), '\n'), 1);
  EXPECT_THAT(end.output, IsEmpty());
  EXPECT_FALSE(exists("r.html"));
  setup.arguments = {"analyze", "good.wav", "--html", "r.html"};
  EXPECT_EQ(run(setup).exitCode, 0);
}

TEST_F(ProgramReports, ThatDoNotFitLeaveNothingBehind) {
  const auto files = fileCount();
  ProgramSetup setup;
  setup.arguments = {"analyze", "good.wav", "--html", "r.html"};
  setup.largestFile = 4096;
  const auto end = run(setup);
  EXPECT_EQ(end.exitCode, 1);
  EXPECT_EQ(end.errors, "orvane: r.html: File too large\n");
  EXPECT_EQ(fileCount(), files);
}

TEST_F(ProgramReports, OfStandardInputDoNotNameAFile) {
  ProgramSetup setup;
  setup.arguments = {"analyze", "-", "--report", "-"};
  setup.input = content("good.wav");
  const auto report = decodeJSON<OrvaneReport>(run(setup).output);
  EXPECT_EQ(report.file.fileName, "standard input");
  EXPECT_EQ(report.file.filePath, "-");
  setup.arguments = {"analyze", "-", "--out", "o", "--formats", "csv"};
  EXPECT_EQ(run(setup).exitCode, 0);
  EXPECT_TRUE(exists("o/stdin.csv"));
}

TEST_F(ProgramReports, AreTheSameBytesUnderASourceDate) {
  const auto bytes = [&](const char* zone) {
    ProgramSetup setup;
    setup.arguments = {"analyze", "good.wav", "--html", "r.html", "--pdf",
                       "r.pdf",   "--report", "-",      "--force"};
    setup.environment = {"SOURCE_DATE_EPOCH=1700000000", std::string("TZ=") + zone, "LC_ALL=C"};
    const auto end = run(setup);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    return content("r.html") + content("r.pdf") + end.output;
  };
  const auto first = bytes("UTC");
  EXPECT_THAT(first, HasSubstr("\"generatedAt\":\"2023-11-14T22:13:20Z\""));
  EXPECT_EQ(first, bytes("Asia/Tokyo"));
}

TEST_F(ProgramReports, RefuseASourceDateThatIsNone) {
  for (const char* value : {"yesterday", "-1", "1.5", "99999999999999", " 1"}) {
    ProgramSetup setup;
    setup.arguments = {"analyze", "good.wav", "--csv", "-"};
    setup.environment = {std::string("SOURCE_DATE_EPOCH=") + value};
    const auto end = run(setup);
    EXPECT_EQ(end.exitCode, 2) << value;
    EXPECT_THAT(end.errors, HasSubstr("SOURCE_DATE_EPOCH is no number of seconds since 1970"));
  }
}

}  // namespace
}  // namespace orvane::cli::test
