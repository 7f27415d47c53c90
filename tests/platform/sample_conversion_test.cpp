#include "orvane/platform/sample_conversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "tests/reference/sample_conversion_reference.h"
#include "tests/support/each_instruction_set.h"
#include "tests/support/fenced_bytes.h"

namespace orvane {
namespace {

using enum SampleEncoding::Kind;

/// In little-endian order: those that vectors read, then those that few files have.
constexpr SampleEncoding kEncodings[] = {
    SampleEncoding::unsignedInteger(1), SampleEncoding::signedInteger(1),
    SampleEncoding::signedInteger(2),   SampleEncoding::signedInteger(3),
    SampleEncoding::low24In32(),        SampleEncoding::signedInteger(4),
    SampleEncoding::floatingPoint(4),   SampleEncoding::floatingPoint(8),
    SampleEncoding::unsignedInteger(2), SampleEncoding::unsignedInteger(3),
    SampleEncoding::unsignedInteger(4), SampleEncoding::signedInteger(5),
    SampleEncoding::signedInteger(6),   SampleEncoding::signedInteger(7),
    SampleEncoding::signedInteger(8)};

SampleEncoding inOrder(SampleEncoding encoding, bool isBigEndian) {
  encoding.isBigEndian = isBigEndian && encoding.bytes > 1;
  return encoding;
}

/// Counts around every vector length in use (4, 8 and 16 lanes), up to three vectors of pairs.
std::vector<std::size_t> counts() {
  std::vector<std::size_t> values;
  for (std::size_t i = 0; i <= 52; ++i) values.push_back(i);
  for (const std::size_t i : {63U, 64U, 65U, 95U, 96U, 97U, 129U, 1000U}) values.push_back(i);
  return values;
}

void fillWithNoise(std::span<std::byte> bytes, std::uint32_t seed) {
  std::mt19937 random(seed);
  for (auto& byte : bytes) byte = static_cast<std::byte>(random());
}

/// Bits, so that NaN equals itself and −0 differs from 0.
std::uint32_t bits(float value) {
  return std::bit_cast<std::uint32_t>(value);
}

float convertOne(SampleEncoding encoding, std::vector<std::uint8_t> bytes) {
  float result = -99;
  convertToFloat(encoding, reinterpret_cast<const std::byte*>(bytes.data()), 1, 1, &result);
  return result;
}

TEST(SampleConversion, HasFixedValuesAtTheEnds) {
  test::onEachInstructionSet([] {
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::unsignedInteger(1), false), {0x80}), 0.0F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::unsignedInteger(1), false), {0x00}), -1.0F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::unsignedInteger(1), true), {0xFF}), 0.9921875F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::signedInteger(1), false), {0x80}), -1.0F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::signedInteger(2), false), {0x00, 0x80}), -1.0F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::signedInteger(2), true), {0x7F, 0xFF}),
              32767.0F / 32768.0F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::signedInteger(3), false), {0x00, 0x00, 0x80}),
              -1.0F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::signedInteger(3), true), {0x7F, 0xFF, 0xFF}),
              8388607.0F / 8388608.0F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::low24In32(), false), {0x00, 0x00, 0x80, 0xFF}),
              -1.0F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::low24In32(), false), {0x00, 0x00, 0x80, 0x00}),
              -1.0F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::low24In32(), false), {0x00, 0x00, 0x00, 0xFF}),
              0.0F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::low24In32(), true), {0xAB, 0x00, 0x00, 0x01}),
              1.0F / 8388608.0F);
    EXPECT_EQ(
        convertOne(inOrder(SampleEncoding::signedInteger(4), false), {0x00, 0x00, 0x00, 0x80}),
        -1.0F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::signedInteger(4), true), {0x7F, 0xFF, 0xFF, 0xFF}),
              1.0F);
    EXPECT_EQ(convertOne(inOrder(SampleEncoding::floatingPoint(4), true), {0x40, 0x00, 0x00, 0x00}),
              2.0F);
    EXPECT_EQ(
        convertOne(inOrder(SampleEncoding::floatingPoint(8), true), {0xBF, 0xF0, 0, 0, 0, 0, 0, 0}),
        -1.0F);
  });
}

