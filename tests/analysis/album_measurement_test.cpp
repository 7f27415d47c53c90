#include "orvane/analysis/album_measurement.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/analysis/raw_programme.h"

namespace orvane::test {
namespace {

struct Measured {
  OfflineAnalysisPipeline::Result result{};
  OfflineAnalysisPipeline::AnalysisDetail detail{};
};

Measured measured(const std::vector<Channel>& channels) {
  const RawProgramme programme(48'000, channels);
  Measured file;
  file.result =
      OfflineAnalysisPipeline::analyzeFile(programme.path(), programme.options(), {}, &file.detail);
  return file;
}

/// Swells, so that there is a range.
Channel swelling(double seconds, double from, double to) {
  const auto frames = static_cast<std::size_t>(48'000 * seconds);
  Channel samples = sine(48'000, 997, 1, frames);
  for (std::size_t i = 0; i < frames; ++i)
    samples[i] *= static_cast<float>(
        from * std::pow(to / from, static_cast<double>(i) / static_cast<double>(frames)));
  return samples;
}

TEST(AlbumMeasurement, HasTheFiguresOfTheFilesJoined) {
  // The quiet half of the second file lies below the gate of both, not below its own.
  const std::vector<Channel> parts = {swelling(35, 0.05, 0.5), swelling(30, 0.004, 0.1),
                                      swelling(31.37, 0.9, 0.2)};
  AlbumMeasurement album;
  Channel joined;
  for (const Channel& part : parts) {
    const auto file = measured({part, part});
    album.add(file.result, file.detail);
    joined.insert(joined.end(), part.begin(), part.end());
  }
  const auto whole = measured({joined, joined}).result;
  const auto figures = album.figures();
  EXPECT_EQ(album.fileCount(), 3U);
  EXPECT_NEAR(figures.integratedLUFS, whole.integratedLUFS, 0.01);
  EXPECT_NEAR(figures.loudnessRange, whole.loudnessRange, 0.3);
  EXPECT_NEAR(figures.durationSeconds, whole.durationSeconds, 1e-9);
  EXPECT_NEAR(figures.truePeakDB, whole.truePeakDB, 0.01);
  EXPECT_EQ(figures.samplePeakDB, whole.samplePeakDB);
  EXPECT_NEAR(figures.channelRMSDB.at(1), whole.channelRMSDB.at(1), 1e-3);
  EXPECT_NEAR(figures.channelCrestFactorDB.at(0), whole.channelCrestFactorDB.at(0), 1e-3);
  EXPECT_FALSE(figures.speechHistory);
}

// Without the blocks across the joint, a step of 20 dB moved the loudness by 0.016 LU.
TEST(AlbumMeasurement, MeasuresAcrossTheJoint) {
  const Channel loud = swelling(40, 0.5, 0.5);
  const Channel quiet = swelling(30, 0.05, 0.05);
  AlbumMeasurement album;
  for (const Channel& part : {loud, quiet}) {
    const auto file = measured({part});
    album.add(file.result, file.detail);
  }
  Channel joined = loud;
  joined.insert(joined.end(), quiet.begin(), quiet.end());
  EXPECT_NEAR(album.figures().integratedLUFS, measured({joined}).result.integratedLUFS, 0.001);
}

TEST(AlbumMeasurement, OfOneFileIsThatFile) {
  const auto file = measured({swelling(31.05, 0.05, 0.5)});
  AlbumMeasurement album;
  album.add(file.result, file.detail);
  const auto figures = album.figures();
  EXPECT_NEAR(figures.integratedLUFS, file.result.integratedLUFS, 1e-5);  // rounding
  EXPECT_NEAR(figures.loudnessRange, file.result.loudnessRange, 1e-4);    // levels of 32 bits
  EXPECT_EQ(figures.dynamicRange, file.result.dynamicRange);
  EXPECT_EQ(figures.maxMomentaryLUFS, file.result.maxMomentaryLUFS);
}

TEST(AlbumMeasurement, TellsSpeechOnlyWhereItWasLookedForEverywhere) {
  auto file = measured({swelling(5, 0.2, 0.2)});
  file.result.speechHistory = std::vector<bool>(50, true);
  AlbumMeasurement album;
  album.add(file.result, file.detail);
  file.result.speechHistory = std::vector<bool>(50, false);
  album.add(file.result, file.detail);
  ASSERT_TRUE(album.figures().speechHistory);
  EXPECT_EQ(album.figures().speechPercentage, 50);
  EXPECT_NEAR(album.figures().speechGatedLUFS, file.result.integratedLUFS, 0.01);
  file.result.speechHistory.reset();
  album.add(file.result, file.detail);
  EXPECT_FALSE(album.figures().speechHistory);
}

TEST(AlbumMeasurement, OfSilenceHasNoLoudness) {
  const auto file = measured({Channel(48'000 * 4)});
  AlbumMeasurement album;
  album.add(file.result, file.detail);
  EXPECT_EQ(album.figures().integratedLUFS, -std::numeric_limits<float>::infinity());
  EXPECT_EQ(album.figures().loudnessRange, 0);
}

}  // namespace
}  // namespace orvane::test
