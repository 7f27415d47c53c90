#include "orvane/rawpcm/raw_pcm_guesser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <numeric>
#include <string>

#include "orvane/rawpcm/raw_pcm_reader.h"
#include "tests/rawpcm/raw_pcm_samples.h"
#include "tests/support/each_instruction_set.h"
#include "tests/support/random.h"
#include "tests/support/signals.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using RawPCMGuesser::Candidate;
using RawPCMGuesser::candidateGrid;
using RawPCMGuesser::lag1Score;
using RawPCMGuesser::rank;
using test::Bytes;
using Encoding = RawPCMFormat::Encoding;
using Channel = std::vector<float>;

std::shared_ptr<PCMBuffer> bufferOf(const std::vector<Channel>& channels) {
  const auto frames = static_cast<std::uint32_t>(channels.front().size());
  auto buffer = PCMBuffer::make(
      {.sampleRate = 48000, .channelCount = static_cast<std::uint32_t>(channels.size())}, frames);
  for (std::size_t c = 0; c < channels.size(); ++c)
    std::copy(channels[c].begin(), channels[c].end(),
              buffer->channel(static_cast<std::uint32_t>(c)));
  buffer->setFrameLength(frames);
  return buffer;
}

float scoreOf(const Channel& samples) {
  return lag1Score(*bufferOf({samples}));
}

Channel ramp(std::size_t count) {
  Channel samples(count);
  std::iota(samples.begin(), samples.end(), 0.0F);
  return samples;
}

std::vector<std::string> tokens(const std::vector<Candidate>& candidates) {
  std::vector<std::string> result;
  for (const auto& candidate : candidates) result.push_back(candidate.format.formatToken());
  return result;
}

std::vector<std::string> allTokens() {
  const auto& all = RawPCMFormat::allFormatTokens();
  return {all.begin(), all.end()};
}

Bytes noise(std::uint64_t seed, std::size_t size) {
  test::Random random(seed);
  Bytes bytes(size);
  for (auto& byte : bytes) byte = static_cast<std::byte>(random.below(256));
  return bytes;
}

TEST(RawPCMCandidateGrid, HasEveryEncodingAndByteOrderOnceInTheFixedOrder) {
  std::vector<std::string> found;
  for (const auto& format : candidateGrid(44100, 6, 512)) {
    found.push_back(format.formatToken());
    EXPECT_EQ(format, (RawPCMFormat{.sampleRate = 44100,
                                    .channelCount = 6,
                                    .encoding = format.encoding,
                                    .endianness = format.endianness,
                                    .isPlanar = false,
                                    .headerSkipBytes = 512,
                                    .trailingBytesTolerance = 0}));
  }
  EXPECT_EQ(found, allTokens());
}

TEST(RawPCMCandidateGrid, IsMadeOfValuesThatNoFileCanHaveToo) {
  const auto grid = candidateGrid(-1, 0, -5);
  ASSERT_EQ(grid.size(), 13U);
  EXPECT_EQ(grid.front().sampleRate, -1);
  EXPECT_EQ(grid.front().channelCount, 0);
  EXPECT_EQ(grid.front().headerSkipBytes, -5);
  EXPECT_TRUE(rank(Bytes(48), grid, 1).empty());
}

TEST(RawPCMLag1Score, IsMinusOneForSamplesThatAlternate) {
  Channel samples(1000);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = i % 2 == 0 ? 0.5F : -0.5F;
  EXPECT_EQ(scoreOf(samples), -1);
}

TEST(RawPCMLag1Score, IsOneForAConstant) {
  EXPECT_EQ(scoreOf(Channel(1000, -0.25F)), 1);
}

TEST(RawPCMLag1Score, FollowsTheClosedFormOfARamp) {
  for (const std::size_t count : {17U, 18U, 100U, 150U}) {
    // Σ i², Σ (i + 1)² and Σ i (i + 1) for i below n; all are exact in single precision.
    const auto n = static_cast<double>(count - 1);
    const auto before = static_cast<float>((n - 1) * n * (2 * n - 1) / 6);
    const auto after = static_cast<float>(n * (n + 1) * (2 * n + 1) / 6);
    const auto dot = static_cast<float>((n - 1) * n * (n + 1) / 3);
    EXPECT_EQ(scoreOf(ramp(count)), dot / std::sqrt(before * after)) << count;
  }
}