TEST(SampleEncoding, PutsRightWhatAHeaderStates) {
  const auto bytes = [](SampleEncoding stated) { return stated.normalized().bytes; };
  EXPECT_EQ(bytes({.bits = 12}), 2U);
  EXPECT_EQ(bytes({.bits = 20, .bytes = 3}), 3U);
  EXPECT_EQ(bytes({.bits = 20, .bytes = 4}), 4U);
  EXPECT_EQ(bytes({.bits = 20, .bytes = 2}), 3U);
  EXPECT_EQ(bytes({.bits = 20, .bytes = 9}), 3U);
  EXPECT_EQ(bytes({.bits = 64}), 8U);
  EXPECT_EQ(bytes({.bits = 65}), 0U);
  EXPECT_EQ(bytes({.bits = 0, .bytes = 2}), 0U);
  EXPECT_EQ(bytes({.kind = floatingPoint, .bits = 32, .bytes = 8}), 4U);
  EXPECT_EQ(bytes({.kind = floatingPoint, .bits = 16, .bytes = 2}), 0U);
  EXPECT_FALSE((SampleEncoding{.bits = 8, .isBigEndian = true}.normalized().isBigEndian));
  EXPECT_TRUE((SampleEncoding{.bits = 9, .isBigEndian = true}.normalized().isBigEndian));
}

TEST(SampleConversion, OfAPlanarRunEqualsTheReferenceAndStaysInside) {
  const test::FencedBytes fence(8 * 1000);
  test::onEachInstructionSet([&] {
    for (const SampleEncoding type : kEncodings)
      for (const bool big : {false, true})
        for (const std::size_t count : counts())
          for (const bool atEnd : {false, true}) {
            const SampleEncoding encoding = inOrder(type, big);
            const std::size_t size = count * type.bytes;
            const auto source = atEnd ? fence.last(size) : fence.first(size);
            fillWithNoise(source, static_cast<std::uint32_t>(count));
            constexpr float kGuard = 77.0F;
            std::vector<float> result(count + 32, kGuard);
            convertToFloat(encoding, source.data(), 1, count, result.data() + 16);
            for (std::size_t i = 0; i < count; ++i)
              ASSERT_EQ(bits(result[16 + i]),
                        bits(reference::sampleToFloat(encoding, source.data() + i * type.bytes)))
                  << "type " << type.bytes << " bytes kind " << static_cast<int>(type.kind)
                  << " big " << big << " sample " << i << " of " << count;
            for (std::size_t i = 0; i < 16; ++i) {
              ASSERT_EQ(result[i], kGuard);
              ASSERT_EQ(result[16 + count + i], kGuard);
            }
          }
  });
}

TEST(SampleConversion, ReadsFromOddAddresses) {
  test::onEachInstructionSet([] {
    std::vector<std::byte> bytes(8 * 100 + 8);
    fillWithNoise(bytes, 3);
    for (const SampleEncoding type : kEncodings)
      for (std::size_t shift = 0; shift < 8; ++shift) {
        std::array<float, 100> result{};
        convertToFloat(type, bytes.data() + shift, 1, 100, result.data());
        for (std::size_t i = 0; i < 100; ++i)
          ASSERT_EQ(bits(result[i]),
                    bits(reference::sampleToFloat(type, bytes.data() + shift + i * type.bytes)));
      }
  });
}

TEST(SampleConversion, FollowsTheStrideAndReadsNothingBehindTheLastSample) {
  const test::FencedBytes fence(8 * 7 * 1100);
  test::onEachInstructionSet([&] {
    for (const SampleEncoding type : kEncodings)
      for (const std::size_t stride : {2U, 3U, 7U})
        for (const std::size_t count : {1U, 17U, 511U, 1100U}) {
          const std::size_t width = type.bytes;
          const auto source = fence.last(((count - 1) * stride + 1) * width);
          fillWithNoise(source, 5);
          std::vector<float> result(count);
          convertToFloat(inOrder(type, true), source.data(), stride, count, result.data());
          for (std::size_t i = 0; i < count; ++i)
            ASSERT_EQ(bits(result[i]),
                      bits(reference::sampleToFloat(inOrder(type, true),
                                                    source.data() + i * stride * width)));
        }
  });
}

