// What a replaced file keeps, and which rights are asked for.

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "orvane/platform/atomic_file.h"
#include "orvane/platform/error.h"
#include "tests/support/in_child.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using test::readFile;
using test::writeFile;

struct stat statusOf(const std::filesystem::path& path) {
  struct stat result {};
  if (stat(path.c_str(), &result) != 0) throw std::runtime_error("no status");
  return result;
}

unsigned modeOf(const std::filesystem::path& path) {
  return statusOf(path).st_mode & 07777U;
}

std::map<std::string, std::string> attributesOf(const std::filesystem::path& path) {
  std::array<char, 4096> names{};
  std::array<char, 4096> value{};
  std::map<std::string, std::string> result;
  const ssize_t size = listxattr(path.c_str(), names.data(), names.size());
  for (const char* name = names.data(); name < names.data() + size; name += std::strlen(name) + 1) {
    const ssize_t count = getxattr(path.c_str(), name, value.data(), value.size());
    if (count >= 0) result[name] = std::string(value.data(), static_cast<std::size_t>(count));
  }
  return result;
}

/// The system's form of an access list: the owner, user 1234, the group, the mask, the others.
std::string accessList(unsigned userRights) {
  const auto word = [](unsigned value) {
    return std::string{static_cast<char>(value & 0xFFU), static_cast<char>(value >> 8U)};
  };
  const std::string noId(4, '\xFF');
  return std::string("\2\0\0\0", 4) + word(1) + word(6) + noId + word(2) + word(userRights) +
         word(1234) + word(0) + word(4) + word(4) + noId + word(16) + word(6) + noId + word(32) +
         word(0) + noId;
}

class AtomicFileMetadataTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0); }

  test::TemporaryDirectory folder;
  std::filesystem::path target = writeFile(folder / "take.json", "old");
};

TEST_F(AtomicFileMetadataTest, KeepsTheModeWithItsSpecialBits) {
  for (const unsigned mode : {0600U, 0644U, 0664U, 0755U, 0606U, 02755U, 04711U}) {
    ASSERT_EQ(chmod(target.c_str(), mode), 0);
    writeFileAtomically(target, "new");
    EXPECT_EQ(modeOf(target), mode);
  }
}

TEST_F(AtomicFileMetadataTest, KeepsTheOwnerAndTheGroup) {
  if (geteuid() == 0) {
    ASSERT_EQ(chown(target.c_str(), 1234, 2345), 0);
  }
  const auto before = statusOf(target);
  writeFileAtomically(target, "new");
  EXPECT_EQ(statusOf(target).st_uid, before.st_uid);
  EXPECT_EQ(statusOf(target).st_gid, before.st_gid);
  EXPECT_NE(statusOf(target).st_ino, before.st_ino);
}

TEST_F(AtomicFileMetadataTest, KeepsExtendedAttributes) {
  (void)setxattr(target.c_str(), "user.orvane.note", "take 2", 6, 0);
  (void)setxattr(target.c_str(), "user.orvane.empty", "", 0, 0);
  const auto before = attributesOf(target);
  writeFileAtomically(target, "new");
  EXPECT_EQ(readFile(target), "new");
  EXPECT_EQ(attributesOf(target), before);
}

TEST_F(AtomicFileMetadataTest, KeepsTheAccessList) {
  const auto list = accessList(6);
  (void)setxattr(target.c_str(), "system.posix_acl_access", list.data(), list.size(), 0);
  const auto before = attributesOf(target);
  const auto mode = modeOf(target);
  writeFileAtomically(target, "new");
  EXPECT_EQ(attributesOf(target), before);
  EXPECT_EQ(modeOf(target), mode);
}

TEST_F(AtomicFileMetadataTest, TakesNoAccessListFromTheFolder) {
  const auto list = accessList(6);
  (void)setxattr(folder.path().c_str(), "system.posix_acl_default", list.data(), list.size(), 0);
  ASSERT_EQ(chmod(target.c_str(), 0664), 0);
  writeFileAtomically(target, "new");
  EXPECT_TRUE(attributesOf(target).empty());
  EXPECT_EQ(modeOf(target), 0664U);
}

