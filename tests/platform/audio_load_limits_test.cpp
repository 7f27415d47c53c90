#include "orvane/platform/audio_load_limits.h"

#include <gtest/gtest.h>

#include <limits>

#include "orvane/platform/host_memory.h"

namespace orvane {
namespace {

constexpr std::int64_t kGiB = std::int64_t{1} << 30;
constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

HostMemory machine(std::int64_t physicalBytes) {
  return {.physicalBytes = physicalBytes};
}

HostMemory available(std::int64_t freeBytes, std::int64_t inactiveBytes) {
  return {.physicalBytes = 64 * kGiB,
          .statistics = HostMemory::Statistics{freeBytes, inactiveBytes}};
}

TEST(AudioLoadLimits, UseAFloorOfEightGibibytes) {
  const ScopedHostMemory memory(machine(4 * kGiB));
  EXPECT_EQ(AudioLoadLimits::maxDecodedBytes(), 4 * kGiB);
  EXPECT_EQ(AudioLoadLimits::largeFileThresholdBytes(), 2 * kGiB);
}

TEST(AudioLoadLimits, GrowWithTheMachine) {
  const ScopedHostMemory memory(machine(64 * kGiB));
  EXPECT_EQ(AudioLoadLimits::maxDecodedBytes(), 32 * kGiB);
  EXPECT_EQ(AudioLoadLimits::largeFileThresholdBytes(), 16 * kGiB);
  EXPECT_EQ(AudioLoadLimits::rebuildEditWorkingSetMultiplier, 4);
  EXPECT_EQ(AudioLoadLimits::heavyRebuildWorkingSetMultiplier, 6);
}

TEST(AudioLoadLimits, RefuseTwoToTheThirtyFramesWhateverTheMemory) {
  const ScopedHostMemory memory(machine(1024 * kGiB));
  EXPECT_FALSE(AudioLoadLimits::isWithinLimits(kGiB, 1));
  EXPECT_TRUE(AudioLoadLimits::isWithinLimits(kGiB - 1, 1));
}

TEST(AudioLoadLimits, AcceptOneFrameLessWhenMemoryAllows) {
  const ScopedHostMemory memory(machine(8 * kGiB));
  EXPECT_TRUE(AudioLoadLimits::isWithinLimits(kGiB - 1, 1));  // 4 GiB less 4 bytes
  EXPECT_FALSE(AudioLoadLimits::isWithinLimits(kGiB - 1, 2));
}

TEST(AudioLoadLimits, AcceptExactlyHalfTheMemory) {
  const ScopedHostMemory memory(machine(16 * kGiB));
  const std::int64_t frames = kGiB / 4;  // 8 GiB on eight channels
  EXPECT_TRUE(AudioLoadLimits::isWithinLimits(frames, 8));
  EXPECT_FALSE(AudioLoadLimits::isWithinLimits(frames + 1, 8));
}

TEST(AudioLoadLimits, RefuseNoFramesAndNoChannels) {
  const ScopedHostMemory memory(machine(64 * kGiB));
  EXPECT_TRUE(AudioLoadLimits::isWithinLimits(1, 1));
  EXPECT_FALSE(AudioLoadLimits::isWithinLimits(0, 1));
  EXPECT_FALSE(AudioLoadLimits::isWithinLimits(-1, 1));
  EXPECT_FALSE(AudioLoadLimits::isWithinLimits(1, 0));
  EXPECT_FALSE(AudioLoadLimits::isWithinLimits(1, -1));
}

TEST(AudioLoadLimits, RefuseAbsurdChannelCountsInsteadOfOverflowing) {
  const ScopedHostMemory memory(machine(kMost));
  EXPECT_FALSE(AudioLoadLimits::isWithinLimits(kGiB - 1, kMost));
  EXPECT_FALSE(AudioLoadLimits::isWithinLimits(1, kMost));
}

TEST(AudioLoadLimits, TakeFourGibibytesOnlyWhereTheSystemCan) {
  const std::int64_t frames = 300'000'000;  // 4.8 GB on four channels
  HostMemory memory = machine(16 * kGiB);
  memory.supportsLargeBuffers = false;
  {
    const ScopedHostMemory older(memory);
    EXPECT_FALSE(AudioLoadLimits::isWithinLimits(frames, 4));
    EXPECT_FALSE(AudioLoadLimits::isWithinLimits(kGiB / 4, 4));  // exactly 4 GiB
    EXPECT_TRUE(AudioLoadLimits::isWithinLimits(kGiB / 4 - 1, 4));
  }
  memory.supportsLargeBuffers = true;
  const ScopedHostMemory newer(memory);
  EXPECT_TRUE(AudioLoadLimits::isWithinLimits(frames, 4));
}

TEST(AudioLoadLimits, DecodedBytesAreFourPerSampleAndNeverNegative) {
  EXPECT_EQ(AudioLoadLimits::decodedBytes(48'000, 2), 384'000);
  EXPECT_EQ(AudioLoadLimits::decodedBytes(-1, 2), 0);
  EXPECT_EQ(AudioLoadLimits::decodedBytes(100, -2), 0);
  EXPECT_EQ(AudioLoadLimits::decodedBytes(-100, -2), 0);
}

TEST(AudioLoadLimitsDeathTest, DecodedBytesStopOnOverflow) {
  EXPECT_DEATH(AudioLoadLimits::decodedBytes(kMost, 2), "decoded bytes");
  EXPECT_DEATH(AudioLoadLimits::decodedBytes(kMost / 2, 1), "decoded bytes");
}

TEST(AudioLoadLimits, AFileIsLargeFromTheThresholdOn) {
  const ScopedHostMemory memory(machine(16 * kGiB));
  EXPECT_TRUE(AudioLoadLimits::isLargeFile(4 * kGiB));
  EXPECT_FALSE(AudioLoadLimits::isLargeFile(4 * kGiB - 1));
}

TEST(AudioLoadLimits, ARebuildFitsUpToAQuarterOfTheMaximum) {
  const ScopedHostMemory memory(machine(16 * kGiB));
  EXPECT_TRUE(AudioLoadLimits::rebuildEditFits(2 * kGiB));
  EXPECT_FALSE(AudioLoadLimits::rebuildEditFits(2 * kGiB + 1));
  EXPECT_FALSE(AudioLoadLimits::rebuildEditFits(kMost));
}

TEST(AudioLoadLimits, NothingAlwaysFits) {
  const ScopedHostMemory memory(available(0, 0));
  for (const std::int64_t bytes : {std::int64_t{0}, std::int64_t{-1}}) {
    EXPECT_TRUE(AudioLoadLimits::rebuildEditFits(bytes));
    EXPECT_TRUE(AudioLoadLimits::inRAMHeavyRebuildFits(bytes));
    EXPECT_TRUE(AudioLoadLimits::inRAMRebuildFitsLive(bytes, 4));
  }
  EXPECT_FALSE(AudioLoadLimits::inRAMHeavyRebuildFits(1));
}

TEST(AudioLoadLimits, AvailableBytesCountHalfOfTheInactiveMemory) {
  const ScopedHostMemory memory(available(3 * kGiB, 2 * kGiB + 1));
  EXPECT_EQ(AudioLoadLimits::availableBytes(), 4 * kGiB);
}

TEST(AudioLoadLimits, AvailableBytesAreHalfOfTheMachineWithoutStatistics) {
  {
    const ScopedHostMemory memory(machine(32 * kGiB));
    EXPECT_EQ(AudioLoadLimits::availableBytes(), 16 * kGiB);
  }
  const ScopedHostMemory small(machine(2 * kGiB));
  EXPECT_EQ(AudioLoadLimits::availableBytes(), 4 * kGiB);
}

TEST(AudioLoadLimits, LiveChecksTakeThreeQuartersOfTheAvailableMemory) {
  const ScopedHostMemory memory(available(8 * kGiB, 0));  // 6 GiB may be used
  EXPECT_TRUE(AudioLoadLimits::inRAMHeavyRebuildFits(kGiB));
  EXPECT_FALSE(AudioLoadLimits::inRAMHeavyRebuildFits(kGiB + 1));
  EXPECT_TRUE(AudioLoadLimits::inRAMRebuildFitsLive(3 * kGiB, 2));
  EXPECT_FALSE(AudioLoadLimits::inRAMRebuildFitsLive(3 * kGiB + 1, 2));
  EXPECT_FALSE(AudioLoadLimits::inRAMRebuildFitsLive(kMost, 4));
}

}  // namespace
}  // namespace orvane
