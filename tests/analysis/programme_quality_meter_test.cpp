#include "orvane/analysis/programme_quality_meter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "orvane/analysis/programme_statistics.h"

namespace orvane {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Channels = std::vector<std::vector<float>>;
using Gap = ProgrammeQuality::Gap;
using Pair = ProgrammeQuality::ChannelPair;

constexpr double kRate = 48'000;

/// Noise with every sample above the threshold of silence, on a grid of that many bits.
std::vector<float> noise(std::size_t frames, unsigned seed, int bits = 24) {
  std::mt19937 generator(seed);
  std::uniform_real_distribution<float> level(0.01F, 0.9F);
  const float grid = std::ldexp(1.0F, bits - 1);
  std::vector<float> samples(frames);
  for (float& sample : samples)
    sample = std::round(level(generator) * grid) / grid * (generator() % 2 == 0 ? 1.0F : -1.0F);
  return samples;
}

/// Measured in slices of that many frames.
ProgrammeQuality qualityOf(const Channels& channels, int storedBits = 0, double rate = kRate,
                           std::size_t slice = 100'000) {
  std::vector<const float*> starts;
  for (const auto& channel : channels) starts.push_back(channel.data());
  const PlanarView audio(starts, channels.front().size());
  ProgrammeStatisticsMeter meter(rate, channels.size(), true, storedBits);
  for (std::size_t i = 0; i < audio.frameCount(); i += slice)
    meter.process(audio.slice(i, std::min(slice, audio.frameCount() - i)));
  return meter.finish().quality;
}

void silence(std::vector<float>& samples, std::size_t first, std::size_t count) {
  std::fill_n(samples.begin() + static_cast<std::ptrdiff_t>(first), count, 0.0009F);
}

TEST(ProgrammeQualityMeter, FindsNothingInOrdinaryAudio) {
  const auto quality = qualityOf({noise(200'000, 1), noise(200'000, 2)}, 24);
  EXPECT_EQ(quality, (ProgrammeQuality{.bitDepth = ProgrammeQuality::BitDepth{24, 24}}));
}

TEST(ProgrammeQualityMeter, FindsSilenceToTheFrameHoweverTheProgrammeIsCut) {
  for (const double rate : {2'000.0, 48'000.0})
    for (const std::size_t slice : {999U, 8192U, 300'000U}) {
      const auto half = static_cast<std::size_t>(rate / 2);
      auto samples = noise(300'000, 3);
      silence(samples, 0, 12'345);
      silence(samples, 40'000, half - 1);  // too short for a gap
      silence(samples, 100'000, 30'001);
      silence(samples, 150'000, 30'000);
      silence(samples, 299'990, 10);
      const auto quality = qualityOf({samples}, 0, rate, slice);
      EXPECT_EQ(quality.headSilenceFrames, 12'345);
      EXPECT_EQ(quality.tailSilenceFrames, 10);
      EXPECT_EQ(quality.longestGap, (Gap{100'000, 30'001})) << rate << " Hz, " << slice;
    }
}

TEST(ProgrammeQualityMeter, CallsAFrameSilentWhenNoChannelIsHeard) {
  auto left = noise(300'000, 4);
  auto right = noise(300'000, 5);
  silence(left, 50'000, 100'000);
  silence(right, 100'000, 100'000);
  const auto quality = qualityOf({left, right});
  EXPECT_EQ(quality.longestGap, (Gap{100'000, 50'000}));
  EXPECT_EQ(quality.headSilenceFrames, 0);
}

TEST(ProgrammeQualityMeter, CallsAllOfASilentProgrammeHeadAndTail) {
  const auto quality = qualityOf({std::vector<float>(70'000)}, 16);
  EXPECT_EQ(quality.headSilenceFrames, 70'000);
  EXPECT_EQ(quality.tailSilenceFrames, 70'000);
  EXPECT_EQ(quality.longestGap, std::nullopt);
  EXPECT_EQ(quality.bitDepth, std::nullopt);
  EXPECT_THAT(quality.silentChannels, ElementsAre(0));
}

TEST(ProgrammeQualityMeter, FindsChannelsThatAreDeadAlikeOrInverted) {
  const auto left = noise(100'000, 6);
  auto negative = left;
  for (float& sample : negative) sample = -sample;
  const std::vector<float> dead(100'000);
  const auto quality = qualityOf({left, noise(100'000, 7), left, negative, dead, dead});
  EXPECT_THAT(quality.silentChannels, ElementsAre(4, 5));
  EXPECT_THAT(quality.identicalChannels, ElementsAre(Pair{0, 2}));
  EXPECT_THAT(quality.invertedChannels, ElementsAre(Pair{0, 3}, Pair{2, 3}));
}

TEST(ProgrammeQualityMeter, SeesTheLastSampleThatDiffers) {
  const auto left = noise(100'000, 8);
  auto right = left;
  right.back() = -right.back();
  EXPECT_THAT(qualityOf({left, right}).identicalChannels, IsEmpty());
}

TEST(ProgrammeQualityMeter, FindsAPairThatIsNearlyInverted) {
  const auto left = noise(100'000, 9);
  const auto other = noise(100'000, 10);
  const auto pairs = [&](float share) {
    auto right = left;
    for (std::size_t i = 0; i < right.size(); ++i) right[i] = -left[i] + share * other[i];
    return qualityOf({left, right}).invertedChannels;
  };
  EXPECT_THAT(pairs(0.1F), ElementsAre(Pair{0, 1}));
  EXPECT_THAT(pairs(0.9F), IsEmpty());
}

TEST(ProgrammeQualityMeter, ComparesNeighboursOfManyChannels) {
  Channels channels(20);
  for (unsigned i = 0; i < channels.size(); ++i) channels[i] = noise(10'000, 20 + i);
  channels[11] = channels[10];
  channels[19] = channels[0];
  EXPECT_THAT(qualityOf(channels).identicalChannels, ElementsAre(Pair{10, 11}));
}

TEST(ProgrammeQualityMeter, CountsTheBitsThatSamplesUse) {
  using Depth = ProgrammeQuality::BitDepth;
  for (const int bits : {8, 12, 16, 20, 24}) {
    EXPECT_EQ(qualityOf({noise(50'001, 11, bits)}, 24).bitDepth, (Depth{24, bits}));
    EXPECT_EQ(qualityOf({noise(50'001, 12, bits)}, 32).bitDepth, (Depth{32, bits}));
  }
  // The last sample of the last channel alone.
  Channels channels = {noise(50'001, 13, 16), noise(50'001, 14, 16)};
  channels[1].back() = std::ldexp(3.0F, -23);
  EXPECT_EQ(qualityOf(channels, 24).bitDepth, (Depth{24, 24}));
  EXPECT_EQ(qualityOf({{-1.0F, 0.5F}}, 16).bitDepth, (Depth{16, 2}));
  EXPECT_EQ(qualityOf({noise(1'000, 15)}, 0).bitDepth, std::nullopt);
}

TEST(ProgrammeQualityMeter, TakesSamplesOutOfRangeForWhatTheyAre) {
  EXPECT_EQ(qualityOf({{2.0F, -2.0F, std::nanf("")}}, 24).bitDepth->effective, 24);
}

}  // namespace
}  // namespace orvane
