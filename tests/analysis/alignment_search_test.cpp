#include "orvane/analysis/alignment_search.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "tests/analysis/raw_programme.h"

namespace orvane {
namespace {

using test::Channel;

constexpr double kRate = 8000;  // ±16,000 frames
constexpr std::size_t kFrames = 80000;

Channel noise(unsigned seed, std::size_t frames = kFrames) {
  std::mt19937 random(seed);
  Channel samples(frames);
  for (float& x : samples)
    x = static_cast<float>(random()) / static_cast<float>(std::mt19937::max()) - 0.5F;
  return samples;
}

/// What comes `frames` later than in `samples`, with silence before; negative: earlier.
Channel delayed(const Channel& samples, std::int64_t frames) {
  Channel result(samples.size());
  for (std::int64_t i = 0; i < static_cast<std::int64_t>(samples.size()); ++i)
    if (i - frames >= 0 && i - frames < static_cast<std::int64_t>(samples.size()))
      result[static_cast<std::size_t>(i)] = samples[static_cast<std::size_t>(i - frames)];
  return result;
}

std::optional<AlignmentSearch::Offset> find(const std::vector<Channel>& a,
                                            const std::vector<Channel>& b, double rate = kRate) {
  const auto pointers = [](const std::vector<Channel>& channels) {
    std::vector<const float*> all;
    for (const Channel& channel : channels) all.push_back(channel.data());
    return all;
  };
  const auto ofA = pointers(a), ofB = pointers(b);
  return AlignmentSearch::find({ofA, a.front().size()}, {ofB, b.front().size()}, rate);
}

TEST(AlignmentSearch, FindsEveryOffsetToTheFrame) {
  const Channel a = noise(1);
  for (const std::int64_t frames : {1, -1, 7, 480, -3999, 15999, 16000, -16000}) {
    const auto offset = find({a}, {delayed(a, frames)});
    ASSERT_TRUE(offset) << frames;
    EXPECT_EQ(offset->frames, frames);
    EXPECT_GT(offset->correlation, 0.9);  // at both ends some of it has no counterpart
  }
}

TEST(AlignmentSearch, FindsItInLowRumbleAndBesideADCOffset) {
  // One pole at 0.99: neighbouring lags are as like as 0.99.
  Channel a = noise(2);
  for (std::size_t i = 1; i < a.size(); ++i) a[i] = 0.99F * a[i - 1] + 0.01F * a[i];
  Channel b = delayed(a, 123);
  for (float& x : b) x += 0.25F;
  EXPECT_EQ(find({a}, {b})->frames, 123);
}

TEST(AlignmentSearch, KnowsNoGain) {
  const Channel a = noise(3);
  Channel quiet = delayed(a, -250);
  for (float& x : quiet) x *= 0.001F;
  const auto offset = find({a}, {quiet});
  EXPECT_EQ(offset->frames, -250);
  EXPECT_NEAR(offset->correlation, 1, 1e-3);
}

TEST(AlignmentSearch, FindsItUnderNoise) {
  const Channel a = noise(4), other = noise(5);
  Channel b = delayed(a, 77);
  for (std::size_t i = 0; i < b.size(); ++i) b[i] += 0.3F * other[i];
  const auto offset = find({a}, {b});
  EXPECT_EQ(offset->frames, 77);
  EXPECT_NEAR(offset->correlation, 1 / std::sqrt(1.09), 0.01);
}

TEST(AlignmentSearch, TakesAllChannelsTogether) {
  // The left ones alone, or a mono sum, would not tell.
  const Channel silence(kFrames), a = noise(6);
  EXPECT_EQ(find({silence, a}, {silence, delayed(a, 33)})->frames, 33);
  Channel inverse = a;
  for (float& x : inverse) x = -x;
  EXPECT_EQ(find({a, inverse}, {delayed(a, 34), delayed(inverse, 34)})->frames, 34);
}

TEST(AlignmentSearch, LooksWhereAIsLoud) {
  Channel a(40 * kFrames / 10);
  const Channel sound = noise(7, 20000);
  std::copy(sound.begin(), sound.end(), a.begin() + 200000);
  EXPECT_EQ(find({a}, {delayed(a, 1000)})->frames, 1000);
}

TEST(AlignmentSearch, FindsItInShortFilesOfUnequalLength) {
  const Channel a = noise(8, 4000);
  Channel b = a;
  b.erase(b.begin(), b.begin() + 300);
  EXPECT_EQ(find({a}, {b})->frames, -300);
  EXPECT_EQ(find({b}, {a})->frames, 300);
}

TEST(AlignmentSearch, SuggestsNothingWithoutReason) {
  const Channel a = noise(9), silence(kFrames);
  Channel louder = a;
  for (float& x : louder) x *= 2;
  EXPECT_EQ(find({a}, {a}), std::nullopt);
  EXPECT_EQ(find({a}, {louder}), std::nullopt);
  EXPECT_EQ(find({a}, {noise(10)}), std::nullopt);
  EXPECT_EQ(find({a}, {silence}), std::nullopt);
  EXPECT_EQ(find({silence}, {a}), std::nullopt);
  EXPECT_EQ(find({a}, {delayed(a, 16100)}), std::nullopt) << "beyond two seconds";
  EXPECT_EQ(find({noise(11, 1023)}, {noise(12, 1023)}), std::nullopt) << "too short";
  EXPECT_EQ(find({a}, {delayed(a, 10)}, 0.1), std::nullopt) << "a reach of nothing";
}

TEST(AlignmentSearch, TakesTheSmallestOffsetOfATone) {
  const Channel tone = test::sine(kRate, 100, 0.5, kFrames);  // a period of 80 frames
  EXPECT_EQ(find({tone}, {tone}), std::nullopt);
  EXPECT_EQ(find({tone}, {delayed(tone, 810)})->frames, 10);
}

TEST(AlignmentSearch, PassesOverWhatIsNoNumber) {
  Channel a = noise(13);
  const Channel b = delayed(a, 55);
  a[40000] = std::numeric_limits<float>::quiet_NaN();
  a[40001] = std::numeric_limits<float>::infinity();
  EXPECT_EQ(find({a}, {b})->frames, 55);
  a[40002] = std::numeric_limits<float>::max();
  a[40003] = -std::numeric_limits<float>::max();
  EXPECT_EQ(find({a}, {b}), std::nullopt);
}

}  // namespace
}  // namespace orvane
