#include "orvane/edit/edit_output_guard.h"

#include <gtest/gtest.h>

#include <optional>

#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using test::readFile;
using test::writeFile;

std::optional<EditOutputGuardError> refusal(const std::filesystem::path& input,
                                            const std::filesystem::path& output) {
  try {
    EditOutputGuard::assertNotInPlace(input, output);
  } catch (const EditOutputGuardError& error) {
    return error;
  }
  return std::nullopt;
}

class EditOutputGuardTest : public testing::Test {
 protected:
  EditOutputGuardError sameAs(const std::filesystem::path& path) const {
    return {EditOutputGuardError::Case::sameAsSource, path.string(), path.string()};
  }

  test::TemporaryDirectory folder;
  std::filesystem::path root = std::filesystem::canonical(folder.path());
  std::filesystem::path source = writeFile(root / "dir/a.wav", "audio");
};

TEST_F(EditOutputGuardTest, DifferentPathsPassAndNothingIsTouched) {
  EXPECT_EQ(refusal(source, root / "dir/b.wav"), std::nullopt);
  EXPECT_EQ(refusal(source, root / "other/a.wav"), std::nullopt);
  EXPECT_EQ(refusal(source, root / "dir/a.wav.bak"), std::nullopt);
  EXPECT_EQ(readFile(source), "audio");
  EXPECT_FALSE(std::filesystem::exists(root / "other"));
}

TEST_F(EditOutputGuardTest, ThePathItselfIsRefusedInItsFixedWords) {
  const auto error = refusal(source, source);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->errorDescription(),
            "Refusing to overwrite source file: input \"" + source.string() +
                "\" resolves to the same path as output \"" + source.string() + "\".");
  EXPECT_EQ(error->errorCase(), EditOutputGuardError::Case::sameAsSource);
  EXPECT_EQ(error->what(), error->errorDescription());
}

// The standard library refuses to make nothing absolute.
TEST_F(EditOutputGuardTest, EmptyPathsAreEqualToEachOtherAlone) {
  EXPECT_EQ(refusal("", ""), sameAs(""));
  EXPECT_EQ(refusal("", source), std::nullopt);
  EXPECT_EQ(refusal(source, ""), std::nullopt);
}

TEST_F(EditOutputGuardTest, DotsDoNotHideTheSource) {
  EXPECT_EQ(refusal(root / "dir/../dir/a.wav", source), sameAs(source));
  EXPECT_EQ(refusal(source, root / "dir/./../dir//a.wav"), sameAs(source));
  EXPECT_EQ(refusal(source, root / "missing/../dir/a.wav"), sameAs(source));
}

TEST_F(EditOutputGuardTest, RelativePathsAreThoseOfTheWorkingFolder) {
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(root / "dir");
  const auto error = refusal("a.wav", source);
  const auto other = refusal("b.wav", "../dir/b.wav");
  std::filesystem::current_path(before);
  EXPECT_EQ(error, sameAs(source));
  EXPECT_EQ(other, sameAs(root / "dir/b.wav"));
}

TEST_F(EditOutputGuardTest, ALinkToTheSourceCollidesAndTheMessageShowsItsTarget) {
  std::filesystem::create_symlink(source, root / "link.wav");
  EXPECT_EQ(refusal(source, root / "link.wav"), sameAs(source));
  EXPECT_EQ(refusal(root / "link.wav", source), sameAs(source));
}

TEST_F(EditOutputGuardTest, ALinkToTheFolderCollides) {
  std::filesystem::create_directory_symlink(root / "dir", root / "folder");
  EXPECT_EQ(refusal(source, root / "folder/a.wav"), sameAs(source));
  EXPECT_EQ(refusal(root / "folder/new.wav", root / "dir/new.wav"), sameAs(root / "dir/new.wav"));
}

TEST_F(EditOutputGuardTest, TheParentOfALinkedFolderIsTheSystemsToo) {
  std::filesystem::create_directory(root / "dir/sub");
  std::filesystem::create_directory(root / "elsewhere");
  std::filesystem::create_directory_symlink(root / "dir/sub", root / "elsewhere/link");
  EXPECT_EQ(refusal(source, root / "elsewhere/link/../a.wav"), sameAs(source));
}

TEST_F(EditOutputGuardTest, ALinkThatLeadsNowhereKeepsItsName) {
  std::filesystem::create_symlink(root / "nowhere.wav", root / "link.wav");
  EXPECT_EQ(refusal(source, root / "link.wav"), std::nullopt);
  std::filesystem::create_symlink("b", root / "circle");
  std::filesystem::create_symlink("circle", root / "b");
  EXPECT_EQ(refusal(source, root / "circle"), std::nullopt);
  EXPECT_EQ(refusal(root / "circle", root / "dir/../circle"), sameAs(root / "circle"));
}

TEST_F(EditOutputGuardTest, NamesThatDifferOnlyInCasePass) {
  EXPECT_EQ(refusal(source, root / "dir/A.wav"), std::nullopt);
  EXPECT_EQ(refusal(source, root / "dir/a.WAV"), std::nullopt);
}

TEST_F(EditOutputGuardTest, AHardLinkToTheSourceIsNotDetected) {
  std::filesystem::create_hard_link(source, root / "dir/hard.wav");
  EXPECT_EQ(refusal(source, root / "dir/hard.wav"), std::nullopt);
}

TEST_F(EditOutputGuardTest, ErrorsAreEqualByTheirPaths) {
  EXPECT_EQ(sameAs("/a"), sameAs("/a"));
  EXPECT_FALSE(sameAs("/a") == sameAs("/b"));
}

}  // namespace
}  // namespace orvane
