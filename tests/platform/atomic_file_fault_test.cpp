// Every system call of a save fails in turn, and the process dies before each: what stands under
// the name must be the old or the new content, whole.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/xattr.h>

#include <algorithm>
#include <string>
#include <vector>

#include "orvane/platform/atomic_file.h"
#include "orvane/platform/error.h"
#include "tests/support/in_child.h"
#include "tests/support/system_call_faults.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

namespace faults = test::SystemCallFaults;
using faults::Kind;
using test::readFile;
using test::writeFile;

const std::string kOld(3000, 'o');
const std::string kNew(5000, 'n');

/// With anonymous temporary files, and as on a file system that has none.
class AtomicFileFaultTest : public testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    writeFile(target, kOld);
    std::filesystem::permissions(target, std::filesystem::perms(0640));
    (void)setxattr(target.c_str(), "user.orvane.note", "take 2", 6, 0);
  }

  void save() const {
    AtomicFile file(target);
    file.reserve(kNew.size());
    file.write(kNew.substr(0, 2000));
    file.write(kNew.substr(2000));
    file.commit();
  }

  std::size_t leftovers() const {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
      const std::string name = entry.path().filename();
      if (name == target.filename()) continue;
      EXPECT_TRUE(name.starts_with(".orvane-") && name.ends_with(".tmp")) << name;
      ++count;
    }
    return count;
  }

  faults::Plan plan(Kind kind, std::size_t at, int code = 0) const {
    return {.kind = kind, .at = at, .code = code, .anonymous = GetParam()};
  }

  test::TemporaryDirectory folder;
  std::filesystem::path target = folder / "take.json";
};

TEST_P(AtomicFileFaultTest, EveryFailingCallLeavesTheOldOrTheNewFileWhole) {
  for (const Kind kind : {Kind::failOnce, Kind::failFromThen}) {
    for (const int code : {EIO, ENOSPC, EDQUOT}) {
      bool isOver = false;
      for (std::size_t at = 0; !isOver; ++at) {
        writeFile(target, kOld);
        faults::begin(plan(kind, at, code));
        bool hasThrown = false;
        std::string text;
        try {
          save();
        } catch (const PlatformError& error) {
          hasThrown = true;
          text = error.errorDescription();
        }
        const auto calls = faults::end();
        isOver = calls.size() <= at;
        const auto content = readFile(target);
        const bool isSaved = content == kNew;
        EXPECT_TRUE(isSaved || content == kOld) << "call " << at;
        if (!hasThrown) {
          EXPECT_TRUE(isSaved) << "call " << at;
        }
        if (hasThrown && isSaved) {
          EXPECT_EQ(text.find("take.json: Saved, but"), 0U) << text;
        }
        if (hasThrown && !isSaved) {
          EXPECT_EQ(text.find("take.json: "), 0U) << text;
        }
        // Only where removing fails as well can something stay.
        if (kind == Kind::failOnce) {
          EXPECT_EQ(leftovers(), 0U) << "call " << at;
        }
        for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
          if (entry.path() != target) std::filesystem::remove(entry.path());
      }
      EXPECT_EQ(readFile(target), kNew);
    }
  }
}

TEST_P(AtomicFileFaultTest, AKillBeforeEveryCallLeavesTheOldOrTheNewFileWhole) {
  std::size_t old = 0;
  std::size_t replaced = 0;
  bool isOver = false;
  for (std::size_t at = 0; !isOver; ++at) {
    writeFile(target, kOld);
    const auto end = test::runInChild([&] {
      faults::begin(plan(Kind::kill, at));
      save();
      return 0;
    });
    isOver = end.exitCode == 0;
    if (!isOver) {
      EXPECT_EQ(end.signal, SIGKILL);
    }
    const auto content = readFile(target);
    EXPECT_TRUE(content == kNew || content == kOld) << "call " << at;
    ++(content == kNew ? replaced : old);
    EXPECT_LE(leftovers(), 1U);
    EXPECT_EQ(abandonedTemporaries(folder.path()).size(), leftovers());
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
      if (entry.path() != target) std::filesystem::remove(entry.path());
  }
  EXPECT_GE(old, 6U);
  EXPECT_GE(replaced, 2U);
}

TEST_P(AtomicFileFaultTest, WhatALivingProcessWritesIsNotAbandoned) {
  faults::begin(plan(Kind::none, 0));
  AtomicFile file(target);
  file.write(kNew);
  EXPECT_EQ(leftovers(), GetParam() ? 0U : 1U);
  EXPECT_TRUE(abandonedTemporaries(folder.path()).empty());
  file.commit();
  faults::end();
}

TEST_P(AtomicFileFaultTest, GoesOnAfterShortAndInterruptedWrites) {
  for (const Kind kind : {Kind::shorten, Kind::interrupt}) {
    bool isOver = false;
    for (std::size_t at = 0; !isOver; ++at) {
      writeFile(target, kOld);
      faults::begin(plan(kind, at));
      save();
      isOver = faults::end().size() <= at;
      EXPECT_EQ(readFile(target), kNew);
    }
  }
}

