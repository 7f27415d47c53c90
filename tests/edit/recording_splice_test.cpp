#include "orvane/edit/recording_splice.h"

#include <chrono>
#include <cmath>
#include <limits>
#include <numbers>

#include "tests/edit/edit_samples.h"
#include "tests/reference/edit_reference.h"
#include "tests/support/container_writer.h"
#include "tests/support/temporary_directory.h"

namespace orvane::RecordingSplice {
namespace {

using EditOperations::test::expectNear;
using EditOperations::test::noise;
using EditOperations::test::rangesOf;

constexpr float kTolerance = 3e-7F;  // single-precision angles, two products and a sum
constexpr double kRate = 48'000;
constexpr std::int64_t kCrossfades[] = {-4, 0, 1, 2, 100, 480, 9000};
constexpr std::size_t kTakeLengths[] = {1, 2, 3, 150, 1000, 5000};

/// Noise other than what `noise` gives for as many frames.
ChannelArrays takeOf(std::size_t channelCount, std::size_t frames) {
  auto channels = noise(channelCount + 1, frames);
  channels.erase(channels.begin());
  return channels;
}

void expectUnchanged(const EditResult& result, const ChannelArrays& base) {
  EXPECT_EQ(result, (EditResult{base, kRate, static_cast<int>(base.size())}));
}

void expectSpliced(const EditResult& result, const ChannelArrays& base, const FrameRange& replaced,
                   const ChannelArrays& take, std::int64_t crossfade) {
  ASSERT_EQ(result.channelData.size(), base.size());
  EXPECT_EQ(result.channelCount, static_cast<int>(base.size()));
  EXPECT_EQ(result.sampleRate, kRate);
  for (std::size_t c = 0; c < base.size(); ++c)
    expectNear(result.channelData[c],
               reference::splice(base[c], replaced.start, replaced.end, take[c], crossfade),
               kTolerance);
}

TEST(ReplaceSplice, PutsTheTakeInPlaceOfTheRange) {
  const auto base = noise(2, 1501);
  for (const auto& range : rangesOf(1501)) {
    const auto replaced = range.clamped(1501);
    if (replaced.isEmpty()) continue;
    for (const std::size_t length : kTakeLengths) {
      const auto take = takeOf(2, length);
      for (const std::int64_t crossfade : kCrossfades)
        expectSpliced(replaceSplice(base, range.start, range.end, take, crossfade, kRate), base,
                      replaced, take, crossfade);
    }
  }
}

TEST(InsertSplice, RemovesNothingOfTheBase) {
  const auto base = noise(2, 1501);
  for (const std::int64_t at : {-9, 0, 1, 50, 700, 1500, 1501, 9000}) {
    const std::int64_t place = std::clamp<std::int64_t>(at, 0, 1501);
    for (const std::size_t length : kTakeLengths) {
      const auto take = takeOf(2, length);
      for (const std::int64_t crossfade : kCrossfades)
        expectSpliced(insertSplice(base, at, take, crossfade, kRate), base, {place, place}, take,
                      crossfade);
    }
  }
}

TEST(AppendSplice, FadesIntoTheTakeOnly) {
  const auto base = noise(2, 700);
  for (const std::size_t length : kTakeLengths) {
    const auto take = takeOf(2, length);
    for (const std::int64_t crossfade : kCrossfades) {
      const auto result = appendSplice(base, take, crossfade, kRate);
      expectSpliced(result, base, {700, 700}, take, crossfade);
      const std::int64_t seam =
          std::clamp<std::int64_t>(crossfade, 0, std::min(700, static_cast<int>(length)));
      for (std::size_t c = 0; c < 2; ++c)
        EXPECT_TRUE(
            std::equal(take[c].begin() + seam, take[c].end(), result.channelData[c].begin() + 700));
    }
  }
}

TEST(Splices, TouchNothingBesideTheSeams) {
  const auto base = noise(1, 2000);
  const auto take = takeOf(1, 600);
  const auto result = replaceSplice(base, 800, 1000, take, 100, kRate).channelData.front();
  ASSERT_EQ(result.size(), 2200U);
  EXPECT_TRUE(std::equal(result.begin(), result.begin() + 700, base[0].begin()));
  EXPECT_TRUE(std::equal(result.begin() + 800, result.begin() + 1200, take[0].begin() + 100));
  EXPECT_TRUE(std::equal(result.begin() + 1300, result.end(), base[0].begin() + 1100));
}

TEST(Splices, AreNoSteeperThanTheirRamps) {
  // The largest step of a ramp, at the steep end of a quarter of a sine, is its last gain too.
  const double lastGain = std::cos(std::numbers::pi / 2 * 479 / 480);
  EXPECT_NEAR(20 * std::log10(lastGain), -49.7, 0.01);
  const auto steps = [](const std::vector<float>& x) {
    double largest = 0;
    for (std::size_t i = 1; i < x.size(); ++i)
      largest = std::max(largest, std::abs(double{x[i]} - double{x[i - 1]}));
    return largest;
  };
  const ChannelArrays ones(1, std::vector<float>(2000, 1.0F));
  const ChannelArrays zeros(1, std::vector<float>(2000));
  for (const auto& [base, take] : {std::pair(ones, zeros), std::pair(zeros, ones)}) {
    for (const auto& result :
         {appendSplice(base, take, 480, kRate), insertSplice(base, 1000, take, 480, kRate),
          replaceSplice(base, 700, 900, take, 480, kRate)})
      EXPECT_LE(steps(result.channelData[0]), lastGain + kTolerance);
  }
  // The outgoing side ends with its last gain, and then it is gone.
  const auto appended = appendSplice(ones, zeros, 480, kRate).channelData.front();
  EXPECT_NEAR(appended[1999], lastGain, kTolerance);
  EXPECT_EQ(appended[2000], 0);
}

TEST(Splices, LeaveTheBaseAloneWhereTheTakeDoesNotFit) {
  const auto base = noise(2, 1000);
  for (const auto& take : {ChannelArrays{}, takeOf(1, 100), takeOf(3, 100), takeOf(2, 0)}) {
    expectUnchanged(appendSplice(base, take, 10, kRate), base);
    expectUnchanged(insertSplice(base, 500, take, 10, kRate), base);
    expectUnchanged(replaceSplice(base, 500, 600, take, 10, kRate), base);
  }
  expectUnchanged(appendSplice({}, takeOf(2, 100), 10, kRate), {});
  expectUnchanged(appendSplice({}, {}, 10, kRate), {});
}

TEST(ReplaceSplice, OfNothingLeavesTheBaseAlone) {
  const auto base = noise(2, 1000);
  const auto take = takeOf(2, 100);
  expectUnchanged(replaceSplice(base, 500, 500, take, 10, kRate), base);
  expectUnchanged(replaceSplice(base, 500, 400, take, 10, kRate), base);
  expectUnchanged(replaceSplice(base, 1000, 1100, take, 10, kRate), base);
  EXPECT_EQ(replaceMap(1000, 500, 400, 100, 10), FrameMap::identity(1000));
}

TEST(Splices, OfABaseWithoutFramesAreTheTake) {
  const auto take = takeOf(2, 100);
  EXPECT_EQ(appendSplice(ChannelArrays(2), take, 10, kRate).channelData, take);
  EXPECT_EQ(insertSplice(ChannelArrays(2), 7, take, 10, kRate).channelData, take);
}

TEST(SpliceMaps, TellWhereTheFramesOfTheBaseWent) {
  const auto map = replaceMap(1000, 400, 600, 300, 50);
  EXPECT_EQ(map.frameCount, 1000);  // 200 out, 300 in, two seams
  EXPECT_EQ(map.placeOf(0), 0);
  EXPECT_EQ(map.placeOf(399), 399);
  EXPECT_EQ(map.placeOf(400), std::nullopt);
  EXPECT_EQ(map.placeOf(599), std::nullopt);
  EXPECT_EQ(map.placeOf(600), 600);
  EXPECT_EQ(map.placeOf(999), 999);

  const auto inserted = insertMap(1000, 400, 300, 50);
  EXPECT_EQ(inserted.placeOf(399), 399);
  EXPECT_EQ(inserted.placeOf(400), 600);
  EXPECT_EQ(inserted.frameCount, 1200);

  EXPECT_EQ(appendMap(1000, 300, 50), (FrameMap{{{.count = 1000}}, 1250}));
  EXPECT_EQ(insertMap(1000, 0, 300, 50), (FrameMap{{{.count = 1000, .place = 250}}, 1250}));
}

TEST(SpliceMaps, AreThoseOfTheSamples) {
  const auto base = noise(1, 1000);
  for (const std::size_t length : kTakeLengths) {
    const auto take = takeOf(1, length);
    const auto takeFrames = static_cast<std::int64_t>(length);
    for (const std::int64_t crossfade : kCrossfades) {
      const auto expectMapped = [&](const FrameMap& map, const EditResult& result) {
        const auto& x = result.channelData.front();
        EXPECT_EQ(map.frameCount, static_cast<std::int64_t>(x.size()));
        std::int64_t moved = 0;
        for (std::int64_t n = 0; n < 1000; ++n)
          if (const auto place = map.placeOf(n))
            moved += x.at(static_cast<std::size_t>(*place)) == base[0][static_cast<std::size_t>(n)];
        const std::int64_t seams =
            2 * std::max<std::int64_t>(0, std::min({crossfade, takeFrames, std::int64_t{500}}));
        EXPECT_GE(moved, 900 - seams);
      };
      expectMapped(appendMap(1000, takeFrames, crossfade),
                   appendSplice(base, take, crossfade, kRate));
      expectMapped(insertMap(1000, 500, takeFrames, crossfade),
                   insertSplice(base, 500, take, crossfade, kRate));
      expectMapped(replaceMap(1000, 500, 600, takeFrames, crossfade),
                   replaceSplice(base, 500, 600, take, crossfade, kRate));
    }
  }
}

TEST(SpliceMaps, OfATakeWithoutFramesMoveNothing) {
  EXPECT_EQ(appendMap(1000, 0, 50), FrameMap::identity(1000));
  EXPECT_EQ(insertMap(1000, 400, 0, 50), FrameMap::identity(1000));
  EXPECT_EQ(replaceMap(1000, 400, 600, 0, 50), FrameMap::identity(1000));
}

TEST(ConformChannels, PutsMonoOnEveryChannel) {
  const ChannelArrays mono = {{0.25F, -0.5F}};
  EXPECT_EQ(conformChannels(mono, 1), mono);
  EXPECT_EQ(conformChannels(mono, 2), (ChannelArrays{mono[0], mono[0]}));
  EXPECT_EQ(conformChannels(mono, 6), ChannelArrays(6, mono[0]));
}

TEST(ConformChannels, AveragesStereoToMono) {
  EXPECT_EQ(conformChannels({{1, 0.5F}, {0.5F, -0.25F}}, 1), (ChannelArrays{{0.75F, 0.125F}}));
}

TEST(ConformChannels, RefusesEverythingElse) {
  EXPECT_EQ(conformChannels({}, 2), std::nullopt);
  EXPECT_EQ(conformChannels({{0.5F}}, 0), std::nullopt);
  EXPECT_EQ(conformChannels({{0.5F}}, -1), std::nullopt);
  EXPECT_EQ(conformChannels(noise(4, 10), 2), std::nullopt);
  EXPECT_EQ(conformChannels(noise(4, 10), 1), std::nullopt);
  EXPECT_EQ(conformChannels(noise(2, 10), 6), std::nullopt);
  EXPECT_EQ(conformChannels({{0.5F, 0.5F}, {0.5F}}, 1), std::nullopt);
}

TEST(ConformChannels, PutsZeroForWhatIsNotFinite) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  const std::vector<float> odd = {kNaN, kInfinity, -kInfinity, 0.5F};
  const std::vector<float> even = {0, 0, 0, 0.5F};
  EXPECT_EQ(conformChannels({odd}, 2), (ChannelArrays{even, even}));
  EXPECT_EQ(conformChannels({odd, odd}, 2), (ChannelArrays{even, even}));
  EXPECT_EQ(conformChannels({odd, even}, 1), (ChannelArrays{even}));
}

TEST(ResampleTake, GivesEveryChannelAtTheOtherRate) {
  ChannelArrays take(2, std::vector<float>(4410, 0.5F));
  take[1].assign(4410, -0.25F);
  const auto result = resampleTake(take, 44'100, 48'000);
  ASSERT_TRUE(result);
  ASSERT_EQ(result->size(), 2U);
  for (const auto& channel : *result) EXPECT_EQ(channel.size(), 4800U);
  EXPECT_NEAR((*result)[0][2400], 0.5F, 1e-6F);
  EXPECT_NEAR((*result)[1][2400], -0.25F, 1e-6F);
}

TEST(ResampleTake, GivesEqualRatesBitForBit) {
  const auto take = noise(2, 1001);
  EXPECT_EQ(resampleTake(take, 44'100, 44'100), take);
}

TEST(ResampleTake, IsAbsentForWhatIsNoTakeAndNoRate) {
  EXPECT_FALSE(resampleTake({}, 44'100, 48'000));
  EXPECT_FALSE(resampleTake(ChannelArrays(2), 44'100, 48'000));
  EXPECT_FALSE(resampleTake({{0.5F, 0.5F}, {0.5F}}, 44'100, 44'100));
  for (const double rate : {0.0, -48'000.0, std::numeric_limits<double>::infinity(),
                            std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_FALSE(resampleTake({{0.5F}}, rate, 48'000));
    EXPECT_FALSE(resampleTake({{0.5F}}, 48'000, rate));
    EXPECT_FALSE(resampleTake({{0.5F}}, rate, rate));
  }
}

TEST(ReadTake, GivesTheChannelsOfAFile) {
  const test::TemporaryDirectory folder;
  const auto file = folder.write(
      "take.wav",
      test::formFile(
          "RIFF", "WAVE",
          {{.id = "fmt ", .body = test::waveFormatBody({.sampleRate = 44'100})},
           {.id = "data", .body = test::storedSamples({}, {0.5, -0.5, 0.25, -0.25, 0.125, -1})}}));
  const auto take = readTake(file);
  ASSERT_TRUE(take);
  EXPECT_EQ(take->sampleRate, 44'100);
  EXPECT_EQ(take->channelData, (ChannelArrays{{0.5F, 0.25F, 0.125F}, {-0.5F, -0.25F, -1}}));
}

TEST(ReadTake, IsAbsentForWhatCannotBeRead) {
  const test::TemporaryDirectory folder;
  EXPECT_FALSE(readTake(folder / "missing.wav"));
  EXPECT_FALSE(readTake(folder.path()));
  EXPECT_FALSE(readTake(folder.write("text.wav", "no audio at all")));
  EXPECT_FALSE(readTake(folder.write("empty.wav", "")));
}

TEST(TakeRetention, CallsStaleWhatIsOlderThanSevenDays) {
  using std::chrono::seconds;
  const std::chrono::system_clock::time_point now{seconds(1'700'000'000)};
  EXPECT_FALSE(TakeRetention::isStale(now, now));
  EXPECT_FALSE(TakeRetention::isStale(now - seconds(604'800), now));
  EXPECT_TRUE(TakeRetention::isStale(now - seconds(604'800) - std::chrono::nanoseconds(1), now));
  EXPECT_FALSE(TakeRetention::isStale(now + seconds(1), now));
}

}  // namespace
}  // namespace orvane::RecordingSplice
