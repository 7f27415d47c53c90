#include "orvane/container/sniff/id3v2_tag.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

std::string tag(std::size_t size, char flags = 0) {
  const std::string sizes{0, 0, static_cast<char>(size >> 7), static_cast<char>(size & 127)};
  const bool hasFooter = (flags & 16) != 0;
  return std::string("ID3\4\0", 5) + flags + sizes + std::string(size + (hasFooter ? 10 : 0), 'x');
}

class ID3v2Tag : public testing::Test {
 protected:
  std::uint64_t endOf(const std::string& bytes) {
    return endOfID3v2Tags(InputFile(test::writeFile(folder_ / "a.bin", bytes)));
  }

  test::TemporaryDirectory folder_;
};

TEST_F(ID3v2Tag, IsSkippedWithItsFooter) {
  EXPECT_EQ(endOf("fLaC and more"), 0U);
  EXPECT_EQ(endOf(tag(300) + "fLaC"), 310U);
  EXPECT_EQ(endOf(tag(300, 16) + tag(5) + "fLaC"), 320U + 15);
}

TEST_F(ID3v2Tag, MayBeCutShort) {
  EXPECT_EQ(endOf(tag(300).substr(0, 100)), 310U);
  EXPECT_EQ(endOf(tag(300).substr(0, 9)), 0U);
}

TEST_F(ID3v2Tag, HasSevenBitsToTheByteOfItsSize) {
  std::string bytes = tag(300) + "fLaC";
  bytes[9] = '\x80';
  EXPECT_EQ(endOf(bytes), 0U);
}

/// 100 MB of empty tags took five seconds of reading ten bytes at a time.
TEST_F(ID3v2Tag, IsNotSkippedWithoutEnd) {
  std::string bytes;
  for (int i = 0; i < 1000; ++i) bytes += tag(0);
  EXPECT_EQ(endOf(bytes), 80U);
}

}  // namespace
}  // namespace orvane