TEST_F(AtomicFileMetadataTest, RefusesAFileThatMayNotBeWritten) {
  ASSERT_EQ(chmod(target.c_str(), 0444), 0);
  const auto end = test::runInChild([&] {
    test::becomeNobody();
    try {
      writeFileAtomically(target, "new");
    } catch (const PlatformError& error) {
      return error.errorDescription() == "take.json: Permission denied" ? 0 : 1;
    }
    return 2;
  });
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(readFile(target), "old");
  EXPECT_EQ(modeOf(target), 0444U);
}

TEST_F(AtomicFileMetadataTest, RefusesAFolderThatMayNotBeWritten) {
  ASSERT_EQ(chmod(target.c_str(), 0666), 0);
  ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
  const auto end = test::runInChild([&] {
    test::becomeNobody();
    try {
      writeFileAtomically(target, "new");
    } catch (const PlatformError& error) {
      return error.code() == std::errc::permission_denied ? 0 : 1;
    }
    return 2;
  });
  ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(readFile(target), "old");
}

TEST_F(AtomicFileMetadataTest, WritesIntoAFolderThatMayNotBeRead) {
  ASSERT_EQ(chmod(target.c_str(), 0666), 0);
  ASSERT_EQ(chmod(folder.path().c_str(), 0333), 0);
  const auto end = test::runInChild([&] {
    test::becomeNobody();
    writeFileAtomically(target, "new");
    return 0;
  });
  ASSERT_EQ(chmod(folder.path().c_str(), 0777), 0);
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(readFile(target), "new");
}

TEST_F(AtomicFileMetadataTest, GivesNobodyMoreRightsWhenTheGroupCannotBeKept) {
  ASSERT_EQ(chmod(target.c_str(), 06676), 0);
  const bool isForeign = geteuid() == 0;
  const auto end = test::runInChild([&] {
    test::becomeNobody();
    AtomicFile file(target);
    file.write("new");
    file.commit();
    const MetadataLosses& losses = file.losses();
    return losses.owner == isForeign && losses.group == isForeign && losses.mode == isForeign ? 0
                                                                                              : 1;
  });
  EXPECT_EQ(end.exitCode, 0);
  EXPECT_EQ(readFile(target), "new");
  EXPECT_EQ(modeOf(target), isForeign ? 0666U : 06676U);
}

TEST_F(AtomicFileMetadataTest, LosesNothingWhereAllCanBeKept) {
  (void)setxattr(target.c_str(), "user.orvane.note", "take 2", 6, 0);
  ASSERT_EQ(chmod(target.c_str(), 0640), 0);
  AtomicFile file(target);
  file.commit();
  EXPECT_EQ(file.losses(), MetadataLosses{});
  EXPECT_TRUE(file.losses().descriptions().empty());
}

TEST_F(AtomicFileMetadataTest, CountsTheHardLinksThatKeepTheOldContent) {
  std::filesystem::create_hard_link(target, folder / "second.json");
  std::filesystem::create_hard_link(target, folder / "third.json");
  AtomicFile file(target);
  file.write("new");
  file.commit();
  EXPECT_EQ(file.losses().hardLinks, 2U);
  EXPECT_EQ(readFile(folder / "third.json"), "old");
}

TEST_F(AtomicFileMetadataTest, TakesNoSignatureOfTheOldContent) {
  if (setxattr(target.c_str(), "security.ima", "\1abc", 4, 0) != 0)
    GTEST_SKIP() << "this user may not sign files";
  AtomicFile file(target);
  file.write("new");
  file.commit();
  EXPECT_FALSE(attributesOf(target).contains("security.ima"));
  EXPECT_EQ(file.losses(), MetadataLosses{});
}

TEST(MetadataLosses, SayWhatWasLost) {
  const MetadataLosses losses{.owner = true,
                              .group = true,
                              .mode = true,
                              .accessList = true,
                              .attributes = {"user.comment"},
                              .hardLinks = 2};
  EXPECT_EQ(losses.descriptions(),
            (std::vector<std::string>{"the owner", "the group", "some access rights",
                                      "the access list", "the attribute user.comment",
                                      "the hard links under 2 other names"}));
  EXPECT_EQ(MetadataLosses{.hardLinks = 1}.descriptions(),
            std::vector<std::string>{"the hard link under another name"});
}

}  // namespace
}  // namespace orvane
