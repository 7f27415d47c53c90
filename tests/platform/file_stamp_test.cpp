#include "orvane/platform/file_stamp.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>

#include "orvane/platform/file_descriptor.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using test::writeFile;

class FileStampTest : public testing::Test {
 protected:
  /// The file system's clock may stand still for some milliseconds.
  static void letTimePass() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }

  test::TemporaryDirectory folder;
  std::filesystem::path file = writeFile(folder / "take.wav", "content");
  FileStamp before = FileStamp::of(file).value();
};

TEST_F(FileStampTest, IsTheSameByPathByDescriptorAndThroughALink) {
  const FileDescriptor open(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
  EXPECT_EQ(FileStamp::of(open.number()), before);
  std::filesystem::create_symlink(file, folder / "link.wav");
  EXPECT_EQ(FileStamp::of(folder / "link.wav"), before);
  EXPECT_EQ(before.size, 7U);
  const FileDescriptor place(::open(folder.path().c_str(), O_PATH | O_CLOEXEC));
  EXPECT_EQ(FileStamp::at(place.number(), "take.wav"), before);
  EXPECT_NE(FileStamp::at(place.number(), "link.wav"), before);
}

TEST_F(FileStampTest, IsAbsentWhereNothingCanBeLookedAt) {
  EXPECT_FALSE(FileStamp::of(folder / "missing.wav"));
  EXPECT_FALSE(FileStamp::of(-1));
}

TEST_F(FileStampTest, TellsWrittenReplacedAndRenamedFilesApart) {
  letTimePass();
  std::filesystem::permissions(file, std::filesystem::perms(0600));
  const auto withOtherMode = FileStamp::of(file).value();
  EXPECT_NE(withOtherMode, before);
  EXPECT_TRUE(withOtherMode.isSameContent(before));

  writeFile(file, "content");
  const auto rewritten = FileStamp::of(file).value();
  EXPECT_TRUE(rewritten.isSameFile(before));
  EXPECT_FALSE(rewritten.isSameContent(before));

  // One that keeps the time and the size of the first.
  writeFile(folder / "other.wav", "CONTENT");
  std::filesystem::last_write_time(folder / "other.wav", std::filesystem::last_write_time(file));
  std::filesystem::rename(folder / "other.wav", file);
  EXPECT_FALSE(FileStamp::of(file)->isSameFile(before));
}

}  // namespace
}  // namespace orvane
