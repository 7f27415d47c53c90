// The same figures however the audio is offered: in which pieces, on how many threads, by which
// instruction set.
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "tests/core/loudness/metering.h"
#include "tests/support/each_instruction_set.h"
#include "tests/support/random.h"
#include "tests/support/signals.h"

namespace orvane::core {
namespace {

using metering::Cutter;
using metering::Figures;
using test::Programme;

// The promise: 1e-9 LU. Levels are floats, so they may fall to the neighbouring one.
constexpr double kPowerToleranceLU = 1e-9;

void expectSame(const Figures& actual, const Figures& expected) {
  metering::expectSamePowers(actual.blockPowers, expected.blockPowers, kPowerToleranceLU);
  ASSERT_EQ(actual.history.size(), expected.history.size());
  const auto same = [](float a, float b, const char* what, std::size_t i) {
    const double step = std::abs(b) < 128 ? 7.7e-6 : 1.6e-5;
    metering::expectSameLevel(static_cast<double>(a), static_cast<double>(b), step, what, i);
  };
  for (std::size_t i = 0; i < actual.history.size(); ++i) {
    same(actual.history[i].momentary, expected.history[i].momentary, "momentary", i);
    same(actual.history[i].shortTerm, expected.history[i].shortTerm, "short-term", i);
    same(actual.history[i].integrated, expected.history[i].integrated, "integrated", i);
  }
  same(actual.integrated, expected.integrated, "integrated", 0);
  same(actual.range, expected.range, "range", 0);
}

Cutter inRandomPieces(std::uint64_t seed, std::size_t most) {
  return [random = test::Random(seed), most](std::size_t left) mutable {
    return std::min(left, static_cast<std::size_t>(random.below(most)));
  };
}

void expectAnyCutting(const Programme& programme) {
  const auto expected = metering::measure(programme);
  const auto step = static_cast<std::size_t>(programme.sampleRate / 10);
  const std::vector<std::pair<std::string, Cutter>> cutters{
      {"100 ms", metering::inPiecesOf(step)},
      {"a prime number of frames", metering::inPiecesOf(4999)},
      {"seven frames", metering::inPiecesOf(7)},
      {"a second and one frame", metering::inPiecesOf(10 * step + 1)},
      {"short random pieces, empty ones too", inRandomPieces(31, 50)},
      {"long random pieces", inRandomPieces(32, 60 * step)}};
  for (const auto& [name, cutter] : cutters) {
    const ::testing::ScopedTrace trace(__FILE__, __LINE__, "in pieces of " + name);
    const auto actual = metering::measure(programme, std::nullopt, cutter);
    expectSame(actual, expected);
    EXPECT_EQ(actual.channelPeaks, expected.channelPeaks);  // exact
    EXPECT_EQ(actual.truePeak, expected.truePeak);
  }
}

TEST(LoudnessCutting, ChangesNothingInMusic) {
  expectAnyCutting(test::music(33, 48000, 2, 20.03));
}

TEST(LoudnessCutting, ChangesNothingInManyChannels) {
  expectAnyCutting(test::music(34, 16000, 6, 12.51));
  expectAnyCutting(test::music(35, 8000, 19, 2.07));
}

TEST(LoudnessCutting, ChangesNothingAtOddRates) {
  expectAnyCutting(test::music(36, 11025, 1, 15.2));
  expectAnyCutting(test::music(37, 192000, 2, 5.1));
}

TEST(LoudnessCutting, ChangesNothingInBurstsAndOffsets) {
  Programme programme{48000, {test::noiseBursts(38, 48000, 48000 * 12)}};
  expectAnyCutting(programme);
  test::offsetBy(programme.channels.front(), 0.5F);
  expectAnyCutting(programme);
}

TEST(LoudnessCutting, ChangesNothingWhereDeepSilenceFollowsFullScale) {
  Programme programme{48000, {test::whiteNoise(39, 48000 * 4, 1.0F)}};
  auto& channel = programme.channels.front();
  const auto faint = test::whiteNoise(40, 48000 * 8, 1e-7F);
  channel.insert(channel.end(), faint.begin(), faint.end());
  channel.resize(48000 * 20);
  expectAnyCutting(programme);
}

TEST(LoudnessCutting, ChangesNothingAroundNonFiniteSamples) {
  auto programme = test::music(41, 48000, 2, 10);
  test::Random random(42);
  for (int i = 0; i < 100; ++i)
    programme.channels[random.below(2)][random.below(480000)] =
        i % 2 == 0 ? std::numeric_limits<float>::quiet_NaN()
                   : std::numeric_limits<float>::infinity();
  expectAnyCutting(programme);
}

TEST(LoudnessCutting, HoldsDownToSingleFrames) {
  const auto programme = test::music(43, 8000, 2, 1.17);
  const auto expected = metering::measure(programme);
  const auto actual = metering::measure(programme, std::nullopt, metering::inPiecesOf(1));
  expectSame(actual, expected);
  EXPECT_EQ(actual.channelPeaks, expected.channelPeaks);
}

TEST(LoudnessThreads, MayMeasureLoudnessAndTruePeakAtOnce) {
  const auto programme = test::music(44, 48000, 2, 10);
  const auto expected = metering::measure(programme);
  LoudnessProcessor meter(48000, 2);
  meter.isRecording = true;
  std::thread peaks([&] {
    for (std::size_t done = 0; done < programme.frameCount(); done += 4800)
      meter.updateTruePeak(programme.pointers(done), 4800);
  });
  meter.process(programme.pointers(), programme.frameCount());
  peaks.join();
  meter.flushPartialBlock();
  EXPECT_EQ(metering::figuresOf(meter), expected);
}

TEST(LoudnessInstructionSets, GiveTheSameFigures) {
  for (const auto& programme : {test::music(45, 48000, 2, 9.03), test::music(46, 44100, 5, 4.01),
                                test::music(47, 8000, 17, 2.03),
                                Programme{96000, {test::noiseBursts(48, 96000, 400000)}}}) {
    const auto expected = metering::measure(programme);
    test::onEachInstructionSet([&] {
      const auto actual = metering::measure(programme);
      expectSame(actual, expected);
      // Epsilon-scaled: 24 products in float, fused or not: 24 · ε · 8.7 dB per neper.
      ASSERT_EQ(actual.channelPeaks.size(), expected.channelPeaks.size());
      for (std::size_t c = 0; c < actual.channelPeaks.size(); ++c)
        EXPECT_NEAR(actual.channelPeaks[c], expected.channelPeaks[c], 24 * 6e-8 * 8.7 + 4e-6);
    });
  }
}

}  // namespace
}  // namespace orvane::core
