#include "cli/commands/measured_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/cli/output/sample_measurement.h"

namespace orvane::cli {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(MeasuredFile, NamesChannelsByTheirLayout) {
  MeasuredFile file = test::sampleMeasurement(3);
  file.detail.layout =
      ChannelLayout::fromLabels({ChannelLabel::left, ChannelLabel::right, ChannelLabel::lfe});
  EXPECT_THAT(file.channelNames(), ElementsAre("L", "R", "LFE"));
}

TEST(MeasuredFile, NamesChannelsOfUnknownPlaceByTheirCount) {
  EXPECT_THAT(test::sampleMeasurement(1).channelNames(), ElementsAre("Mono"));
  EXPECT_THAT(test::sampleMeasurement(2).channelNames(), ElementsAre("L", "R"));
  EXPECT_THAT(test::sampleMeasurement(3).channelNames(), ElementsAre("Ch 1", "Ch 2", "Ch 3"));
}

TEST(MeasuredFile, TellsTheDepthOfTheOriginalAudioOfALosslessCodec) {
  MeasuredFile file = test::sampleMeasurement();
  EXPECT_EQ(file.encodingText(), "24-bit integer");
  file.identity->formatID = fourCCFrom("flac");
  file.identity->pcmEncoding.reset();
  EXPECT_EQ(file.encodingText(), "FLAC");
  file.sourceBitDepth = 16;
  EXPECT_EQ(file.encodingText(), "FLAC, 16-bit");
  file.identity.reset();
  EXPECT_EQ(file.encodingText(), "");
}

TEST(MeasuredFile, WarnsOfCuriousHeadersAndOfSamplesThatAreNoNumbers) {
  MeasuredFile file = test::sampleMeasurement();
  EXPECT_THAT(file.warnings(), IsEmpty());
  file.detail.warnings = {{AudioFileWarning::Code::truncatedAudio, "The audio ends early."}};
  file.detail.nonFiniteSampleCount = 1;
  EXPECT_THAT(file.warnings(),
              ElementsAre("The audio ends early.",
                          "1 sample is not a finite number and counts as silence."));
  file.detail.nonFiniteSampleCount = 1200;
  EXPECT_EQ(file.warnings().back(), "1,200 samples are not finite numbers and count as silence.");
}

TEST(MeasuredFile, WarnsWhereTheSampleRateAllowsNoLoudness) {
  MeasuredFile file = test::sampleMeasurement();
  for (const double metered : {8000.0, 768'000.0}) {
    file.result.sampleRate = metered;
    EXPECT_THAT(file.warnings(), IsEmpty());
  }
  file.result.sampleRate = 7999;
  EXPECT_THAT(file.warnings(), ElementsAre("Loudness is not defined below 8 kHz sample rate; "
                                           "only levels and peaks are measured."));
  file.result.sampleRate = 768'001;
  EXPECT_THAT(file.warnings(), ElementsAre("Loudness is not defined above 768 kHz sample rate; "
                                           "only levels and peaks are measured."));
}

}  // namespace
}  // namespace orvane::cli
