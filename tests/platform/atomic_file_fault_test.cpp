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
#include "tests/support/faulty_saving.h"
#include "tests/support/in_child.h"
#include "tests/support/system_call_faults.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

namespace faults = test::SystemCallFaults;
using faults::Kind;
using test::FaultySaving;
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

  static void save(AtomicFile file) {
    file.reserve(2 * kNew.size());
    file.write(kNew.substr(0, 2000));
    file.write(kNew.substr(2000));
    file.writeAt(0, std::as_bytes(std::span("N", 1)));
    file.commit();
  }
  void save() const { save(AtomicFile(target)); }

  std::size_t leftovers() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(std::filesystem::directory_iterator(folder.path()),
                              [&](const auto& entry) { return entry.path() != target; }));
  }

  faults::Plan plan(Kind kind, std::size_t at, int code = 0, std::string only = {}) const {
    return {.kind = kind, .at = at, .code = code, .anonymous = GetParam(), .only = std::move(only)};
  }
  faults::Plan base() const { return {.anonymous = GetParam()}; }

  static void putThroughEverything(const FaultySaving& saving, const faults::Plan& base) {
    saving.failEveryCall({EIO, ENOSPC, EDQUOT, EFBIG, EINTR}, base);
    saving.disturbEveryWrite(base);
    saving.killAtEveryCall(base);
    saving.terminateAtEveryCall(base.anonymous ? "linkat" : "renameat", base);
  }

  test::TemporaryDirectory folder;
  std::filesystem::path target = folder / "take.json";
};

TEST_P(AtomicFileFaultTest, AFileThatIsReplacedIsWholeAfterAnyFault) {
  const FaultySaving saving(target, FaultySaving::ofOperation([&] { save(); }));
  EXPECT_EQ(saving.saved(), "N" + kNew.substr(1));
  putThroughEverything(saving, base());
}

TEST_P(AtomicFileFaultTest, AFileThatIsNewIsWholeOrAbsentAfterAnyFault) {
  const auto fresh = folder / "fresh.json";
  const FaultySaving saving(fresh, FaultySaving::ofOperation([&] {
                              save(AtomicFile(fresh, AtomicFile::Existing::refuse));
                            }));
  saving.failEveryCall({EIO, EINVAL, EPERM}, base());
  saving.killAtEveryCall(base());
}

TEST_P(AtomicFileFaultTest, AVersionThatIsReplacedIsWholeAfterAnyFault) {
  const FaultySaving saving(target, FaultySaving::ofOperation([&] {
                              const auto read = FileStamp::of(target);
                              if (!read) throw PlatformError(target, "cannot be looked at");
                              save(AtomicFile(target, *read));
                            }));
  auto plan = base();
  for (const bool exchange : {true, false}) {
    plan.exchange = exchange;
    saving.failEveryCall({EIO, ENOSPC, EINTR, EINVAL}, plan);
    saving.killAtEveryCall(plan);
  }
  plan.exchange = true;
  saving.terminateAtEveryCall("renameat2", plan);
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
  faults::begin(plan(Kind::failOnce, 0, EIO, "fsync"));
  EXPECT_THROW(save(), PlatformError);
  const auto calls = faults::end();
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "fsync"), 1);
  EXPECT_EQ(readFile(target), kOld);
}

TEST_P(AtomicFileFaultTest, NeverReplacesAFileThatAppearsWhereOneWasToBeNew) {
  const auto fresh = folder / "fresh.json";
  for (const int code : {0, EINVAL, ENOSYS}) {  // and on systems without exclusive renaming
    const auto attempt = [&](bool appears) {
      auto failing = plan(code == 0 ? Kind::none : Kind::failOnce, 0, code, "renameat2");
      failing.meanwhile = [&](std::string_view call) {
        if (appears && call == "renameat2") writeFile(fresh, kOld);
      };
      AtomicFile file(fresh, AtomicFile::Existing::refuse);
      file.write(kNew);
      faults::begin(failing);
      file.commit();
    };
    attempt(false);
    faults::end();
    EXPECT_EQ(readFile(fresh), kNew);
    std::filesystem::remove(fresh);

    EXPECT_THROW(attempt(true), PlatformError);
    faults::end();
    EXPECT_EQ(readFile(fresh), kOld);
    std::filesystem::remove(fresh);
    EXPECT_EQ(leftovers(), 0U);
  }
}

TEST_P(AtomicFileFaultTest, ARemovalThatFailsIsTriedOnceMore) {
  faults::begin(plan(Kind::failOnce, 0, EIO, "unlinkat"));
  { AtomicFile dropped(target); }
  const auto calls = faults::end();
  EXPECT_EQ(std::ranges::count(calls, "unlinkat"), GetParam() ? 0 : 2);
  EXPECT_EQ(leftovers(), 0U);
}

TEST_P(AtomicFileFaultTest, AFolderThatCannotBeSyncedIsToldApartFromAFailedSave) {
  faults::begin(plan(Kind::none, 0));
  save();
  auto calls = faults::end();
  const auto syncs = static_cast<std::size_t>(std::ranges::count(calls, "fsync"));
  faults::begin(plan(Kind::failOnce, syncs - 1, EIO, "fsync"));
  try {
    save();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const SavedFileError& error) {
    EXPECT_EQ(error.errorDescription(),
              "take.json: Saved, but perhaps not safe against a power failure (Input/output "
              "error)");
  }
  faults::end();
  EXPECT_EQ(readFile(target).size(), kNew.size());
  for (std::size_t at = 0; at + 1 < syncs; ++at) {
    faults::begin(plan(Kind::failOnce, at, EIO, "fsync"));
    try {
      save();
      ADD_FAILURE() << "nothing was thrown";
    } catch (const SavedFileError&) {
      ADD_FAILURE() << "it was not saved";
    } catch (const PlatformError&) {
    }
    faults::end();
  }
}

TEST_P(AtomicFileFaultTest, TellsOfAnAttributeThatCannotBeKept) {
  if (setxattr(target.c_str(), "user.orvane.note", "take 2", 6, 0) != 0)
    GTEST_SKIP() << "the file system keeps no attributes";
  for (const int code : {0, EPERM, ENOTSUP}) {
    AtomicFile file(target);
    faults::begin(plan(code == 0 ? Kind::none : Kind::failOnce, 0, code, "fsetxattr"));
    file.commit();
    faults::end();
    MetadataLosses expected;
    if (code != 0) expected.attributes = {"user.orvane.note"};
    EXPECT_EQ(file.losses(), expected);
    EXPECT_EQ(getxattr(target.c_str(), "user.orvane.note", nullptr, 0), code == 0 ? 6 : -1);
    (void)setxattr(target.c_str(), "user.orvane.note", "take 2", 6, 0);
  }
}

TEST_P(AtomicFileFaultTest, TheDiskIsSetToWorkWhileALargeFileIsWritten) {
  const std::string piece(1 << 20, 'p');
  faults::begin(plan(Kind::none, 0));
  {
    AtomicFile file(target);
    for (int i = 0; i < 33; ++i) file.write(piece);
  }
  const auto calls = faults::end();
  EXPECT_EQ(std::ranges::count(calls, "sync_file_range"), 4);
}

TEST_P(AtomicFileFaultTest, AFileSystemWithoutReservationsIsNoFailure) {
  faults::begin(plan(Kind::failFromThen, 0, EOPNOTSUPP, "fallocate"));
  save();
  faults::end();
  EXPECT_EQ(readFile(target).size(), kNew.size());
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
