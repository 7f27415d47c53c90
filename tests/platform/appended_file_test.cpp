#include "orvane/platform/appended_file.h"

#include <gtest/gtest.h>

#include "orvane/platform/error.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane::test {
namespace {

TEST(AppendedFile, GoesOnBehindWhatIsThere) {
  const TemporaryDirectory folder;
  const auto path = folder.write("list", "one\n");
  AppendedFile file(path);
  file.append("two\n");
  // Whoever looks while it is open finds whole records.
  EXPECT_EQ(readFile(path), "one\ntwo\n");
  file.append("three\n");
  EXPECT_EQ(readFile(path), "one\ntwo\nthree\n");
}

TEST(AppendedFile, MakesNoFile) {
  const TemporaryDirectory folder;
  EXPECT_THROW(AppendedFile(folder / "none"), PlatformError);
  EXPECT_FALSE(std::filesystem::exists(folder / "none"));
}

}  // namespace
}  // namespace orvane::test