TEST(RawPCMLag1Score, IsTheCosineOfASinesStep) {
  constexpr std::uint32_t kRate = 48000;
  for (const std::uint32_t hertz : {20U, 440U, 1000U, 3000U, 12000U, 20000U}) {
    const auto samples = test::lockedSine(10 * kRate, hertz, kRate, 0.3, 0.5);
    EXPECT_NEAR(scoreOf(samples), std::cos(2 * std::numbers::pi * hertz / kRate), 1e-4) << hertz;
  }
}

TEST(RawPCMLag1Score, IsTheMeanOfTheChannels) {
  Channel alternating(20), constant(20, 0.5F);
  for (std::size_t i = 0; i < alternating.size(); ++i) alternating[i] = i % 2 == 0 ? 1.0F : -1.0F;
  EXPECT_EQ(lag1Score(*bufferOf({constant, alternating})), 0);
  EXPECT_EQ(lag1Score(*bufferOf({constant, constant, alternating, constant})), 0.5F);
}

TEST(RawPCMLag1Score, CountsASilentChannelAsZero) {
  EXPECT_EQ(scoreOf(Channel(100)), 0);
  EXPECT_EQ(lag1Score(*bufferOf({Channel(100, 0.5F), Channel(100)})), 0.5F);
  EXPECT_EQ(scoreOf(Channel(100, 1e-10F)), 0);
}

TEST(RawPCMLag1Score, NeedsSeventeenFrames) {
  EXPECT_EQ(scoreOf(Channel(16, 0.5F)), -1);
  EXPECT_EQ(scoreOf(Channel(17, 0.5F)), 1);
  auto buffer = bufferOf({Channel(100, 0.5F)});
  buffer->setFrameLength(0);
  EXPECT_EQ(lag1Score(*buffer), -1);
}

TEST(RawPCMLag1Score, NeedsAChannel) {
  const auto buffer = PCMBuffer::make({.sampleRate = 48000, .channelCount = 0}, 100);
  ASSERT_TRUE(buffer);
  buffer->setFrameLength(100);
  EXPECT_EQ(lag1Score(*buffer), -1);
}

TEST(RawPCMLag1Score, IsMinusOneWithASampleThatIsNotFinite) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  for (const float odd : {std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity})
    for (const std::size_t place : {0U, 50U, 99U}) {
      Channel samples(100, 0.5F);
      samples[place] = odd;
      EXPECT_EQ(scoreOf(samples), -1) << odd << " at " << place;
      EXPECT_EQ(lag1Score(*bufferOf({Channel(100, 0.5F), samples})), -1);
    }
}

TEST(RawPCMLag1Score, OverflowsAsSinglePrecisionDoes) {
  EXPECT_EQ(scoreOf(Channel(100, 1e20F)), -1);  // infinity over infinity
  EXPECT_EQ(scoreOf(Channel(100, 1e10F)), 0);   // a finite sum over infinity
  EXPECT_EQ(scoreOf(Channel(100, 1e6F)), 1);
}

