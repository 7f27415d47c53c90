#include "orvane/platform/host_memory.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

constexpr std::int64_t kKiB = 1024;
constexpr std::int64_t kGiB = std::int64_t{1} << 30;

constexpr const char* kMemoryInformation =
    "MemTotal:       16777216 kB\n"
    "MemFree:         8388608 kB\n"
    "MemAvailable:   12582912 kB\n"
    "Inactive:        5242880 kB\n"
    "Inactive(anon):  1048576 kB\n"
    "Inactive(file):  4194304 kB\n"
    "SReclaimable:     102400 kB\n";

/// A machine's files in a folder of their own.
class HostMemoryFiles : public testing::Test {
 protected:
  void write(const char* name, std::string_view text) { test::writeFile(folder_ / name, text); }
  HostMemory read() const { return HostMemory::read(folder_.path()); }

  HostMemoryFiles() { write("proc/meminfo", kMemoryInformation); }

 private:
  test::TemporaryDirectory folder_;
};

TEST_F(HostMemoryFiles, GiveTheMachinesFigures) {
  EXPECT_EQ(read(),
            (HostMemory{.physicalBytes = 16 * kGiB,
                        .statistics = HostMemory::Statistics{8 * kGiB + 102400 * kKiB, 4 * kGiB}}));
}

TEST_F(HostMemoryFiles, TakeAllInactiveMemoryWhereTheKernelDoesNotTellItApart) {
  write("proc/meminfo", "MemTotal: 1024 kB\nMemFree: 512 kB\nInactive: 100 kB\n");
  EXPECT_EQ(read().statistics, (HostMemory::Statistics{512 * kKiB, 100 * kKiB}));
}

TEST_F(HostMemoryFiles, WithoutFiguresLeaveStatisticsOutAndAskTheSystemForTheSize) {
  for (const auto* text : {"", "nonsense", "MemFree: -3 kB\n", ":::\n", "MemTotal:\nMemFree\n"}) {
    write("proc/meminfo", text);
    EXPECT_FALSE(read().statistics) << text;
    EXPECT_GT(read().physicalBytes, 0) << text;
  }
}

TEST_F(HostMemoryFiles, AreBoundByAGroupOfVersionTwo) {
  write("proc/self/cgroup", "0::/user/session\n");
  write("sys/fs/cgroup/user/session/memory.max", "4294967296\n");
  write("sys/fs/cgroup/user/session/memory.current", "3221225472\n");
  write("sys/fs/cgroup/user/session/memory.stat",
        "anon 100\ninactive_file 536870912\nslab_reclaimable 1024\n");
  EXPECT_EQ(read(), (HostMemory{.physicalBytes = 4 * kGiB,
                                .statistics = HostMemory::Statistics{kGiB + 1024, kGiB / 2}}));
}

TEST_F(HostMemoryFiles, AreBoundByTheTightestGroupAbove) {
  write("proc/self/cgroup", "0::/user/session\n");
  write("sys/fs/cgroup/user/session/memory.max", "max\n");
  write("sys/fs/cgroup/user/memory.max", "2147483648\n");
  write("sys/fs/cgroup/user/memory.current", "2147483648\n");
  write("sys/fs/cgroup/memory.max", "8589934592\n");
  EXPECT_EQ(read(),
            (HostMemory{.physicalBytes = 2 * kGiB, .statistics = HostMemory::Statistics{0, 0}}));
}

TEST_F(HostMemoryFiles, AreBoundByTheMountPointWhenTheGroupIsTheHosts) {
  write("proc/self/cgroup", "0::/docker/0123abcd\n");
  write("sys/fs/cgroup/memory.max", "1073741824\n");
  EXPECT_EQ(read().physicalBytes, kGiB);
}

TEST_F(HostMemoryFiles, AreBoundByAGroupOfVersionOne) {
  write("proc/self/cgroup", "5:cpu:/x\n4:blkio,memory:/batch\n0::/\n");
  write("sys/fs/cgroup/memory/batch/memory.limit_in_bytes", "3221225472\n");
  write("sys/fs/cgroup/memory/batch/memory.usage_in_bytes", "1073741824\n");
  write("sys/fs/cgroup/memory/batch/memory.stat", "total_inactive_file 4096\n");
  EXPECT_EQ(read(), (HostMemory{.physicalBytes = 3 * kGiB,
                                .statistics = HostMemory::Statistics{2 * kGiB, 4096}}));
}

TEST_F(HostMemoryFiles, AreNotBoundByLimitsBeyondTheMachineOrUnreadableOnes) {
  write("proc/self/cgroup", "0::/a\n1:memory:/b\nnonsense\n:\n");
  write("sys/fs/cgroup/a/memory.max", "99999999999999999999999\n");
  write("sys/fs/cgroup/memory/b/memory.limit_in_bytes", "9223372036854771712\n");
  const auto memory = read();
  EXPECT_EQ(memory.physicalBytes, 16 * kGiB);
  EXPECT_EQ(memory.statistics->inactiveBytes, 4 * kGiB);
}

TEST(HostMemory, OfThisMachineIsPlausible) {
  const HostMemory memory = HostMemory::current();
  EXPECT_GT(memory.physicalBytes, 64 << 20);
  ASSERT_TRUE(memory.statistics);
  EXPECT_GE(memory.statistics->freeAndPurgeableBytes, 0);
  EXPECT_LE(memory.statistics->freeAndPurgeableBytes, memory.physicalBytes);
  EXPECT_TRUE(memory.supportsLargeBuffers);
}

TEST(ScopedHostMemory, ReplacesTheFiguresOnEveryThreadWhileItLives) {
  const HostMemory replaced{.physicalBytes = 12345};
  {
    const ScopedHostMemory scope(replaced);
    EXPECT_EQ(HostMemory::current(), replaced);
    std::thread([&] { EXPECT_EQ(HostMemory::current(), replaced); }).join();
  }
  EXPECT_NE(HostMemory::current().physicalBytes, 12345);
}

}  // namespace
}  // namespace orvane
