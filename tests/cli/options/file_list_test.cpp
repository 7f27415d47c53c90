#include "cli/options/file_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/usage_error.h"
#include "orvane/platform/error.h"
#include "tests/support/temporary_directory.h"

namespace orvane::cli {
namespace {

using std::string_view_literals::operator""sv;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> resolvedNames(const FileList::Request& request) {
  StandardInput standardInput;
  std::vector<std::string> names;
  for (const auto& input : FileList::resolve(request, standardInput)) {
    EXPECT_EQ(input.path, input.display);
    names.push_back(input.display);
  }
  return names;
}

TEST(FileList, ReadsOneNamePerLine) {
  EXPECT_THAT(FileList::namesIn("a.wav\nb c.wav\n"), ElementsAre("a.wav", "b c.wav"));
  EXPECT_THAT(FileList::namesIn("a.wav\nb.wav"), ElementsAre("a.wav", "b.wav"));
  EXPECT_THAT(FileList::namesIn("\n\na.wav\n\n"), ElementsAre("a.wav"));
  EXPECT_THAT(FileList::namesIn(""), IsEmpty());
}

// Lists from other systems named files with a carriage return at the end.
TEST(FileList, TakesEitherLineEndAndAByteOrderMark) {
  EXPECT_THAT(FileList::namesIn("\xEF\xBB\xBF"
                                "a.wav\r\nb.wav\r\n"),
              ElementsAre("a.wav", "b.wav"));
  EXPECT_THAT(FileList::namesIn("a\r\0b\0"sv), ElementsAre("a\r", "b"));
}

TEST(FileList, TakesLineEndsForPartsOfNamesThatNULSeparates) {
  EXPECT_THAT(FileList::namesIn("a\nb.wav\0c.wav\0"sv), ElementsAre("a\nb.wav", "c.wav"));
  EXPECT_THAT(FileList::namesIn("\0"sv), IsEmpty());
}

TEST(FileList, PutsTheNamesOfTheCommandLineFirst) {
  const test::TemporaryDirectory folder;
  const auto list = folder.write("list", "c.wav\nd.wav\n");
  EXPECT_THAT(resolvedNames({{"a.wav", "b.wav"}, list}),
              ElementsAre("a.wav", "b.wav", "c.wav", "d.wav"));
}

TEST(FileList, AcceptsAnEmptyList) {
  const test::TemporaryDirectory folder;
  EXPECT_THAT(resolvedNames({{}, folder.write("list", "")}), IsEmpty());
}

TEST(FileList, ReadsAListOfManyNames) {
  const test::TemporaryDirectory folder;
  std::string text;
  for (int i = 0; i < 30'000; ++i) text += "file " + std::to_string(i) + ".wav\n";
  const auto names = resolvedNames({{}, folder.write("list", text)});
  ASSERT_EQ(names.size(), 30'000U);
  EXPECT_EQ(names.back(), "file 29999.wav");
}

TEST(FileList, RefusesToHaveNothingToDo) {
  EXPECT_THROW(resolvedNames({}), UsageError);
}

TEST(FileList, RefusesStandardInputTwice) {
  EXPECT_THROW(resolvedNames({{"-", "-"}, ""}), UsageError);
  const test::TemporaryDirectory folder;
  EXPECT_THROW(resolvedNames({{"-"}, folder.write("list", "a\n-\n")}), UsageError);
}

TEST(FileList, SaysWhyAListCannotBeRead) {
  const test::TemporaryDirectory folder;
  EXPECT_THROW(resolvedNames({{}, folder / "missing"}), PlatformError);
  EXPECT_THROW(resolvedNames({{}, folder.path()}), PlatformError);
}

TEST(InputName, PutsTheNameThatTheUserKnowsIntoMessages) {
  const InputName input{"/proc/self/fd/7", "-"};
  EXPECT_EQ(input.shown(), "standard input");
  EXPECT_EQ(input.message("Empty or unreadable file: 7"),
            "Empty or unreadable file: standard input");
  EXPECT_EQ(input.message("7: no audio file"), "standard input: no audio file");
  EXPECT_EQ(input.message("another text"), "another text");
}

// Two files of one name could not be told apart.
TEST(InputName, PutsThePathAsItWasTypedIntoMessages) {
  const InputName input{"folder/7", "./folder/7"};
  EXPECT_EQ(input.shown(), "./folder/7");
  EXPECT_EQ(input.message("7: no audio file"), "./folder/7: no audio file");
  EXPECT_EQ(input.message("Empty or unreadable file: 7"), "Empty or unreadable file: ./folder/7");
  // Of another file, whose name begins alike.
  EXPECT_EQ(input.message("7.html: File exists"), "7.html: File exists");
  EXPECT_EQ(InputName({"album/", "music/album/"}).message("album: Is a directory"),
            "music/album/: Is a directory");
  EXPECT_EQ(InputName({.path = "a", .display = "a", .stream = 2}).message("a: damaged"),
            "a [stream 2]: damaged");
}

}  // namespace
}  // namespace orvane::cli