TEST(RawPCMLag1Score, IsTheSameOnEveryMachine) {
  const auto samples = test::pinkNoise(7, 100'003, 0.7F);
  const float expected = scoreOf(samples);
  EXPECT_GT(expected, 0.5F);
  test::onEachInstructionSet([&] { EXPECT_EQ(scoreOf(samples), expected); });
}

TEST(RawPCMLag1Score, LiesBetweenMinusOneAndOne) {
  test::Random random(3);
  for (int round = 0; round < 200; ++round) {
    std::vector<Channel> channels(1 + random.below(4));
    const std::size_t frames = 17 + random.below(3000);
    const auto amplitude = static_cast<float>(std::pow(10, random.between(-6, 3)));
    for (auto& channel : channels) channel = test::whiteNoise(random.next(), frames, amplitude);
    const float score = lag1Score(*bufferOf(channels));
    EXPECT_LE(std::abs(score), 1.000001F) << frames;
  }
}

TEST(RawPCMGuesser, LeavesOutWhatDoesNotFitTheSize) {
  const auto ranked = rank(noise(1, 1002), candidateGrid(48000, 2, 0), 1);
  auto found = tokens(ranked);
  std::sort(found.begin(), found.end());
  EXPECT_EQ(found, (std::vector<std::string>{"s24be", "s24le", "u8"}));
}

TEST(RawPCMGuesser, LeavesOutWhatCannotBeRead) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const Bytes data(480, std::byte{1});
  const auto count = [&](double rate, std::int64_t channels, std::int64_t skip) {
    return rank(data, candidateGrid(rate, channels, skip), 1).size();
  };
  EXPECT_EQ(count(48000, 1, 0), 13U);
  for (const double rate : {0.0, -48000.0, kNaN, kInfinity, -kInfinity})
    EXPECT_EQ(count(rate, 1, 0), 0U) << rate;
  for (const std::int64_t channels : {-1, 0, 65}) EXPECT_EQ(count(48000, channels, 0), 0U);
  EXPECT_EQ(count(48000, std::numeric_limits<std::int64_t>::max(), 0), 0U);
  EXPECT_EQ(count(48000, 1, -1), 0U);
  EXPECT_EQ(count(48000, 1, 456), 13U);
  EXPECT_EQ(count(48000, 1, 480), 0U);
  EXPECT_EQ(rank(Bytes{}, candidateGrid(48000, 1, 0), 1).size(), 0U);
}

TEST(RawPCMGuesser, TakesPlanarCandidatesAndOnesWithATolerance) {
  const auto sine = test::lockedSine(4800, 480, 48000, 0, 0.5);
  auto data = test::rawSamples({.channels = {sine}}, candidateGrid(48000, 1, 0)[1]);
  data.push_back({});
  std::vector<RawPCMFormat> candidates(3, candidateGrid(48000, 1, 0)[1]);
  candidates[1].trailingBytesTolerance = 1;
  candidates[2] = candidates[1];
  candidates[2].isPlanar = true;  // has no tolerance
  const auto ranked = rank(data, candidates, 1);
  ASSERT_EQ(ranked.size(), 1U);
  EXPECT_EQ(ranked[0].format, candidates[1]);
  EXPECT_GT(ranked[0].score, 0.99F);
}

TEST(RawPCMGuesser, PutsEightBitsFirstForZeros) {
  // Which are its lowest value, and silence in every other encoding.
  const auto ranked = rank(Bytes(24000), candidateGrid(48000, 1, 0), 1);
  EXPECT_EQ(tokens(ranked), allTokens());
  for (const auto& candidate : ranked)
    EXPECT_EQ(candidate.score, candidate.format.encoding == Encoding::uint8 ? 1 : 0);
}

TEST(RawPCMGuesser, KeepsTheOrderOfTheGridWithoutAPreview) {
  for (const double seconds : {0.0, -3.0, 16.9 / 48000}) {
    const auto ranked = rank(noise(2, 24000), candidateGrid(48000, 1, 0), seconds);
    EXPECT_EQ(tokens(ranked), allTokens());
    for (const auto& candidate : ranked) EXPECT_EQ(candidate.score, -1);
  }
}

TEST(RawPCMGuesser, PutsSamplesThatAreNoNumbersLast) {
  test::ByteWriter writer;
  for (int i = 0; i < 300; ++i) writer.u32(0x7FC00000U + static_cast<std::uint32_t>(i));
  const auto ranked = rank(writer.bytes(), candidateGrid(48000, 1, 0), 1);
  ASSERT_EQ(ranked.size(), 13U);
  const auto f32le = std::find_if(ranked.begin(), ranked.end(), [](const Candidate& candidate) {
    return candidate.format.formatToken() == "f32le";
  });
  EXPECT_EQ(f32le->score, -1);
}

