#include "orvane/platform/orvane_resources.h"
#include "orvane/text/resource_text.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using test::writeFile;

constexpr const char* kFirstName = "Orvane_OrvaneHeadless.bundle";
constexpr const char* kSecondName = "OrvaneHeadless_OrvaneHeadless.bundle";

/// A module in <root>/module with its resources in <root>/module-share, and a program likewise.
class OrvaneResourcesTest : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* name : {"module", "module-share", "program", "program-share"})
      std::filesystem::create_directory(root / name);
  }
  std::optional<std::filesystem::path> find() const {
    return OrvaneResources::url(module, program, "page", "css");
  }

  test::TemporaryDirectory root;
  OrvaneResources::Bundle module{.bundleURL = root / "module",
                                 .resourceURL = root / "module-share"};
  OrvaneResources::Bundle program{.bundleURL = root / "program",
                                  .resourceURL = root / "program-share"};
};

TEST_F(OrvaneResourcesTest, AsksEveryCandidateInTheFixedOrder) {
  std::vector<std::filesystem::path> order{root / "module-share/page.css",
                                           root / "program-share/page.css"};
  for (const char* base : {"module", "module-share", "program", "program-share"})
    for (const char* bundle : {kFirstName, kSecondName})
      order.push_back(root / base / bundle / "page.css");

  for (const auto& path : order) writeFile(path, path.string());
  for (const auto& path : order) {
    EXPECT_EQ(find(), path);
    std::filesystem::remove(path);
  }
  EXPECT_EQ(find(), std::nullopt);
}

TEST_F(OrvaneResourcesTest, PrefersTheModulesOwnBundleToTheProgram) {
  writeFile(root / "program-share/page.css", "program");
  writeFile(root / "module-share/page.css", "module");
  EXPECT_EQ(OrvaneResources::text(module, program, "page", "css"), "module");
}

TEST_F(OrvaneResourcesTest, WithoutBundlesAsksOnlyModuleAndProgram) {
  writeFile(root / "elsewhere" / kFirstName / "page.css", "no");
  EXPECT_EQ(find(), std::nullopt);
  writeFile(root / "program-share/page.css", "program");
  EXPECT_EQ(find(), root / "program-share/page.css");
}

TEST_F(OrvaneResourcesTest, SkipsABundleNameThatIsNoFolder) {
  writeFile(root / "module" / kFirstName, "a file");
  writeFile(root / "module" / kSecondName / "page.css", "second");
  EXPECT_EQ(find(), root / "module" / kSecondName / "page.css");
}

TEST_F(OrvaneResourcesTest, SkipsAbsentLocations) {
  writeFile(root / "program" / kSecondName / "page.css", "program");
  module = {};
  program.resourceURL.reset();
  EXPECT_EQ(find(), root / "program" / kSecondName / "page.css");
  program = {};
  EXPECT_EQ(find(), std::nullopt);
}

TEST_F(OrvaneResourcesTest, FindsAResourceWithoutExtensionAndOneThatIsAFolder) {
  std::filesystem::create_directory(root / "module-share/model");
  EXPECT_EQ(OrvaneResources::url(module, program, "model", ""), root / "module-share/model");
  EXPECT_EQ(OrvaneResources::text(module, program, "model", ""), std::nullopt);
}

TEST_F(OrvaneResourcesTest, TextIsAbsentWhenMissingOrNotUTF8) {
  EXPECT_EQ(OrvaneResources::text(module, program, "page", "css"), std::nullopt);
  writeFile(root / "module-share/page.css", "caf\xE9");
  EXPECT_EQ(OrvaneResources::text(module, program, "page", "css"), std::nullopt);
  writeFile(root / "module-share/page.css", "caf\xC3\xA9");
  EXPECT_EQ(OrvaneResources::text(module, program, "page", "css"), "caf\xC3\xA9");
  writeFile(root / "module-share/page.css", "");
  EXPECT_EQ(OrvaneResources::text(module, program, "page", "css"), "");
}

TEST_F(OrvaneResourcesTest, ABinarysResourcesLieInItsPrefixesShareFolder) {
  const auto share = root / "prefix/share/orvane";
  EXPECT_EQ(OrvaneResources::bundleOfBinary(root / "prefix/bin/orvane"),
            (OrvaneResources::Bundle{.bundleURL = root / "prefix/bin"}));
  std::filesystem::create_directories(share);
  for (const char* folder : {"bin", "lib", "lib/x86_64-linux-gnu", "lib64/orvane"})
    EXPECT_EQ(
        OrvaneResources::bundleOfBinary(root / "prefix" / folder / "binary"),
        (OrvaneResources::Bundle{.bundleURL = root / "prefix" / folder, .resourceURL = share}));
  EXPECT_EQ(OrvaneResources::bundleOfBinary(root / "prefix/a/b/binary").resourceURL, std::nullopt);
  EXPECT_EQ(OrvaneResources::bundleOfBinary(std::nullopt), OrvaneResources::Bundle{});
}

TEST(OrvaneResources, OfTheRunningProcessHasNoUnknownResource) {
  EXPECT_EQ(OrvaneResources::url("no-such-resource", "bin"), std::nullopt);
  EXPECT_EQ(OrvaneResources::text("no-such-resource", "txt"), std::nullopt);
}

}  // namespace
}  // namespace orvane