TEST_P(AtomicFileFaultTest, ContentIsOnDiskBeforeItGetsTheNameAndTheNameAfterwards) {
  faults::begin(plan(Kind::none, 0));
  save();
  const auto calls = faults::end();
  const auto rename = std::find(calls.begin(), calls.end(), "renameat");
  ASSERT_NE(rename, calls.end());
  const auto lastWrite = std::find(calls.rbegin(), calls.rend(), "pwrite").base();
  EXPECT_LT(lastWrite, rename);
  EXPECT_NE(std::find(lastWrite, rename, "fsync"), rename);
  const auto link = std::find(lastWrite, rename, "linkat");
  if (link != rename) {
    EXPECT_NE(std::find(link, rename, "fsync"), rename);
  }
  EXPECT_NE(std::find(rename, calls.end(), "fsync"), calls.end());
}

TEST_P(AtomicFileFaultTest, ASyncThatFailsIsNotTriedAgain) {
  auto failing = plan(Kind::failOnce, 0, EIO);
  failing.only = "fsync";
  faults::begin(failing);
  EXPECT_THROW(save(), PlatformError);
  const auto calls = faults::end();
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "fsync"), 1);
  EXPECT_EQ(readFile(target), kOld);
}

TEST_P(AtomicFileFaultTest, RefusesAnExistingFileOnSystemsWithoutExclusiveRename) {
  for (const int code : {EINVAL, ENOSYS}) {
    auto failing = plan(Kind::failOnce, 0, code);
    failing.only = "renameat2";
    const auto fresh = folder / "fresh.json";
    AtomicFile file(fresh, AtomicFile::Existing::refuse);
    file.write(kNew);
    faults::begin(failing);
    file.commit();
    faults::end();
    EXPECT_EQ(readFile(fresh), kNew);
    std::filesystem::remove(fresh);

    AtomicFile late(fresh, AtomicFile::Existing::refuse);
    writeFile(fresh, kOld);
    faults::begin(failing);
    EXPECT_THROW(late.commit(), PlatformError);
    faults::end();
    EXPECT_EQ(readFile(fresh), kOld);
    std::filesystem::remove(fresh);
    EXPECT_EQ(leftovers(), 0U);
  }
}

TEST_P(AtomicFileFaultTest, AFileSystemWithoutReservationsIsNoFailure) {
  auto failing = plan(Kind::failFromThen, 0, EOPNOTSUPP);
  failing.only = "fallocate";
  faults::begin(failing);
  save();
  faults::end();
  EXPECT_EQ(readFile(target), kNew);
}

TEST_P(AtomicFileFaultTest, AFileSizeLimitLeavesTheOldFile) {
  const auto end = test::runInChild([&] {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{.rlim_cur = 4096, .rlim_max = 4096};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) return 1;
    faults::begin(plan(Kind::none, 0));
    try {
      writeFileAtomically(target, kNew);
    } catch (const PlatformError& error) {
      return error.code() == std::errc::file_too_large ? 0 : 2;
    }
    return 3;
  });
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(readFile(target), kOld);
  EXPECT_EQ(leftovers(), 0U);
}

TEST_P(AtomicFileFaultTest, AFullDiskLeavesTheOldFile) {
  const std::string large(1 << 20, 'n');
  const auto end = test::runInChild([&] {
    const auto mount = folder / "disk";
    std::filesystem::create_directory(mount);
    const bool isMounted = unshare(CLONE_NEWNS) == 0 &&
                           ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                           ::mount("none", mount.c_str(), "tmpfs", 0, "size=64k") == 0;
    const auto place = mount / "take.json";
    writeFile(place, kOld);
    // Without the right to mount, the writing itself is told that the disk is full.
    auto failing = plan(isMounted ? Kind::none : Kind::failOnce, 0, ENOSPC);
    failing.only = "pwrite";
    for (const bool reserves : {false, true}) {
      failing.only = reserves ? "fallocate" : "pwrite";
      faults::begin(failing);
      try {
        AtomicFile file(place);
        if (reserves) file.reserve(large.size());
        file.write(large);
        return 1;
      } catch (const PlatformError& error) {
        if (error.code() != std::errc::no_space_on_device) return 2;
      }
      faults::end();
    }
    return readFile(place) == kOld ? 0 : 3;
  });
  EXPECT_EQ(end.exitCode, 0);
  std::filesystem::remove_all(folder / "disk");
}

INSTANTIATE_TEST_SUITE_P(EachTemporaryFile, AtomicFileFaultTest, testing::Bool(),
                         [](const auto& tested) {
                           return tested.param ? std::string("Anonymous") : std::string("Named");
                         });

}  // namespace
}  // namespace orvane
