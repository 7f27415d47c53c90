#include "orvane/analysis/magnitude_spectrum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

namespace orvane {
namespace {

/// A sine in the middle of bin `bin` of a transform of `size` frames.
std::vector<float> binSine(std::size_t bin, std::size_t size, float amplitude, std::size_t frames) {
  std::vector<float> samples(frames);
  for (std::size_t i = 0; i < frames; ++i)
    samples[i] = amplitude * static_cast<float>(std::sin(2 * std::numbers::pi *
                                                         static_cast<double>(i * bin % size) /
                                                         static_cast<double>(size)));
  return samples;
}

MagnitudeSpectra spectraOf(const std::vector<std::vector<float>>& channels) {
  std::vector<const float*> pointers;
  for (const auto& channel : channels) pointers.push_back(channel.data());
  return magnitudeSpectra({.audio = {pointers, channels.front().size()}, .sampleRate = 48000});
}

// A transform in 32 bits: 1e-4 of full scale.
constexpr float kTolerance = 1e-4F;

TEST(MagnitudeSpectra, ReadsTheAmplitudeOfASine) {
  const auto spectra = spectraOf({binSine(1000, 8192, 0.5F, 48000)});
  EXPECT_EQ(spectra.fftSize, 8192U);
  ASSERT_EQ(spectra.channels.size(), 1U);
  ASSERT_EQ(spectra.channels[0].size(), 4097U);
  EXPECT_NEAR(spectra.channels[0][1000], 0.5F, kTolerance);
  EXPECT_NEAR(spectra.channels[0][999], 0.25F, kTolerance);  // a Hann window's neighbours
  EXPECT_NEAR(spectra.channels[0][900], 0.0F, kTolerance);
  EXPECT_FALSE(spectra.midSide);
}

TEST(MagnitudeSpectra, SplitsTwoChannelsIntoMidAndSide) {
  const auto tone = binSine(500, 8192, 0.8F, 20000);
  auto opposite = tone;
  for (float& sample : opposite) sample = -sample;
  const auto same = spectraOf({tone, tone});
  ASSERT_TRUE(same.midSide);
  EXPECT_NEAR(same.midSide->first[500], 0.8F, kTolerance);
  EXPECT_NEAR(same.midSide->second[500], 0.0F, kTolerance);
  const auto inverted = spectraOf({tone, opposite});
  EXPECT_NEAR(inverted.midSide->first[500], 0.0F, kTolerance);
  EXPECT_NEAR(inverted.midSide->second[500], 0.8F, kTolerance);
  EXPECT_FALSE(spectraOf({tone, tone, tone}).midSide);
}

TEST(MagnitudeSpectra, ShortensTheTransformForShortStretches) {
  EXPECT_EQ(spectraOf({std::vector<float>(8191)}).fftSize, 4096U);
  EXPECT_EQ(spectraOf({std::vector<float>(300)}).fftSize, 256U);
  const auto one = spectraOf({std::vector<float>(1, 1.0F)});
  EXPECT_EQ(one.fftSize, 256U);
  EXPECT_NEAR(one.channels[0][10], 0.0F, kTolerance);  // the window begins with 0
}

TEST(MagnitudeSpectra, SpreadsItsWindowsOverALongStretch) {
  // The tone sounds in the second half alone; the power mean over all windows is half.
  const std::size_t frames = 8192U * 3000;
  std::vector<float> samples(frames / 2);
  const auto tone = binSine(64, 8192, 1.0F, frames / 2);
  samples.insert(samples.end(), tone.begin(), tone.end());
  const auto spectra = spectraOf({samples});
  EXPECT_NEAR(spectra.channels[0][64], std::sqrt(0.5F), 0.01F);
}

TEST(MagnitudeSpectra, CountsNonFiniteSamplesAsSilence) {
  auto samples = binSine(100, 8192, 0.5F, 8192);
  samples[3] = std::numeric_limits<float>::quiet_NaN();
  samples[4] = std::numeric_limits<float>::infinity();
  const auto spectra = spectraOf({samples});
  EXPECT_TRUE(std::all_of(spectra.channels[0].begin(), spectra.channels[0].end(),
                          [](float value) { return std::isfinite(value); }));
  EXPECT_NEAR(spectra.channels[0][100], 0.5F, 0.001F);
}

}  // namespace
}  // namespace orvane
