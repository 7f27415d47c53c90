#include "orvane/platform/file_text.h"

#include <gtest/gtest.h>

#include "orvane/platform/error.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

TEST(ReadFileText, GivesAllBytes) {
  const test::TemporaryDirectory folder;
  const std::string text("a\0\xFF\n", 4);
  EXPECT_EQ(readFileText(folder.write("some", text), 4), text);
  EXPECT_EQ(readFileText(folder.write("none", ""), 0), "");
}

TEST(ReadFileText, RefusesWhatIsTooLargeOrNoFile) {
  const test::TemporaryDirectory folder;
  EXPECT_THROW(readFileText(folder.write("some", "12345"), 4), PlatformError);
  EXPECT_THROW(readFileText(folder / "missing", 4), PlatformError);
  EXPECT_THROW(readFileText(folder.path(), 1 << 20), PlatformError);
}

}  // namespace
}  // namespace orvane
