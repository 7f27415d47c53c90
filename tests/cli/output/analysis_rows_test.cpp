#include "cli/output/analysis_rows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/terminal/terminal_text.h"
#include "tests/cli/output/sample_measurement.h"

namespace orvane::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::string rowsOf(const MeasuredFile& file, const ConsoleTraits& traits,
                   const AnalysisRows::Columns& columns) {
  const Console console(traits);
  const AnalysisRows rows(console, columns);
  return rows.titles() + rows.row(file);
}

TEST(AnalysisRows, PutAFileIntoOneRow) {
  EXPECT_EQ(rowsOf(test::sampleMeasurement(), {}, {}),
            "  I LUFS  LRA LU  M max  S max    dBTP    dBFS  DR     Duration  File\n"
            "   -14.0     6.3   -9.2  -11.7   -0.95   -1.10   9     1:01.500  folder/song.wav\n");
}

TEST(AnalysisRows, ShowSpeechAndTargets) {
  MeasuredFile file = test::sampleMeasurement();
  file.result.speechHistory = std::vector<bool>{true, false};
  file.result.speechGatedLUFS = -20;
  file.result.speechPercentage = 50;
  EXPECT_EQ(
      rowsOf(file, {}, {.speech = true, .targetIDs = {"spotify"}}),
      "  I LUFS  LRA LU  M max  S max    dBTP    dBFS  DR     Duration  Speech   Sp %    "
      "spotify  by LU  File\n"
      "   -14.0     6.3   -9.2  -11.7   -0.95   -1.10   9     1:01.500   -20.0   50.0          "
      "-      -  folder/song.wav\n");
}

TEST(AnalysisRows, FitATerminalAndGrowWithIt) {
  MeasuredFile file = test::sampleMeasurement();
  file.name.display = std::string(100, 'n') + ".wav";
  ConsoleTraits traits;
  traits.isOutputTerminal = true;
  const AnalysisRows::Columns columns{.speech = true, .targetIDs = {"spotify", "apple-music"}};
  for (const std::size_t width : {80U, 120U, 200U}) {
    traits.outputColumns = width;
    const std::string text = rowsOf(file, traits, columns);
    const std::size_t end = text.find('\n');
    EXPECT_EQ(TerminalText::width(text.substr(end + 1, text.size() - end - 2)), width) << text;
    EXPECT_THAT(text, HasSubstr("I LUFS"));
    EXPECT_THAT(text, HasSubstr("apple-music"));
  }
  EXPECT_THAT(rowsOf(file, traits, columns), HasSubstr("M max"));
  traits.outputColumns = 80;
  EXPECT_THAT(rowsOf(file, traits, columns), Not(HasSubstr("M max")));
}

// Four long names once took more than 80 columns.
TEST(AnalysisRows, FitFourTargetsWithLongNames) {
  MeasuredFile file = test::sampleMeasurement();
  file.name.display = std::string(100, 'n') + ".wav";
  ConsoleTraits traits;
  traits.isOutputTerminal = true;
  traits.outputColumns = 80;
  const std::string text = rowsOf(file, traits,
                                  {.targetIDs = {"television-north-2026", "television-south-2026",
                                                 "radio-north-2026", "radio-south-2026"}});
  const std::size_t end = text.find('\n');
  EXPECT_LE(end, 80U + 4 * 2) << text;  // "…" has three bytes
  EXPECT_LE(TerminalText::width(text.substr(end + 1, text.size() - end - 2)), 80U) << text;
  EXPECT_THAT(text, HasSubstr("tele…2026"));
}

TEST(AnalysisRows, EscapeHostileNames) {
  MeasuredFile file = test::sampleMeasurement();
  file.name.display = "a\x1B[2J.wav";
  EXPECT_THAT(rowsOf(file, {}, {}), HasSubstr("a\\x1B[2J.wav"));
}

}  // namespace
}  // namespace orvane::cli
