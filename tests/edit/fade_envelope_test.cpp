#include "orvane/edit/fade_envelope.h"

#include <cmath>

#include "orvane/edit/fade_gain_kernel.h"
#include "tests/edit/edit_samples.h"
#include "tests/reference/edit_reference.h"
#include "tests/support/each_instruction_set.h"

namespace orvane::EditOperations {
namespace {

/// Two steps of single precision at 1; 1 − g cancels, so nothing relative can be asked for.
constexpr float kEnvelopeTolerance = 2.4e-7F;

constexpr std::array kDirections = {FadeDirection::fadeIn, FadeDirection::fadeOut};

TEST(FadeCurve, HasTheLabelsThatUsersSee) {
  EXPECT_EQ(rawValue(FadeCurve::linear), "Linear");
  EXPECT_EQ(rawValue(FadeCurve::logarithmic), "Log");
  EXPECT_EQ(rawValue(FadeCurve::equalPower), "Equal Power");
  for (const FadeCurve curve : kFadeCurves)
    EXPECT_EQ(fadeCurveFromRawValue(rawValue(curve)), curve);
  EXPECT_FALSE(fadeCurveFromRawValue("linear"));
}

TEST(FadeEnvelope, EqualsTheFormulas) {
  orvane::test::onEachInstructionSet([] {
    for (const FadeCurve curve : kFadeCurves) {
      for (const FadeDirection direction : kDirections) {
        for (const std::int64_t count : {1, 2, 3, 17, 4800, 48001}) {
          const auto gains = fadeEnvelope(count, direction, curve);
          ASSERT_EQ(gains.size(), static_cast<std::size_t>(count));
          for (std::int64_t i = 0; i < count; ++i) {
            const float expected = reference::fadeGain(i, count, direction, curve);
            const float gain = gains[static_cast<std::size_t>(i)];
            if (curve == FadeCurve::linear)
              ASSERT_EQ(gain, expected);
            else
              ASSERT_NEAR(gain, expected, kEnvelopeTolerance) << count << " " << i;
          }
        }
      }
    }
  });
}

TEST(FadeEnvelope, IsTheSameOnEveryInstructionSet) {
  for (const FadeCurve curve : kFadeCurves) {
    for (const FadeDirection direction : kDirections) {
      const auto expected = fadeEnvelope(100'003, direction, curve);
      orvane::test::onEachInstructionSet(
          [&] { EXPECT_EQ(fadeEnvelope(100'003, direction, curve), expected); });
    }
  }
}

TEST(FadeEnvelope, RunsExactlyFromEndToEnd) {
  for (const FadeCurve curve : {FadeCurve::linear, FadeCurve::logarithmic}) {
    EXPECT_EQ(fadeEnvelope(2, FadeDirection::fadeIn, curve), (std::vector{0.0F, 1.0F}));
    EXPECT_EQ(fadeEnvelope(2, FadeDirection::fadeOut, curve), (std::vector{1.0F, 0.0F}));
    EXPECT_EQ(fadeEnvelope(1, FadeDirection::fadeIn, curve), std::vector{0.0F});
    EXPECT_EQ(fadeEnvelope(1, FadeDirection::fadeOut, curve), std::vector{1.0F});
    EXPECT_EQ(fadeEnvelope(48'000, FadeDirection::fadeIn, curve).back(), 1.0F);
    EXPECT_EQ(fadeEnvelope(48'000, FadeDirection::fadeOut, curve).back(), 0.0F);
  }
  EXPECT_EQ(fadeEnvelope(480, FadeDirection::fadeIn, FadeCurve::equalPower).back(), 1.0F);
  EXPECT_TRUE(fadeEnvelope(0, FadeDirection::fadeIn, FadeCurve::linear).empty());
}

TEST(FadeEnvelope, AnEqualPowerFadeOutEndsJustAboveSilence) {
  const auto gains = fadeEnvelope(480, FadeDirection::fadeOut, FadeCurve::equalPower);
  EXPECT_EQ(gains.front(), 1.0F);
  EXPECT_NEAR(gains.back(), 7.5498e-8F, 1e-12F);
}

TEST(FadeEnvelope, CountsFramesBeyondSinglePrecision) {
  // 2^24 + 1 is no float: the frame number is rounded, not the sum of a first one and an index.
  constexpr std::int64_t kFirst = (1 << 24) - 3;
  constexpr std::int64_t kCount = 3LL << 30;
  const auto divisor = static_cast<float>(kCount - 1);
  std::vector<float> gains(16);
  for (const std::int64_t first : {kFirst, std::int64_t{5} << 29}) {
    fillFadeGains(FadeCurve::linear, FadeDirection::fadeIn, first, divisor, gains);
    for (std::size_t i = 0; i < gains.size(); ++i)
      EXPECT_EQ(gains[i], static_cast<float>(first + static_cast<std::int64_t>(i)) / divisor);
  }
}

TEST(Fade, MultipliesTheRangeAndNothingElse) {
  const auto channels = test::noise(2, 3001);
  for (const FadeCurve curve : kFadeCurves) {
    for (const FadeDirection direction : kDirections) {
      for (const auto& range : test::rangesOf(3001)) {
        const auto result = fade(channels, 48'000, range.start, range.end, direction, curve);
        EXPECT_EQ(result.channelCount, 2);
        EXPECT_EQ(result.sampleRate, 48'000);
        for (std::size_t c = 0; c < 2; ++c)
          test::expectNear(result.channelData[c],
                           reference::fade(channels[c], range.start, range.end, direction, curve),
                           kEnvelopeTolerance);
      }
    }
  }
}

TEST(Fade, IsTheSameInSlicesOfAnySize) {
  const auto channels = test::noise(3, 5003);
  for (const auto& range : {FrameRange{100, 4900}, FrameRange{0, 5003}}) {
    const auto whole = fade(channels, 48'000, range.start, range.end, FadeDirection::fadeOut,
                            FadeCurve::equalPower);
    for (const std::vector<std::size_t>& sizes :
         {std::vector<std::size_t>{1}, {7, 1024}, {1000}, {4096}}) {
      EXPECT_EQ(test::inSlices(channels, sizes,
                               [&](const ProgrammeSlice& slice) {
                                 fadeSlice(slice, range, FadeDirection::fadeOut,
                                           FadeCurve::equalPower);
                               }),
                whole.channelData);
    }
  }
}

TEST(Fade, OfNothingIsNothing) {
  EXPECT_EQ(fade({}, 48'000, 0, 10, FadeDirection::fadeIn, FadeCurve::linear),
            (EditResult{{}, 48'000, 0}));
  fadeInPlace({}, 0, 10, FadeDirection::fadeIn, FadeCurve::linear);
  EXPECT_DEATH(fade({{1, 2}, {1}}, 48'000, 0, 1, FadeDirection::fadeIn, FadeCurve::linear),
               "equal length");
  EXPECT_DEATH(fade({{1}}, std::nan(""), 0, 1, FadeDirection::fadeIn, FadeCurve::linear),
               "a sample rate is a number");
}

}  // namespace
}  // namespace orvane::EditOperations
