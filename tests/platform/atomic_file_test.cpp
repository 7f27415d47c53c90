#include "orvane/platform/atomic_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <string>
#include <vector>

#include "orvane/platform/error.h"
#include "orvane/platform/file_descriptor.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using test::readFile;
using test::writeFile;

class AtomicFileTest : public testing::Test {
 protected:
  std::vector<std::string> names() const {
    std::vector<std::string> result;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
      result.push_back(entry.path().filename());
    return result;
  }
  template <typename Operation>
  std::optional<PlatformError> failureOf(Operation operation) const {
    try {
      operation();
    } catch (const PlatformError& error) {
      return error;
    }
    return std::nullopt;
  }

  test::TemporaryDirectory folder;
  std::filesystem::path target = folder / "take.json";
};

TEST_F(AtomicFileTest, WritesANewFileAndNothingElse) {
  writeFileAtomically(target, "whole");
  EXPECT_EQ(readFile(target), "whole");
  EXPECT_EQ(names(), std::vector<std::string>{"take.json"});
}

TEST_F(AtomicFileTest, ANewFilesModeIsWhatTheMaskLeaves) {
  const mode_t mask = umask(027);
  writeFileAtomically(target, "");
  umask(mask);
  struct stat status {};
  ASSERT_EQ(stat(target.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0640U);
  EXPECT_EQ(status.st_size, 0);
}

TEST_F(AtomicFileTest, ReplacesAFileWhole) {
  writeFile(target, "a longer old content");
  writeFileAtomically(target, "new");
  EXPECT_EQ(readFile(target), "new");
}

TEST_F(AtomicFileTest, TheOldContentStaysUntilCommitAndWithoutIt) {
  writeFile(target, "old");
  {
    AtomicFile file(target);
    file.write("new");
    EXPECT_EQ(readFile(target), "old");
  }
  EXPECT_EQ(readFile(target), "old");
  EXPECT_EQ(names(), std::vector<std::string>{"take.json"});
}

TEST_F(AtomicFileTest, WritesAtAnyOffsetAndGoesOnAppending) {
  AtomicFile file(target);
  file.reserve(1 << 20);
  file.write("HEAD");
  file.write("one");
  file.writeAt(1, std::as_bytes(std::span("x", 1)));
  file.write("two");
  EXPECT_EQ(readFile(file.readablePath()), "HxADonetwo");
  EXPECT_EQ(file.target(), target);
  file.commit();
  EXPECT_EQ(readFile(target), "HxADonetwo");
}

TEST_F(AtomicFileTest, CanBeMoved) {
  AtomicFile first(target);
  first.write("a");
  AtomicFile second(std::move(first));
  second.write("b");
  second.commit();
  EXPECT_EQ(readFile(target), "ab");
}

TEST_F(AtomicFileTest, FollowsALinkAndKeepsIt) {
  std::filesystem::create_directory(folder / "elsewhere");
  writeFile(folder / "elsewhere/real.json", "old");
  std::filesystem::create_symlink("real.json", folder / "elsewhere/second.json");
  std::filesystem::create_symlink("elsewhere/second.json", target);
  writeFileAtomically(target, "new");
  EXPECT_TRUE(std::filesystem::is_symlink(target));
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "elsewhere/second.json"));
  EXPECT_EQ(readFile(folder / "elsewhere/real.json"), "new");
}

TEST_F(AtomicFileTest, MakesTheFileThatALinkPromises) {
  std::filesystem::create_symlink("later.json", target);
  writeFileAtomically(target, "new");
  EXPECT_TRUE(std::filesystem::is_symlink(target));
  EXPECT_EQ(readFile(folder / "later.json"), "new");
}

TEST_F(AtomicFileTest, RefusesLinksInACircle) {
  std::filesystem::create_symlink("b", folder / "a");
  std::filesystem::create_symlink("a", folder / "b");
  const auto error = failureOf([&] { writeFileAtomically(folder / "a", "x"); });
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), std::errc::too_many_symbolic_link_levels);
}

TEST_F(AtomicFileTest, LeavesOtherHardLinksTheOldContent) {
  writeFile(target, "old");
  std::filesystem::create_hard_link(target, folder / "other.json");
  writeFileAtomically(target, "new");
  EXPECT_EQ(readFile(target), "new");
  EXPECT_EQ(readFile(folder / "other.json"), "old");
}

