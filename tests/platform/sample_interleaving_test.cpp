#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "orvane/platform/sample_conversion.h"
#include "tests/reference/sample_conversion_reference.h"
#include "tests/support/each_instruction_set.h"
#include "tests/support/fenced_bytes.h"

namespace orvane {
namespace {

using enum SampleEncoding::Kind;
using Bytes = std::vector<std::byte>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// In both byte orders: those that vectors write, then those that few files have.
std::vector<SampleEncoding> encodings() {
  std::vector<SampleEncoding> all;
  for (const bool isBig : {false, true}) {
    for (std::uint32_t bytes = 1; bytes <= 8; ++bytes) {
      all.push_back(SampleEncoding::signedInteger(bytes, isBig));
      all.push_back(SampleEncoding::unsignedInteger(bytes, isBig));
    }
    for (const std::uint32_t bits : {4U, 12U, 20U, 23U})
      all.push_back({signedInteger, bits, (bits + 7) / 8, isBig && bits > 8});
    all.push_back({unsignedInteger, 12, 2, isBig});
    all.push_back({unsignedInteger, 12, 2, isBig, true});
    all.push_back(SampleEncoding::low24In32(isBig));
    all.push_back(SampleEncoding::floatingPoint(4, isBig));
    all.push_back(SampleEncoding::floatingPoint(8, isBig));
  }
  return all;
}

std::string nameOf(SampleEncoding encoding) {
  return std::to_string(encoding.bits) + " bits in " + std::to_string(encoding.bytes) + " bytes" +
         (encoding.isBigEndian ? ", big" : "") + (encoding.isLowAligned ? ", low" : "") +
         (encoding.kind == floatingPoint ? ", float" : "") +
         (encoding.kind == unsignedInteger ? ", unsigned" : "");
}

struct Stored {
  Bytes bytes;
  SampleLosses losses;
};

Stored store(SampleEncoding encoding, const std::vector<std::vector<float>>& channels) {
  std::vector<const float*> pointers;
  for (const auto& channel : channels) pointers.push_back(channel.data());
  const std::size_t frames = channels.front().size();
  Stored stored{.bytes = Bytes(frames * channels.size() * encoding.bytes), .losses = {}};
  stored.losses = interleaveFromFloat(encoding, {pointers, frames}, stored.bytes.data());
  return stored;
}

/// The number that one sample is stored as, with its sign.
std::int64_t storedNumber(SampleEncoding encoding, float sample) {
  const auto stored = store(encoding, {{sample}}).bytes;
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < stored.size(); ++i)
    word |= std::to_integer<std::uint64_t>(stored[i]) << 8 * (8 - stored.size() + i);
  return static_cast<std::int64_t>(word) >> 8 * (8 - stored.size());
}

/// Samples around every edge of the range and between the steps, and ordinary ones.
std::vector<float> trickySamples(std::uint32_t bits, std::size_t count, std::uint32_t seed) {
  const auto step = static_cast<float>(std::ldexp(1.0, 1 - static_cast<int>(bits)));
  std::vector<float> edges = {0.0F,
                              -0.0F,
                              1.0F,
                              -1.0F,
                              2.0F,
                              -2.0F,
                              kNaN,
                              kInfinity,
                              -kInfinity,
                              1e30F,
                              -1e30F,
                              1e-30F,
                              0.5F,
                              -0.5F,
                              std::nextafter(1.0F, 0.0F),
                              std::nextafter(-1.0F, 0.0F),
                              std::nextafter(-1.0F, -2.0F)};
  for (const float steps : {0.5F, 1.0F, 1.5F, 2.5F, 3.5F, 0.49999997F})
    for (const float sign : {1.0F, -1.0F}) {
      edges.push_back(sign * steps * step);
      edges.push_back(sign * (1.0F - steps * step));
    }
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> ordinary(-1.01F, 1.01F);
  std::vector<float> samples(count);
  for (float& sample : samples)
    sample = random() % 4 == 0 ? edges[random() % edges.size()] : ordinary(random);
  return samples;
}

class SampleInterleaving : public testing::Test {
 protected:
  ~SampleInterleaving() override { useBestInstructionSet(); }
};

TEST_F(SampleInterleaving, RoundsToNearestWithTiesToEven) {
  const struct {
    SampleEncoding encoding;
    std::int64_t lowest, highest;
  } kCases[] = {{SampleEncoding::signedInteger(1), -128, 127},
                {SampleEncoding::signedInteger(2), -32768, 32767},
                {SampleEncoding::signedInteger(3), -8388608, 8388607}};
  for (const auto& c : kCases) {
    const float step = 1.0F / static_cast<float>(-c.lowest);
    const auto number = [&](float sample) { return storedNumber(c.encoding, sample); };
    EXPECT_EQ(number(0.0F), 0);
    EXPECT_EQ(number(1.0F), c.highest);
    EXPECT_EQ(number(-1.0F), c.lowest);
    EXPECT_EQ(number(2.0F), c.highest);
    EXPECT_EQ(number(-2.0F), c.lowest);
    EXPECT_EQ(number(0.5F * step), 0);
    EXPECT_EQ(number(-0.5F * step), 0);
    EXPECT_EQ(number(1.5F * step), 2);
    EXPECT_EQ(number(-1.5F * step), -2);
    EXPECT_EQ(number(2.5F * step), 2);
    EXPECT_EQ(number(kNaN), 0);
    EXPECT_EQ(number(kInfinity), c.highest);
    EXPECT_EQ(number(-kInfinity), c.lowest);
  }
}

TEST_F(SampleInterleaving, StoresEightUnsignedBitsAround128) {
  const auto byte = [](float sample) {
    return std::to_integer<int>(store(SampleEncoding::unsignedInteger(1), {{sample}}).bytes[0]);
  };
  EXPECT_EQ(byte(0.0F), 128);
  EXPECT_EQ(byte(1.0F), 255);
  EXPECT_EQ(byte(-1.0F), 0);
  EXPECT_EQ(byte(1.5F / 128), 130);
  EXPECT_EQ(byte(kNaN), 128);
}

TEST_F(SampleInterleaving, DoesNotWrapThirtyTwoBitsAtFullScale) {
  const auto number = [](float sample) {
    return storedNumber(SampleEncoding::signedInteger(4), sample);
  };
  EXPECT_EQ(number(1.0F), 2147483647);
  EXPECT_EQ(number(-1.0F), -2147483648LL);
  EXPECT_EQ(number(2.0F), 2147483647);
  EXPECT_EQ(number(-2.0F), -2147483648LL);
  EXPECT_EQ(number(std::nextafter(1.0F, 0.0F)), 2147483647 - 127);
  EXPECT_EQ(number(0x1p-31F), 1);
  EXPECT_EQ(number(1.5F * 0x1p-31F), 2);
  EXPECT_EQ(number(0.5F * 0x1p-31F), 0);
  EXPECT_EQ(number(2.5F * 0x1p-31F), 2);
  EXPECT_EQ(number(kNaN), 0);
  EXPECT_EQ(number(kInfinity), 2147483647);
}

TEST_F(SampleInterleaving, RoundsADepthBelowItsBytesToTheDepth) {
  constexpr SampleEncoding kTwentyIn24{signedInteger, 20, 3, false};
  EXPECT_EQ(storedNumber(kTwentyIn24, 1.0F), 0x7FFFF0);
  EXPECT_EQ(storedNumber(kTwentyIn24, -1.0F), -0x800000);
  EXPECT_EQ(storedNumber(kTwentyIn24, 0x1p-19F), 0x10);
  EXPECT_EQ(storedNumber(kTwentyIn24, 0.5F * 0x1p-19F), 0);
  EXPECT_EQ(storedNumber(kTwentyIn24, 1.5F * 0x1p-19F), 0x20);
  EXPECT_EQ(storedNumber(SampleEncoding::low24In32(), -1.0F), -0x800000);
  EXPECT_EQ(storedNumber(SampleEncoding::low24In32(), 1.0F), 0x7FFFFF);
}

TEST_F(SampleInterleaving, EqualsTheReferenceOnEveryInstructionSet) {
  test::onEachInstructionSet([] {
    for (const SampleEncoding encoding : encodings())
      for (const std::size_t channels : {1U, 2U, 3U, 4U, 6U, 17U, 1100U})
        for (const std::size_t frames : {0U, 1U, 3U, 16U, 17U, 33U}) {
          if (channels > 100 && frames > 3) continue;
          std::vector<std::vector<float>> audio;
          for (std::size_t c = 0; c < channels; ++c)
            audio.push_back(
                trickySamples(encoding.bits, frames, static_cast<std::uint32_t>(frames * 31 + c)));
          const auto stored = store(encoding, audio);
          Bytes expected;
          SampleLosses losses;
          for (std::size_t i = 0; i < frames; ++i)
            for (std::size_t c = 0; c < channels; ++c) {
              const float sample = audio[c][i];
              const auto bytes = reference::floatToSample(encoding, sample);
              expected.insert(expected.end(), bytes.begin(), bytes.end());
              if (!std::isfinite(sample)) {
                ++losses.nonFinite;
              } else if (encoding.kind != floatingPoint) {
                const long double half = std::ldexp(1.0L, static_cast<int>(encoding.bits) - 1);
                const long double steps = std::rint(static_cast<long double>(sample) * half);
                if (steps > half - 1 || steps < -half) ++losses.clipped;
              }
            }
          ASSERT_EQ(stored.bytes, expected)
              << nameOf(encoding) << ", " << channels << " channels, " << frames << " frames";
          ASSERT_EQ(stored.losses, losses) << nameOf(encoding);
        }
  });
}

TEST_F(SampleInterleaving, TouchesNoByteBehindTheLastSample) {
  test::onEachInstructionSet([] {
    for (const SampleEncoding encoding : encodings())
      for (std::size_t frames = 0; frames < 40; ++frames) {
        const std::vector<float> samples(frames, 0.25F);
        const float* const channel = samples.data();
        const test::FencedBytes memory(frames * encoding.bytes + 1);
        interleaveFromFloat(encoding, {{&channel, 1}, frames},
                            memory.last(frames * encoding.bytes).data());
      }
  });
}

/// Every word that the encoding has, or many random ones, there and back.
void expectWordsSurvive(SampleEncoding encoding, std::uint32_t count, std::uint32_t factor) {
  Bytes words(std::size_t{count} * encoding.bytes);
  for (std::uint32_t i = 0; i < count; ++i)
    for (std::uint32_t byte = 0; byte < encoding.bytes; ++byte)
      words[std::size_t{i} * encoding.bytes + byte] =
          static_cast<std::byte>(i * factor >> 8 * byte);
  std::vector<float> samples(count);
  float* const writable = samples.data();
  deinterleaveToFloat(encoding, words.data(), {{&writable, 1}, count});
  const auto stored = store(encoding, {samples});
  EXPECT_EQ(stored.bytes, words) << nameOf(encoding);
  EXPECT_EQ(stored.losses, SampleLosses{}) << nameOf(encoding);
}

TEST_F(SampleInterleaving, BringsBackEveryWordOfUpTo24Bits) {
  for (const bool isBig : {false, true}) {
    expectWordsSurvive(SampleEncoding::signedInteger(1), 1U << 8, 1);
    expectWordsSurvive(SampleEncoding::unsignedInteger(1), 1U << 8, 1);
    expectWordsSurvive(SampleEncoding::signedInteger(2, isBig), 1U << 16, 1);
    expectWordsSurvive(SampleEncoding::unsignedInteger(2, isBig), 1U << 16, 1);
    expectWordsSurvive(SampleEncoding::signedInteger(3, isBig), 1U << 24, 1);
  }
}

TEST_F(SampleInterleaving, BringsBackThirtyTwoBitsThatAFloatHolds) {
  std::mt19937 random(3);
  constexpr std::size_t kCount = 10'000'000;
  Bytes words(kCount * 4);
  for (std::size_t i = 0; i < kCount; ++i) {
    // A float holds 24 significant bits: the others are cleared.
    auto number = static_cast<std::int32_t>(random());
    const auto magnitude = static_cast<std::uint32_t>(std::abs(static_cast<std::int64_t>(number)));
    const int excess = static_cast<int>(std::bit_width(magnitude)) - 24;
    if (excess > 0) number &= static_cast<std::int32_t>(~0U << excess);
    std::memcpy(&words[4 * i], &number, 4);
  }
  std::vector<float> samples(kCount);
  float* const writable = samples.data();
  deinterleaveToFloat(SampleEncoding::signedInteger(4), words.data(), {{&writable, 1}, kCount});
  EXPECT_TRUE(store(SampleEncoding::signedInteger(4), {samples}).bytes == words);
}

TEST_F(SampleInterleaving, DithersByPlaceWhateverTheCut) {
  const SampleEncoding encoding = SampleEncoding::signedInteger(2);
  const std::vector<float> tone(3000, 0.3F / 32768);
  const std::vector<const float*> channels{tone.data(), tone.data()};
  const PlanarView all(channels, tone.size());
  Bytes whole(all.frameCount() * 4);
  interleaveDithered(encoding, all, {.seed = 5}, whole.data());
  Bytes pieces(whole.size());
  for (std::size_t first = 0; first < all.frameCount(); first += 777) {
    const std::size_t count = std::min<std::size_t>(777, all.frameCount() - first);
    interleaveDithered(encoding, all.slice(first, count),
                       {.seed = 5, .firstFrame = static_cast<std::int64_t>(first)},
                       pieces.data() + 4 * first);
  }
  EXPECT_EQ(pieces, whole);
  Bytes other(whole.size());
  interleaveDithered(encoding, all, {.seed = 6}, other.data());
  EXPECT_NE(other, whole);
}

// What triangular dither is for: the mean of what is stored is the signal, and the power of the
// error is a quarter of a step squared, whatever the signal.
TEST_F(SampleInterleaving, DitherMakesTheErrorIndependentOfTheSignal) {
  constexpr std::size_t kFrames = 1'000'000;
  Bytes stored(kFrames * 2);
  for (const double level : {0.0, 0.25, 0.5, 0.9}) {
    const std::vector<float> samples(kFrames, static_cast<float>(level / 32768));
    const float* const channel = samples.data();
    interleaveDithered(SampleEncoding::signedInteger(2), {{&channel, 1}, kFrames}, {.seed = 1},
                       stored.data());
    double sum = 0;
    double power = 0;
    for (std::size_t i = 0; i < kFrames; ++i) {
      std::int16_t number = 0;
      std::memcpy(&number, &stored[2 * i], 2);
      const double error = number - level;
      sum += error;
      power += error * error;
    }
    EXPECT_NEAR(sum / kFrames, 0.0, 0.003) << level;  // five standard errors
    EXPECT_NEAR(power / kFrames, 0.25, 0.003) << level;
  }
}

TEST_F(SampleInterleaving, DithersNoFloatingPoint) {
  const std::vector<float> samples{0.1F, -0.2F};
  const float* const channel = samples.data();
  Bytes stored(8);
  interleaveDithered(SampleEncoding::floatingPoint(4), {{&channel, 1}, 2}, {}, stored.data());
  EXPECT_EQ(std::memcmp(stored.data(), samples.data(), 8), 0);
}

}  // namespace
}  // namespace orvane
