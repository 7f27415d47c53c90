#include "orvane/report/pdf/browser/browser_search.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "orvane/report/pdf/browser/browser_error.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using std::filesystem::path;
using std::filesystem::perms;

path addProgram(const test::TemporaryDirectory& folder, std::string_view name,
                perms rights = perms::owner_all) {
  auto program = folder.write(name, std::string_view("#!/bin/sh\n"));
  std::filesystem::permissions(program, rights);
  return program;
}

TEST(BrowserSearch, PrefersHeadlessProgramsWhateverTheirFolder) {
  const test::TemporaryDirectory first;
  const test::TemporaryDirectory second;
  addProgram(first, "google-chrome");
  const auto wanted = addProgram(second, "chromium-headless-shell");
  EXPECT_EQ(BrowserSearch::find({first.path(), second.path()}), wanted);
}

TEST(BrowserSearch, PassesOverWhatCannotBeRun) {
  const test::TemporaryDirectory folder;
  addProgram(folder, "chromium", perms::owner_read);
  std::filesystem::create_directory(folder / "headless-shell");
  EXPECT_EQ(BrowserSearch::find({folder.path(), folder / "nothing"}), std::nullopt);
}

TEST(BrowserSearch, SaysWhatToInstallWhenThereIsNone) {
  try {
    BrowserSearch::choose({}, {});
    FAIL();
  } catch (const BrowserError& failure) {
    EXPECT_EQ(failure, BrowserError(BrowserError::Case::notFound,
                                    "Writing PDF needs a browser: install the package "
                                    "chromium-headless-shell."));
  }
}

TEST(BrowserSearch, TakesAWishByPathOrByName) {
  const test::TemporaryDirectory folder;
  const auto program = addProgram(folder, "my-browser");
  addProgram(folder, "chromium");
  EXPECT_EQ(BrowserSearch::choose("my-browser", {folder.path()}), program);
  EXPECT_EQ(BrowserSearch::choose("./not/there", {folder.path()}), "./not/there");
  try {
    BrowserSearch::choose("other", {folder.path()});
    FAIL();
  } catch (const BrowserError& failure) {
    EXPECT_EQ(failure.errorDescription(), "There is no program \"other\" to write PDF with.");
  }
}

TEST(BrowserSearch, LooksInTheAbsoluteFoldersOfPath) {
  const std::string before = getenv("PATH");
  setenv("PATH", "/one::relative:.:/two/three:", 1);
  EXPECT_EQ(BrowserSearch::programFolders(), (std::vector<path>{"/one", "/two/three"}));
  setenv("PATH", "", 1);
  EXPECT_TRUE(BrowserSearch::programFolders().empty());
  unsetenv("PATH");
  EXPECT_EQ(BrowserSearch::programFolders(),
            (std::vector<path>{"/usr/local/bin", "/usr/bin", "/bin"}));
  setenv("PATH", before.c_str(), 1);
}

}  // namespace
}  // namespace orvane