TEST_F(AtomicFileTest, RefusesWhatIsNoRegularFile) {
  std::filesystem::create_directory(folder / "sub");
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  for (const char* name : {"sub", "sub/", "sub/.", "."}) {
    const auto error = failureOf([&] { writeFileAtomically(folder / name, "x"); });
    ASSERT_TRUE(error) << name;
    EXPECT_EQ(error->code(), std::errc::is_a_directory) << name;
  }
  const auto error = failureOf([&] { writeFileAtomically(folder / "pipe", "x"); });
  ASSERT_TRUE(error);
  EXPECT_EQ(error->errorDescription(), "pipe: Not a regular file");
  EXPECT_THROW(writeFileAtomically("/dev/null", "x"), PlatformError);
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(AtomicFileTest, NamesTheFileThatHasNoFolder) {
  const auto error = failureOf([&] { writeFileAtomically(folder / "no/such/take.json", "x"); });
  ASSERT_TRUE(error);
  EXPECT_EQ(error->errorDescription(), "take.json: No such file or directory");
  EXPECT_THROW(writeFileAtomically("", "x"), PlatformError);
}

TEST_F(AtomicFileTest, RefusesAnExistingFileWhenAskedTo) {
  writeFile(target, "old");
  const auto error = failureOf([&] { AtomicFile(target, AtomicFile::Existing::refuse); });
  ASSERT_TRUE(error);
  EXPECT_EQ(error->code(), std::errc::file_exists);

  std::filesystem::remove(target);
  AtomicFile file(target, AtomicFile::Existing::refuse);
  file.write("mine");
  writeFile(target, "somebody else's");
  const auto late = failureOf([&] { file.commit(); });
  ASSERT_TRUE(late);
  EXPECT_EQ(late->code(), std::errc::file_exists);
  EXPECT_EQ(readFile(target), "somebody else's");
  EXPECT_EQ(names(), std::vector<std::string>{"take.json"});

  std::filesystem::remove(target);
  AtomicFile again(target, AtomicFile::Existing::refuse);
  again.write("mine");
  again.commit();
  EXPECT_EQ(readFile(target), "mine");
}

TEST_F(AtomicFileTest, TellsAFolderFromAFileThatExists) {
  std::filesystem::create_directory(target);
  for (const auto existing : {AtomicFile::Existing::refuse, AtomicFile::Existing::replace}) {
    const auto error = failureOf([&] { AtomicFile(target, existing); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), std::errc::is_a_directory);
  }
}

TEST_F(AtomicFileTest, FindsWhatKilledProcessesHaveLeft) {
  const auto left = writeFile(folder / ".take.orvane-save-1A2B3C4D.wav", "half");
  const auto withoutExtension = writeFile(folder / ".take.orvane-save-00000000", "half");
  for (const char* name : {"take.orvane-save-1A2B3C4D.wav", ".take.orvane-save-1A2B3C4.wav",
                           ".take.orvane-save-1A2B3C4X.wav", ".take.orvane-save-1A2B3C4DE.wav",
                           ".orvane-1.tmp", ".take.wav"})
    writeFile(folder / name, "");
  std::filesystem::create_symlink(left, folder / ".link.orvane-save-1A2B3C4D.wav");
  const auto used = writeFile(folder / ".used.orvane-save-1A2B3C4D.wav", "half");
  const FileDescriptor file(open(used.c_str(), O_RDONLY | O_CLOEXEC));
  ASSERT_EQ(flock(file.number(), LOCK_EX | LOCK_NB), 0);
  EXPECT_EQ(abandonedTemporaries(folder.path()), (std::vector{withoutExtension, left}));
  EXPECT_TRUE(abandonedTemporaries(folder / "missing").empty());
}

TEST_F(AtomicFileTest, TakesNamesOfTheGreatestLength) {
  const auto longest = folder / std::string(255, 'x');
  writeFileAtomically(longest, "one");
  writeFileAtomically(longest, "two");
  EXPECT_EQ(readFile(longest), "two");
  EXPECT_THROW(writeFileAtomically(folder / std::string(256, 'x'), "x"), PlatformError);
}

TEST_F(AtomicFileTest, GivesBackSpaceThatWasNotNeeded) {
  AtomicFile file(target);
  file.reserve(10 << 20);
  file.write("x");
  file.commit();
  struct stat status {};
  ASSERT_EQ(stat(target.c_str(), &status), 0);
  EXPECT_EQ(status.st_size, 1);
  EXPECT_LE(status.st_blocks * 512, 1 << 16);
}

TEST_F(AtomicFileTest, SurvivesItsFolderBeingRenamed) {
  std::filesystem::create_directory(folder / "before");
  AtomicFile file(folder / "before/take.json");
  file.write("new");
  std::filesystem::rename(folder / "before", folder / "after");
  file.commit();
  EXPECT_EQ(readFile(folder / "after/take.json"), "new");
}

TEST_F(AtomicFileTest, RefusesOffsetsThatNoFileHas) {
  AtomicFile file(target);
  EXPECT_THROW(file.writeAt(UINT64_MAX, std::as_bytes(std::span("x", 1))), PlatformError);
}

TEST_F(AtomicFileTest, IsOverAfterCommitAndAfterAFailure) {
  AtomicFile file(target);
  file.commit();
  EXPECT_DEATH(file.write("x"), "before its commit");
  EXPECT_DEATH(file.commit(), "before its commit");

  AtomicFile failed(target);
  EXPECT_THROW(failed.reserve(UINT64_MAX), PlatformError);
  EXPECT_DEATH(failed.write("x"), "before its commit");
}

}  // namespace
}  // namespace orvane
