// What the program looks like on terminals of 80 and of 120 columns, as kept in golden/.

#include "tests/cli/program_fixture.h"
#include "tests/support/golden.h"
#include "tests/support/test_places.h"

namespace orvane::cli::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class ProgramNarrowTerminal : public ProgramTest {
 protected:
  ProgramNarrowTerminal() {
    folder().write(kLongName, waveFile(sineSamples(48'000, 0.25, 6), 6));
    folder().write("slow.wav", waveFile(sineSamples(24'000, 1), 2, 47'952));
  }

  /// What a terminal of that width shows in the end, its line ends as in files.
  std::string shown(const std::vector<std::string>& arguments, int columns) const {
    ProgramSetup setup;
    setup.arguments = arguments;
    setup.environment = {"TERM=xterm", "NO_COLOR=1", "COLUMNS=" + std::to_string(columns)};
    setup.isOnTerminal = true;
    std::string text = run(setup).output;
    constexpr std::string_view kRewritten = "\x1B[K";  // behind each state of the progress
    for (std::size_t end = 0; (end = text.find(kRewritten)) != std::string::npos;) {
      const std::size_t start = text.rfind('\n', end) + 1;
      text.erase(start, end + kRewritten.size() - start);
    }
    std::erase(text, '\r');
    return text;
  }

  static constexpr const char* kLongName =
      "a recording whose name says when, where and by whom it was made (take 2).wav";
};

TEST_F(ProgramNarrowTerminal, ShowsEverythingWithinTheWidthThereIs) {
  folder().write(
      "chapters.csv",
      "name,start,end\nA chapter whose title is a sentence of its own,0,0.5\nTwo,0.5,1\n");
  constexpr std::size_t kRate = 8'000;
  folder().write(
      "hours.wav",
      waveFile(sineSamples(3'650 * kRate, 0.1, 1) + std::string(10 * kRate * 2, '\0'), 1, kRate));
  folder().write("hours.csv",
                 "name,start,end\nA chapter whose title is a sentence of its own,0,3600.5\n"
                 "Two,3600.5,3649.5\nThree,3652,3660\n");
  const std::vector<std::pair<std::string, std::vector<std::string>>> commands = {
      {"hours", {"analyze", "hours.wav", "--chapters", "hours.csv"}},
      {"targets", {"analyze", "slow.wav", "--targets", "ebu-r128-s1,spotify"}},
      {"block", {"analyze", kLongName, "--chapters", "chapters.csv"}},
      {"rows", {"analyze", "-q", "good.wav", kLongName, "slow.wav"}},
      {"identify", {"identify", kLongName, "slow.wav"}}};
  for (const auto& [name, arguments] : commands)
    for (const int columns : {80, 120}) {
      const std::string text = shown(arguments, columns);
      orvane::test::expectAccepted(orvane::test::places::goldenCaptures,
                                   name + "-" + std::to_string(columns), text);
      std::istringstream lines(text);
      for (std::string line; std::getline(lines, line);) {
        const auto width = std::count_if(line.begin(), line.end(), [](char byte) {
          return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
        });
        // What goes to standard error is told in sentences.
        if (line.starts_with("orvane: ")) continue;
        EXPECT_LE(width, columns) << line;
      }
    }
}

TEST_F(ProgramNarrowTerminal, ShortensNothingWhereThereIsNoTerminal) {
  EXPECT_THAT(run({"identify", kLongName}).output, HasSubstr(kLongName));
  EXPECT_THAT(run({"analyze", "-q", kLongName}).output, HasSubstr(kLongName));
}

TEST_F(ProgramNarrowTerminal, ColoursAreAMatterOfChoice) {
  EXPECT_THAT(run({"analyze", "--color", "always", "good.wav"}).output, HasSubstr("\x1B["));
  EXPECT_THAT(run({"--color=always", "targets"}).output, HasSubstr("\x1B["));
  ProgramSetup setup;
  setup.arguments = {"analyze", "good.wav", "--color=never"};
  setup.environment = {"TERM=xterm"};
  setup.isOnTerminal = true;
  EXPECT_THAT(run(setup).output, Not(HasSubstr("\x1B[1m")));
  EXPECT_EQ(run({"analyze", "good.wav", "--color", "auto"}).exitCode, 0);
  const ProgramEnd end = run({"analyze", "good.wav", "--color", "green"});
  EXPECT_EQ(end.exitCode, 2);
  EXPECT_THAT(end.errors, HasSubstr("--color is one of auto, always, never, not 'green'"));
}

TEST_F(ProgramNarrowTerminal, HelpIsACommandToo) {
  EXPECT_EQ(run({"help"}).output, run({"--help"}).output);
  EXPECT_EQ(run({"help", "raw", "guess"}).output, run({"raw", "guess", "--help"}).output);
  const ProgramEnd end = run({"help", "cooking"});
  EXPECT_EQ(end.exitCode, 2);
  EXPECT_THAT(end.errors, HasSubstr("unknown command 'cooking'"));
}

TEST_F(ProgramNarrowTerminal, AsksWhatWasMeant) {
  EXPECT_THAT(run({"analyse", "good.wav"}).errors, HasSubstr("did you mean analyze?"));
  EXPECT_THAT(run({"edti", "good.wav"}).errors, HasSubstr("did you mean edit?"));
  EXPECT_THAT(run({"raw", "gues", "good.wav"}).errors, HasSubstr("did you mean guess?"));
  EXPECT_THAT(run({"analyze", "--jsno", "good.wav"}).errors, HasSubstr("did you mean --json?"));
  EXPECT_THAT(run({"analyze", "--cooking", "good.wav"}).errors, Not(HasSubstr("did you mean")));
  EXPECT_EQ(run({"analyze", "-j", "2", "-q", "good.wav"}).exitCode, 0);
}

}  // namespace
}  // namespace orvane::cli::test
