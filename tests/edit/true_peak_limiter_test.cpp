#include "orvane/edit/true_peak_limiter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>

#include "orvane/core/decibels.h"
#include "orvane/core/peak/true_peak_meter.h"
#include "orvane/edit/level.h"
#include "orvane/platform/error.h"
#include "tests/edit/hostile_programme.h"
#include "tests/reference/limiter_reference.h"
#include "tests/support/each_instruction_set.h"
#include "tests/support/signals.h"

namespace orvane::EditOperations {
namespace {

using test::Programme;

bool limit(Programme& programme, double ceilingDBTP, const Execution& execution = {}) {
  std::vector<float*> pointers;
  for (auto& channel : programme.channels) pointers.push_back(channel.data());
  return applyTruePeakLimiter({pointers, programme.frameCount()}, linearGain(ceilingDBTP),
                              programme.sampleRate, execution);
}

/// As the product's own meter reads it, tail included.
double truePeakDB(const Programme& programme) {
  core::TruePeakMeter meter(programme.sampleRate, programme.channels.size());
  meter.process({programme.pointers(), programme.frameCount()});
  meter.flush();
  return static_cast<double>(
      core::linearToDB(*std::max_element(meter.peaks().begin(), meter.peaks().end())));
}

/// Sixteen points per sample by a windowed sinc of 32 samples, which passes 0.43 of the rate. A
/// longer one reads more of what lies between that and half the rate.
double truePeakAtSixteenTimesDB(const std::vector<float>& samples) {
  constexpr int kReach = 16;
  double largest = 0;
  const auto count = static_cast<int>(samples.size());
  for (int phase = 0; phase < 16; ++phase) {
    std::vector<double> taps;
    for (int k = -kReach + 1; k <= kReach; ++k) {
      const double t = k - phase / 16.0;
      const double x = std::numbers::pi * t;
      const double place = t / kReach;
      const double window = std::abs(place) < 1
                                ? std::cyl_bessel_i(0.0, 7 * std::sqrt(1 - place * place)) /
                                      std::cyl_bessel_i(0.0, 7.0)
                                : 0;
      taps.push_back((t == 0 ? 1 : std::sin(x) / x) * window);
    }
    for (int n = -kReach; n < count + kReach; ++n) {
      double sum = 0;
      for (int k = -kReach + 1; k <= kReach; ++k)
        if (n + k >= 0 && n + k < count)
          sum += taps[static_cast<std::size_t>(k + kReach - 1)] *
                 static_cast<double>(samples[static_cast<std::size_t>(n + k)]);
      largest = std::max(largest, std::abs(sum));
    }
  }
  return core::linearToDB(largest);
}

class HostileProgrammes : public ::testing::TestWithParam<std::uint32_t> {};

// A ceiling without the windows behind the last sample would be passed by up to 1.03 dB.
TEST_P(HostileProgrammes, NeverReadAboveTheCeiling) {
  for (std::uint64_t seed = 0; seed < 200; ++seed) {
    auto programme = test::hostileProgramme(seed, GetParam());
    const double ceiling = seed % 2 == 0 ? -1 : -9;
    limit(programme, ceiling);
    EXPECT_LE(truePeakDB(programme), ceiling + 0.001) << seed;
  }
}

TEST_P(HostileProgrammes, AreLimitedAsTheFormulasSay) {
  for (std::uint64_t seed = 0; seed < 60; ++seed) {
    auto programme = test::hostileProgramme(seed, GetParam());
    const auto expected =
        reference::limited(programme.channels, programme.sampleRate, linearGain(-1));
    EXPECT_EQ(limit(programme, -1), expected.hasChanged) << seed;
    // Rounding: a step of the gain, which the last scaling follows, and two products.
    for (std::size_t c = 0; c < expected.channels.size(); ++c)
      for (std::size_t i = 0; i < expected.channels[c].size(); ++i)
        ASSERT_NEAR(programme.channels[c][i], expected.channels[c][i],
                    8 * 6e-8F * std::abs(expected.channels[c][i]))
            << seed << ' ' << i;
  }
}

// At 1 kHz the look-ahead is shorter than what the filters look back.
INSTANTIATE_TEST_SUITE_P(, HostileProgrammes, ::testing::Values(44100U, 48000U, 88200U, 1000U),
                         ::testing::PrintToStringParamName());

// From 96 kHz on the meter reads by a longer filter than the limiter looks through.
TEST(TruePeakLimiter, ComesCloseToTheMeterAtHighRates) {
  for (const std::uint32_t rate : {96000U, 176400U, 192000U})
    for (std::uint64_t seed = 1; seed < 30; ++seed) {
      auto programme = test::hostileProgramme(seed, rate);
      limit(programme, -1);
      EXPECT_LE(truePeakDB(programme), -1 + 1.8) << rate << ' ' << seed;
    }
}

// Physical: what ×4 and twelve taps miss of a waveform, measured at ×16.
TEST(TruePeakLimiter, HoldsTheCeilingByAnotherMeterToo) {
  const auto highest = [](auto make) {
    double level = -100;
    for (std::uint64_t seed = 1; seed <= 8; ++seed) {
      Programme programme{48000, {make(seed)}};
      for (float& x : programme.channels[0]) x *= 2.5F;
      limit(programme, -1);
      level = std::max(level, truePeakAtSixteenTimesDB(programme.channels[0]));
    }
    return level + 1;
  };
  const double to18kHz = highest([](std::uint64_t seed) {
    return test::bandLimited(test::whiteNoise(seed, 24000, 1), 18000.0 / 48000);
  });
  const double fullBand =
      highest([](std::uint64_t seed) { return test::whiteNoise(seed, 24000, 1); });
  RecordProperty("above_the_ceiling_dB", std::to_string(to18kHz) + ", " + std::to_string(fullBand));
  EXPECT_LE(to18kHz, 0.35);
  EXPECT_LE(fullBand, 1.6);
}

TEST(TruePeakLimiter, GivesTheSameBitsForAnyNumberOfThreads) {
  for (std::uint64_t seed = 1; seed < 4; ++seed) {
    Programme one{48000, {}};
    for (std::uint64_t c = 0; c < seed; ++c)
      one.channels.push_back(test::noiseBursts(10 * seed + c, 48000, 300000));
    auto two = one, four = one;
    EXPECT_TRUE(limit(one, -6));
    limit(two, -6, {.threadCount = 2});
    limit(four, -6, {.threadCount = 4});
    EXPECT_EQ(two.channels, one.channels);
    EXPECT_EQ(four.channels, one.channels);
  }
}

/// Slice by slice, both turns.
Programme limitedInSlices(const Programme& programme, double ceilingDBTP, std::uint64_t seed,
                          bool* hasChanged) {
  Programme result{programme.sampleRate, {}};
  float scale = 1;
  for (int turn = 0; turn < 2; ++turn) {
    test::Random random(seed);
    TruePeakLimiter limiter(programme.sampleRate, programme.channels.size(),
                            linearGain(ceilingDBTP));
    result.channels.assign(programme.channels.size(), {});
    const auto keep = [&](MutablePlanarView known) {
      for (std::size_t c = 0; c < known.channelCount(); ++c)
        for (const float x : known.samples(c)) result.channels[c].push_back(x * scale);
    };
    for (std::size_t at = 0; at < programme.frameCount();) {
      const auto count =
          std::min<std::size_t>(random.below(3) == 0 ? random.below(30) : random.below(20000),
                                programme.frameCount() - at);
      keep(limiter.process({programme.pointers(at), count}));
      at += count;
    }
    keep(limiter.finish());
    EXPECT_EQ(turn == 0 ? scale : limiter.lastScale(), scale);
    scale = limiter.lastScale();
    *hasChanged = limiter.hasChanged();
  }
  return result;
}

TEST(TruePeakLimiter, GivesTheSameBitsInSlicesOfAnySize) {
  for (std::uint64_t seed = 0; seed < 60; ++seed) {
    auto programme = test::hostileProgramme(seed, seed % 2 == 0 ? 48000 : 2000);
    bool hasChanged = false;
    const auto inSlices = limitedInSlices(programme, -1, seed, &hasChanged);
    EXPECT_EQ(limit(programme, -1), hasChanged) << seed;
    EXPECT_EQ(inSlices.channels, programme.channels) << seed;
  }
  bool hasChanged = true;
  limitedInSlices({48000, {{}, {}}}, -1, 1, &hasChanged);
  EXPECT_FALSE(hasChanged);
}

// More than one of the slices that the limiter itself cuts.
TEST(TruePeakLimiter, EqualsTheFormulasOverALongProgramme) {
  Programme programme{44100, {}};
  for (std::uint64_t c = 0; c < 3; ++c)
    programme.channels.push_back(test::noiseBursts(90 + c, 44100, 300000));
  const auto expected = reference::limited(programme.channels, 44100, linearGain(-6));
  EXPECT_TRUE(limit(programme, -6, {.threadCount = 2}));
  for (std::size_t c = 0; c < 3; ++c)
    for (std::size_t i = 0; i < 300000; ++i)
      ASSERT_NEAR(programme.channels[c][i], expected.channels[c][i],
                  8 * 6e-8F * std::abs(expected.channels[c][i]));
}

TEST(TruePeakLimiter, LeavesWhatIsBelowTheCeilingAlone) {
  test::onEachInstructionSet([] {
    for (const std::size_t frames : {1U, 240U, 100000U}) {
      Programme programme{48000,
                          {test::pinkNoise(1, frames, 0.4F), test::pinkNoise(2, frames, 0.4F)}};
      programme.channels[0][0] = -0.0F;
      programme.channels[1][0] = std::numeric_limits<float>::denorm_min();
      const auto before = programme.channels;
      EXPECT_FALSE(limit(programme, -1));
      EXPECT_EQ(programme.channels, before);
      EXPECT_TRUE(std::signbit(programme.channels[0][0]));
    }
  });
}

TEST(TruePeakLimiter, CountsASampleThatIsNoNumberAsAChange) {
  for (const float wild :
       {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
        -std::numeric_limits<float>::infinity()})
    for (const std::size_t at : {0U, 500U, 999U}) {
      Programme programme{48000, {test::pinkNoise(1, 1000, 0.4F)}};
      auto expected = programme.channels;
      expected[0][at] = 0;
      programme.channels[0][at] = wild;
      EXPECT_TRUE(limit(programme, -1));
      EXPECT_EQ(programme.channels, expected);
    }
}

// With a gain in single precision nothing behind the first peak would be as it was ever again.
TEST(TruePeakLimiter, LeavesWhatIsTwoSecondsBehindThePeakAlone) {
  constexpr std::size_t kFirst = 2000;
  std::size_t checked = 0;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    Programme programme{48000, {test::pinkNoise(seed, 48000 * 3, 0.3F)}};
    auto& samples = programme.channels[0];
    for (std::size_t i = 0; i < 30 * seed; ++i) samples[kFirst + i] *= 60;
    const auto before = samples;
    EXPECT_TRUE(limit(programme, -1));
    // No last scaling where the beginning has not changed.
    if (!std::equal(before.begin(), before.begin() + 1000, samples.begin())) continue;
    ++checked;
    for (std::size_t i = kFirst + 30 * seed + 96000; i < before.size(); ++i)
      ASSERT_EQ(samples[i], before[i]) << i;
  }
  EXPECT_GE(checked, 5U);
}

TEST(TruePeakLimiter, LimitsAToneThatEndsOnItsCrest) {
  Programme programme{48000, {std::vector<float>(48000)}};
  for (std::size_t i = 0; i < 48000; ++i)
    programme.channels[0][i] =
        linearGain(-1) * static_cast<float>(std::cos(2 * std::numbers::pi * 100 / 48000 *
                                                     static_cast<double>(47999 - i)));
  EXPECT_GT(truePeakDB(programme), 0.03);
  EXPECT_TRUE(limit(programme, -1));
  EXPECT_LE(truePeakDB(programme), -1 + 0.001);
}

TEST(TruePeakLimiter, EndsWithNumbersWhateverItIsGiven) {
  constexpr float kMost = std::numeric_limits<float>::max();
  for (const double ceiling : {-1.0, 200.0, -600.0, -std::numeric_limits<double>::infinity(),
                               std::numeric_limits<double>::infinity()})
    for (const double rate : {48000.0, 1.0, 0.0, 1e12}) {
      Programme programme{rate, {test::whiteNoise(3, 3000, 1), std::vector<float>(3000, kMost)}};
      programme.channels[1][7] = -kMost;
      limit(programme, ceiling);
      for (const auto& channel : programme.channels)
        for (const float x : channel) ASSERT_TRUE(std::isfinite(x)) << ceiling << ' ' << rate;
    }
}

TEST(TruePeakLimiter, HasNothingToDoWithoutAudio) {
  Programme none{48000, {}};
  EXPECT_FALSE(limit(none, -1));
  Programme empty{48000, {{}, {}}};
  EXPECT_FALSE(limit(empty, -1));
  EXPECT_EQ(limitTruePeak({}, 44100, -1), (EditResult{{}, 44100, 0}));
  EXPECT_EQ(limitTruePeak({{}, {}}, 44100, -1), (EditResult{{{}, {}}, 44100, 2}));
}

TEST(LimitTruePeak, IsTheLimiterAtTheCeilingsAmplitude) {
  auto programme = test::hostileProgramme(7, 44100);
  const auto result = limitTruePeak(programme.channels, 44100, -3);
  limit(programme, -3);
  EXPECT_EQ(result, (EditResult{programme.channels, 44100, 2}));
}

TEST(TruePeakLimiter, IsWatchedAndStopped) {
  struct Observer : ProgressObserver {
    double fraction = 0;
    bool isStopping = false;
    void onProgress(std::string_view stage, double f) override {
      EXPECT_EQ(stage, "Limiting");
      fraction = std::max(fraction, f);
    }
    bool isCancelled() override { return isStopping; }
  } observer;
  Programme programme{48000, {test::whiteNoise(1, 500000, 2)}};
  limit(programme, -1, {2, &observer});
  EXPECT_EQ(observer.fraction, 1);
  observer.isStopping = true;
  EXPECT_THROW(limit(programme, -1, {2, &observer}), Cancelled);
}

}  // namespace
}  // namespace orvane::EditOperations