/// De-interleaves noise and compares all of it; destinations are guarded on both sides.
void checkDeinterleaving(SampleEncoding encoding, std::span<std::byte> source, std::size_t frames,
                         std::size_t channels) {
  constexpr float kGuard = 77.0F;
  constexpr std::size_t kFence = 16;
  fillWithNoise(source, static_cast<std::uint32_t>(frames * 131 + channels));
  std::vector<std::vector<float>> results(channels,
                                          std::vector<float>(frames + 2 * kFence, kGuard));
  std::vector<float*> destinations;
  for (auto& result : results) destinations.push_back(result.data() + kFence);
  deinterleaveToFloat(encoding, source.data(), {destinations, frames});
  const std::size_t width = encoding.bytes;
  for (std::size_t c = 0; c < channels; ++c) {
    for (std::size_t i = 0; i < frames; ++i)
      ASSERT_EQ(
          bits(destinations[c][i]),
          bits(reference::sampleToFloat(encoding, source.data() + (i * channels + c) * width)))
          << "type " << encoding.bytes << " bytes kind " << static_cast<int>(encoding.kind)
          << " big " << encoding.isBigEndian << " channel " << c << " of " << channels << " frame "
          << i << " of " << frames;
    for (std::size_t i = 0; i < kFence; ++i) {
      ASSERT_EQ(results[c][i], kGuard);
      ASSERT_EQ(results[c][kFence + frames + i], kGuard);
    }
  }
}

TEST(Deinterleaving, OfFewChannelsEqualsTheReferenceAndStaysInside) {
  const test::FencedBytes fence(8 * 3 * 1000);
  test::onEachInstructionSet([&] {
    for (const SampleEncoding type : kEncodings)
      for (const bool big : {false, true})
        for (const std::size_t channels : {1U, 2U, 3U})
          for (const std::size_t frames : counts())
            for (const bool atEnd : {false, true}) {
              const std::size_t size = frames * channels * type.bytes;
              checkDeinterleaving(inOrder(type, big), atEnd ? fence.last(size) : fence.first(size),
                                  frames, channels);
              if (testing::Test::HasFatalFailure()) return;
            }
  });
}

TEST(Deinterleaving, OfManyChannelsEqualsTheReferenceAndStaysInside) {
  const test::FencedBytes fence(8 * 300 * 70);
  test::onEachInstructionSet([&] {
    for (const SampleEncoding type : kEncodings)
      for (const std::size_t channels : {4U, 5U, 6U, 7U, 8U, 12U, 63U, 64U, 65U, 130U, 300U})
        for (const std::size_t frames : {1U, 3U, 4U, 70U}) {
          const std::size_t size = frames * channels * type.bytes;
          checkDeinterleaving(type, fence.last(size), frames, channels);
          if (testing::Test::HasFatalFailure()) return;
        }
  });
}

TEST(Deinterleaving, CrossesTilesWithoutASeam) {
  std::vector<std::byte> bytes(3 * 6 * 5000);
  test::onEachInstructionSet([&] {
    for (const std::size_t channels : {3U, 5U, 6U})
      checkDeinterleaving(SampleEncoding::signedInteger(3),
                          std::span(bytes).first(3 * channels * 5000), 5000, channels);
  });
}

TEST(SampleConversion, PassesSpecialFloatsBitForBit) {
  const std::vector<std::uint32_t> patterns = {0x7F800000, 0xFF800000, 0x7FC00001, 0x7F800001,
                                               0xFFFFFFFF, 0x00000001, 0x80000000};
  test::onEachInstructionSet([&] {
    for (std::size_t repeat = 1; repeat <= 8; ++repeat) {
      std::vector<std::uint32_t> input;
      for (std::size_t r = 0; r < repeat; ++r)
        input.insert(input.end(), patterns.begin(), patterns.end());
      std::vector<float> result(input.size());
      convertToFloat(SampleEncoding::floatingPoint(4),
                     reinterpret_cast<const std::byte*>(input.data()), 1, input.size(),
                     result.data());
      for (std::size_t i = 0; i < input.size(); ++i) ASSERT_EQ(bits(result[i]), input[i]);
    }
  });
}

TEST(SampleConversion, RoundsDoublesToTheNearestFloat) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::vector<double> input = {0.1,   1e39,  -1e39,         kInfinity,         -kInfinity,
                                     1e-50, 1e-40, 1.0 + 0x1p-24, 1.0 + 3 * 0x1p-24, -0.0};
  test::onEachInstructionSet([&] {
    std::vector<double> many;
    for (int r = 0; r < 7; ++r) many.insert(many.end(), input.begin(), input.end());
    std::vector<float> result(many.size());
    convertToFloat(SampleEncoding::floatingPoint(8),
                   reinterpret_cast<const std::byte*>(many.data()), 1, many.size(), result.data());
    for (std::size_t i = 0; i < many.size(); ++i)
      ASSERT_EQ(bits(result[i]), bits(static_cast<float>(many[i]))) << many[i];
  });
}

}  // namespace
}  // namespace orvane
