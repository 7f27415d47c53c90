#include "orvane/platform/user_data_directory.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include "tests/support/in_child.h"

namespace orvane {
namespace {

/// Whether it is `expected` in a process with these variables; null for unset.
bool isWith(const char* dataHome, const char* home, const std::filesystem::path& expected) {
  const auto set = [](const char* name, const char* value) {
    if (value == nullptr)
      unsetenv(name);
    else
      setenv(name, value, 1);
  };
  return test::runInChild([&] {
           set("XDG_DATA_HOME", dataHome);
           set("HOME", home);
           return userDataDirectory() == expected ? 0 : 1;
         }).exitCode == 0;
}

TEST(UserDataDirectory, IsTheOneThatTheUserNames) {
  EXPECT_TRUE(isWith("/data/of/mine", "/home/me", "/data/of/mine"));
}

TEST(UserDataDirectory, IsInTheHomeOtherwise) {
  for (const char* const unusable : {static_cast<const char*>(nullptr), "", "relative/path"})
    EXPECT_TRUE(isWith(unusable, "/home/me", "/home/me/.local/share"));
}

TEST(UserDataDirectory, IsInTheHomeThatTheSystemListsWithoutAVariable) {
  const passwd* const entry = getpwuid(geteuid());
  ASSERT_NE(entry, nullptr);
  const auto expected = std::filesystem::path(entry->pw_dir) / ".local/share";
  for (const char* const unusable : {static_cast<const char*>(nullptr), "", "home"})
    EXPECT_TRUE(isWith(nullptr, unusable, expected));
}

}  // namespace
}  // namespace orvane
