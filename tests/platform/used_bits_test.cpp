#include "orvane/platform/used_bits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "tests/support/each_instruction_set.h"

namespace orvane {
namespace {

TEST(UsedBits, AreThoseOfTheIntegersThatWereRead) {
  test::onEachInstructionSet([] {
    std::mt19937 generator(1);
    for (const std::size_t count : {0U, 1U, 3U, 17U, 1000U}) {
      std::vector<float> samples(count);
      std::uint32_t expected = 0;
      for (float& sample : samples) {
        const auto integer = static_cast<std::int32_t>(generator()) >> 8;  // 24 bits
        sample = std::ldexp(static_cast<float>(integer), -23);
        expected |= static_cast<std::uint32_t>(integer) << 8;
      }
      EXPECT_EQ(usedBits(samples.data(), count), expected) << count;
    }
  });
}

TEST(UsedBits, SeeOneSampleWhereverItStands) {
  test::onEachInstructionSet([] {
    for (std::size_t place = 0; place < 40; ++place) {
      std::vector<float> samples(40, 0.5F);
      samples[place] = 0x1p-23F;
      EXPECT_EQ(usedBits(samples.data(), samples.size()), 0x40000100U) << place;
    }
  });
}

TEST(UsedBits, TakeWhatLiesBeyondFullScaleForFullScale) {
  test::onEachInstructionSet([] {
    const float samples[] = {1.0F, 7.0F};
    EXPECT_EQ(usedBits(samples, 2) & 0x7FFFFFFFU, 0x7FFFFFFFU);
    const float lowest = -1.0F;
    EXPECT_EQ(usedBits(&lowest, 1), 0x80000000U);
  });
}

}  // namespace
}  // namespace orvane