TEST(RawPCMGuesser, LooksAtNoMoreThanThePreview) {
  // A tone for a second, noise behind it.
  const auto format = candidateGrid(8000, 1, 0)[1];
  auto data = test::rawSamples({.channels = {test::lockedSine(8000, 100, 8000, 0, 0.5)}}, format);
  const auto tone = rank(data, candidateGrid(8000, 1, 0), 1);
  const auto more = noise(3, 16000);
  data.insert(data.end(), more.begin(), more.end());
  const auto both = rank(data, std::span(&format, 1), 1);
  ASSERT_EQ(both.size(), 1U);
  EXPECT_EQ(both[0], tone[0]);
  EXPECT_LT(rank(data, std::span(&format, 1), 2)[0].score, both[0].score);
}

TEST(RawPCMGuesser, IsEmptyForWhatIsNoFile) {
  const test::TemporaryDirectory folder;
  const auto grid = candidateGrid(48000, 1, 0);
  EXPECT_TRUE(rank(folder / "missing", grid, 1).empty());
  EXPECT_TRUE(rank(folder.path(), grid, 1).empty());
}

TEST(RawPCMGuesser, RanksAFileAsItsBytesOnAnyNumberOfThreads) {
  test::Random random(5);
  const test::TemporaryDirectory folder;
  for (int round = 0; round < 30; ++round) {
    const auto channels = static_cast<std::int64_t>(1 + random.below(6));
    const auto skip = static_cast<std::int64_t>(random.below(50));
    auto data = noise(random.next(), static_cast<std::size_t>(skip) + random.below(20'000) * 4);
    if (random.below(2) == 0) std::fill(data.begin(), data.end(), std::byte{0});
    const auto grid = candidateGrid(48000, channels, skip);
    const double seconds = random.between(0, 0.2);
    const auto expected = rank(data, grid, seconds);
    const auto file = folder.write("take.raw", data);
    for (const std::size_t threads : {1U, 2U, 7U}) {
      EXPECT_EQ(rank(file, grid, seconds, {.threadCount = threads, .onPreview = {}}), expected);
      EXPECT_EQ(rank(data, grid, seconds, {.threadCount = threads, .onPreview = {}}), expected);
    }
    EXPECT_TRUE(std::is_sorted(expected.begin(), expected.end(),
                               [](const auto& a, const auto& b) { return a.score > b.score; }));
  }
}

TEST(RawPCMGuesser, ShowsEveryPreviewThatItScores) {
  const auto data = noise(4, 2004);  // a multiple of 1, 2, 3 and 4
  const auto grid = candidateGrid(48000, 1, 0);
  std::vector<float> scores(grid.size());
  std::vector<std::uint32_t> frames(grid.size());
  const auto placeOf = [&grid](const RawPCMFormat& format) {
    return static_cast<std::size_t>(std::find(grid.begin(), grid.end(), format) - grid.begin());
  };
  const auto note = [&](const RawPCMFormat& format, const PCMBuffer& preview) {
    scores[placeOf(format)] = lag1Score(preview);
    frames[placeOf(format)] = preview.frameLength();
  };
  const auto ranked = rank(data, grid, 0.01, {.threadCount = 2, .onPreview = note});
  ASSERT_EQ(ranked.size(), 11U);
  for (const auto& candidate : ranked) {
    EXPECT_EQ(scores[placeOf(candidate.format)], candidate.score);
    EXPECT_EQ(frames[placeOf(candidate.format)], 480U);
  }
  EXPECT_EQ(frames[11] + frames[12], 0U) << "64 bits do not fit the size";
}

TEST(RawPCMGuesserDeathTest, TakesNoPreviewThatCannotBeCounted) {
  const auto grid = candidateGrid(48000, 1, 0);
  for (const double seconds : {1e300, -1e300, std::numeric_limits<double>::quiet_NaN(),
                               std::numeric_limits<double>::infinity(), 0x1p63 / 48000})
    EXPECT_DEATH((void)rank(Bytes(480), grid, seconds), "must fit 64 bits") << seconds;
  EXPECT_TRUE(rank(Bytes{}, grid, 1e300).empty());
}

}  // namespace
}  // namespace orvane
