#include "orvane/platform/full_path.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

TEST(FullPath, BeginsAtTheRootAndHasNoDetours) {
  const auto here = std::filesystem::canonical(std::filesystem::current_path());
  EXPECT_EQ(fullPath("a.wav"), here / "a.wav");
  EXPECT_EQ(fullPath("./missing/../a.wav"), here / "a.wav");
  EXPECT_EQ(fullPath("/missing//x/./a.wav"), "/missing/x/a.wav");
  EXPECT_EQ(fullPath(""), "");
}

TEST(FullPath, FollowsLinksToFoldersAndNotToTheFile) {
  const test::TemporaryDirectory folder;
  const auto real = std::filesystem::canonical(folder.path());
  std::filesystem::create_directory(real / "tapes");
  std::filesystem::create_symlink(real / "tapes", real / "link");
  std::filesystem::create_symlink("b.wav", real / "tapes" / "a.wav");
  EXPECT_EQ(fullPath(real / "link" / "a.wav"), real / "tapes" / "a.wav");
  EXPECT_EQ(fullPath(real / "link" / ".." / "a.wav"), real / "a.wav");
}

}  // namespace
}  // namespace orvane
