#include "orvane/platform/module_location.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(ModuleLocation, NamesTheLibraryAndTheProgramThatRun) {
  const auto module = ModuleLocation::module();
  const auto executable = ModuleLocation::executable();
  ASSERT_TRUE(module);
  ASSERT_TRUE(executable);
  EXPECT_TRUE(module->is_absolute());
  EXPECT_TRUE(module->filename().string().starts_with("libOrvaneHeadless.so"));
  EXPECT_TRUE(std::filesystem::is_regular_file(*module));
  EXPECT_EQ(*executable, std::filesystem::read_symlink("/proc/self/exe"));
  EXPECT_NE(*module, *executable);
}

}  // namespace
}  // namespace orvane
