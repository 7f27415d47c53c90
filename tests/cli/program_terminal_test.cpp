#include "orvane/speech/detector/speech_model.h"
#include "tests/cli/program_fixture.h"
#include "tests/support/sanitized.h"

namespace orvane::cli::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::Not;
using ::testing::StartsWith;

/// Two dozen files of this length take long enough for a progress bar to appear.
/// A sanitized program takes its time as it is.
std::size_t longSeconds() {
  return orvane::test::isSanitized() ? 10 : 300;
}

class ProgramTerminal : public ProgramTest {
 protected:
  ProgramEnd runOnTerminal(const std::vector<std::string>& arguments,
                           const std::vector<std::string>& environment) const {
    ProgramSetup setup;
    setup.arguments = arguments;
    setup.environment = environment;
    setup.isOnTerminal = true;
    return run(setup);
  }
};

TEST_F(ProgramTerminal, UsesColoursOnATerminalOnly) {
  const std::string coloured = runOnTerminal({"analyze", "good.wav"}, {"TERM=xterm"}).output;
  EXPECT_THAT(coloured, HasSubstr("\x1B[1mgood.wav\x1B[0m"));
  EXPECT_THAT(run({"analyze", "good.wav"}).output, Not(HasSubstr("\x1B")));
}

TEST_F(ProgramTerminal, HonoursNoColorAndDumbTerminals) {
  for (const auto& environment :
       std::vector<std::vector<std::string>>{{"TERM=xterm", "NO_COLOR=1"}, {"TERM=dumb"}, {}}) {
    EXPECT_THAT(runOnTerminal({"analyze", "-q", "good.wav", "missing.wav"}, environment).output,
                Not(HasSubstr("\x1B[")));
  }
}

TEST_F(ProgramTerminal, RemovesTheProgressLineBeforeTheResult) {
  folder().write("long.wav", waveFile(sineSamples(48'000 * longSeconds(), 0.5)));
  ProgramSetup setup;
  setup.arguments = {"analyze"};
  for (int i = 0; i < 24; ++i) setup.arguments.emplace_back("long.wav");
  setup.environment = {"TERM=xterm", "NO_COLOR=1"};
  setup.isOnTerminal = true;
  const std::string output = run(setup).output;
  ASSERT_THAT(output, HasSubstr("\r "));
  EXPECT_THAT(output, HasSubstr("/24  "));
  EXPECT_THAT(output, HasSubstr(" %  long.wav\x1B[K"));
  // Whatever was drawn is gone before the next text begins.
  for (std::size_t bar = output.find(" %  long.wav\x1B[K"); bar != std::string::npos;
       bar = output.find(" %  long.wav\x1B[K", bar + 1)) {
    EXPECT_EQ(output.substr(bar + std::string(" %  long.wav\x1B[K").size(), 1), "\r");
  }
}

TEST_F(ProgramTerminal, ShowsNoProgressWhenQuietOrNotOnATerminal) {
  folder().write("long.wav", waveFile(sineSamples(48'000 * longSeconds(), 0.5)));
  EXPECT_THAT(run({"analyze", "long.wav", "long.wav", "long.wav"}).errors, IsEmpty());
  EXPECT_THAT(runOnTerminal({"analyze", "-q", "long.wav", "long.wav"}, {"TERM=xterm"}).output,
              Not(HasSubstr("\r")));
}

TEST_F(ProgramTerminal, PrintsHelpToStandardOutput) {
  const ProgramEnd program = run({"--help"});
  EXPECT_EQ(program.exitCode, 0);
  EXPECT_THAT(program.output, StartsWith("Usage: orvane COMMAND"));
  EXPECT_THAT(program.errors, IsEmpty());
  const ProgramEnd command = run({"analyze", "--help"});
  EXPECT_EQ(command.exitCode, 0);
  EXPECT_THAT(command.output, StartsWith("Usage: orvane analyze [OPTION]… FILE…\n"));
}

TEST_F(ProgramTerminal, PrintsItsVersion) {
  const ProgramEnd end = run({"--version"});
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_THAT(end.output.substr(0, end.output.find('\n')), MatchesRegex("orvane [0-9.]+"));
  EXPECT_THAT(end.output, HasSubstr("\nFFmpeg "));
  // The model is no part of the build.
  const auto model = SpeechModel::installed();
  EXPECT_THAT(end.output,
              EndsWith("\nSpeech model " +
                       (model ? "Silero VAD " + model->version + ", SHA-256 " + model->hash()
                              : "is not installed") +
                       "\n"));
}

TEST_F(ProgramTerminal, HelpFitsIntoEightyColumns) {
  for (const auto& arguments : std::vector<std::vector<std::string>>{{"--help"},
                                                                     {"analyze", "--help"},
                                                                     {"identify", "--help"},
                                                                     {"dialogue", "--help"},
                                                                     {"report", "--help"},
                                                                     {"targets", "--help"}}) {
    std::istringstream lines(run(arguments).output);
    for (std::string line; std::getline(lines, line);) {
      const auto columns = std::count_if(line.begin(), line.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
      });
      EXPECT_LE(columns, 80) << line;
    }
  }
}

}  // namespace
}  // namespace orvane::cli::test
