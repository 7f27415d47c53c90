#include "orvane/platform/folder_lock.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <optional>
#include <thread>
#include <vector>

#include "orvane/platform/error.h"
#include "tests/support/in_child.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

TEST(FolderLock, LetsOneInAtATime) {
  const test::TemporaryDirectory folder;
  int inside = 0, entered = 0;  // guarded by the lock alone
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int round = 0; round < 20; ++round) {
        const FolderLock lock(folder.path());
        EXPECT_EQ(++inside, 1);
        ++entered;
        --inside;
      }
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(entered, 80);
}

TEST(FolderLock, EndsWithTheProcessThatHasIt) {
  const test::TemporaryDirectory folder;
  int pipe[2] = {};
  ASSERT_EQ(::pipe(pipe), 0);
  const pid_t child = test::startInChild([&] {
    const FolderLock lock(folder.path());
    if (write(pipe[1], "x", 1) != 1) return 1;
    pause();
    return 0;
  });
  char byte = 0;
  ASSERT_EQ(read(pipe[0], &byte, 1), 1);
  std::thread killer([child] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    kill(child, SIGKILL);
  });
  const auto begin = std::chrono::steady_clock::now();
  const FolderLock lock(folder.path());
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(40));
  killer.join();
  test::waitFor(child);
  ::close(pipe[0]);
  ::close(pipe[1]);
}

TEST(FolderLock, NeedsAFolder) {
  const test::TemporaryDirectory folder;
  EXPECT_THROW(FolderLock{folder / "missing"}, PlatformError);
  EXPECT_THROW(FolderLock{folder.write("file", "")}, PlatformError);
}

}  // namespace
}  // namespace orvane
