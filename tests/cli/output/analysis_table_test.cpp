#include "cli/output/analysis_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "cli/terminal/terminal_text.h"
#include "tests/cli/output/sample_measurement.h"

namespace orvane::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

std::string blockOf(const MeasuredFile& file) {
  return AnalysisTable::block(file, Console(ConsoleTraits{}));
}

TEST(AnalysisTable, ShowsEverythingAboutAFile) {
  EXPECT_EQ(blockOf(test::sampleMeasurement()),
            "folder/song.wav\n"
            "  WAV · 24-bit integer · 48 kHz · 2 channels (L R) · 1:01.500 · 16.9 MiB\n"
            "\n"
            "  Integrated      -14.0 LUFS      True peak      -0.95 dBTP\n"
            "  Loudness range    6.3 LU        Sample peak    -1.10 dBFS\n"
            "  Max momentary    -9.2 LUFS      Dynamic range      9 DR\n"
            "  Max short-term  -11.7 LUFS      Correlation    -0.25 lowest -0.25\n"
            "\n"
            "  Channel   Peak dBFS   RMS dBFS   Crest dB     DC %   Clipped\n"
            "  L             -1.10     -18.25      17.15   +0.012   no\n"
            "  R             -2.10     -19.25      17.15   -0.034   no\n");
}

TEST(AnalysisTable, ShowsSilenceAsMinusInfinity) {
  MeasuredFile file = test::sampleMeasurement();
  file.result.integratedLUFS = -std::numeric_limits<float>::infinity();
  file.result.truePeakDB = -std::numeric_limits<float>::infinity();
  EXPECT_THAT(blockOf(file),
              HasSubstr("Integrated       -inf LUFS      True peak       -inf dBTP"));
}

TEST(AnalysisTable, SaysHowAMonoFileWasMeasured) {
  MeasuredFile file = test::sampleMeasurement(1);
  EXPECT_THAT(blockOf(file), HasSubstr(" · mono · "));
  EXPECT_THAT(blockOf(file), HasSubstr("  Max short-term  -11.7 LUFS\n"));
  EXPECT_THAT(blockOf(file), HasSubstr("measured as one channel"));
  file.detail.isDualMono = true;
  EXPECT_THAT(blockOf(file), HasSubstr("Mono, measured as two equal loudspeakers."));
  EXPECT_THAT(blockOf(test::sampleMeasurement()), Not(HasSubstr("Mono")));
}

/// A lone LFE channel was called mono, "measured as one channel", though no meter takes it.
TEST(AnalysisTable, DoesNotTakeALoneLFEChannelForMono) {
  MeasuredFile file = test::sampleMeasurement(1);
  file.detail.layout = ChannelLayout::fromLabels({ChannelLabel::lfe});
  EXPECT_THAT(blockOf(file), HasSubstr(" · 1 channel (LFE) · "));
  EXPECT_THAT(blockOf(file), HasSubstr("An LFE channel alone, which loudness leaves out."));
  EXPECT_THAT(blockOf(file), Not(HasSubstr("--dual-mono")));
}

TEST(AnalysisTable, ListsClippingRunsWithTheirTimes) {
  MeasuredFile file = test::sampleMeasurement();
  file.result.channelHasClipping = {true, true};
  file.detail.clippingRuns = {{0, 96'000, 5}, {0, 2'928'048, 12}};
  file.detail.clippingRunCount = 2;
  const std::string text = blockOf(file);
  EXPECT_THAT(text, HasSubstr("+0.012   2 runs\n"));
  EXPECT_THAT(text, HasSubstr("-0.034   single samples\n"));
  EXPECT_THAT(text, HasSubstr("\n"
                              "  Clipping at   Channel   Frames\n"
                              "  0:02.000      L              5\n"
                              "  1:01.001      L             12\n"));
}

TEST(AnalysisTable, ListsTheFirstRunsOfManyAndCountsTheRest) {
  MeasuredFile file = test::sampleMeasurement();
  file.result.channelHasClipping = {true, false};
  file.detail.clippingRuns.assign(1000, {0, 480, 3});
  file.detail.clippingRunCount = 5000;
  const std::string text = blockOf(file);
  EXPECT_THAT(text, HasSubstr("and 4,990 more runs; --json lists up to 1000\n"));
  // The list does not hold all runs, so nobody knows how many each channel has.
  EXPECT_THAT(text, HasSubstr("+0.012   yes\n"));
}

TEST(AnalysisTable, ShowsWarnings) {
  MeasuredFile file = test::sampleMeasurement();
  file.detail.warnings = {{AudioFileWarning::Code::unusualLayout, "Odd\x1B[2J order."}};
  EXPECT_THAT(blockOf(file), HasSubstr("\n  Warning: Odd\\x1B[2J order.\n"));
}

// What is said of streams took 93 columns.
TEST(AnalysisTable, BreaksItsSentencesOnANarrowTerminal) {
  MeasuredFile file = test::sampleMeasurement();
  file.streams = {0};
  file.streamCount = 4;
  file.notes = {
      "A list of chapters that is longer than the programme names those \"that  lie\" "
      "behind its end."};
  EXPECT_THAT(blockOf(file), HasSubstr("\"that  lie\" behind its end.\n"));
  ConsoleTraits traits;
  traits.isOutputTerminal = true;
  traits.outputColumns = 80;
  const std::string text = AnalysisTable::block(file, Console(traits));
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);)
    EXPECT_LE(TerminalText::width(line), 80U) << line;
  EXPECT_THAT(text, HasSubstr("joins them, --streams all\n  measures each.\n"));
}

TEST(AnalysisTable, EscapesHostileNames) {
  MeasuredFile file = test::sampleMeasurement();
  file.name.display = "a\x1B[2J\u202E\n.wav";
  file.result.fileFormat = "WAV, named .\x1B[2J";
  const std::string text = blockOf(file);
  EXPECT_THAT(text, HasSubstr("a\\x1B[2J\\u202E\\n.wav"));
  EXPECT_THAT(text, HasSubstr("WAV, named .\\x1B[2J"));
  EXPECT_THAT(text, Not(HasSubstr("\x1B")));
}

TEST(AnalysisTable, SetsOffWhatIsWrongOnATerminal) {
  ConsoleTraits traits;
  traits.isOutputTerminal = true;
  traits.allowsColour = true;
  MeasuredFile file = test::sampleMeasurement();
  file.result.truePeakDB = 0.2F;
  const std::string text = AnalysisTable::block(file, Console(traits));
  EXPECT_THAT(text, HasSubstr("\x1B[31m0.20\x1B[0m"));
}

}  // namespace
}  // namespace orvane::cli
