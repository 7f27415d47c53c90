#include <gtest/gtest.h>

#include <cmath>

#include "orvane/container/audio_file.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/tool_runner.h"

namespace orvane {
namespace {

/// Whole seconds: some writers of FFmpeg round others up.
constexpr const char* kChapters =
    ";FFMETADATA1\n"
    "[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=1000\ntitle=Intro\n"
    "[CHAPTER]\nTIMEBASE=1/1000\nSTART=1000\nEND=3000\ntitle=Größe </script>\n";

class ContainerChapters : public testing::TestWithParam<const char*> {
 protected:
  /// Three seconds of audio, made with the given arguments before the output's name.
  std::vector<ChapterMark> chaptersOf(const std::string& name,
                                      const std::vector<std::string>& arguments) const {
    folder_.write("chapters.txt", kChapters);
    const auto path = (folder_ / name).string();
    std::vector<std::string> all = {
        "-v", "error",           "-f", "lavfi",
        "-i", "sine=duration=3", "-i", (folder_ / "chapters.txt").string()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    all.push_back(path);
    test::runTool("ffmpeg", all);
    return AudioFile::open(path)->chapters();
  }

 private:
  test::TemporaryDirectory folder_{};
};

TEST_P(ContainerChapters, AreReadWithTheirTitles) {
  const auto marks = chaptersOf(std::string("a.") + GetParam(), {"-map_metadata", "1"});
  ASSERT_EQ(marks.size(), 2U);
  EXPECT_EQ(marks[0].name, "Intro");
  EXPECT_EQ(marks[1].name, "Größe </script>");
  EXPECT_NEAR(marks[0].startSeconds, 0, 0.001);
  EXPECT_NEAR(marks[1].startSeconds, 1, 0.001);
  ASSERT_TRUE(marks[1].endSeconds);
  EXPECT_NEAR(*marks[1].endSeconds, 3, 0.1);
}

INSTANTIATE_TEST_SUITE_P(Containers, ContainerChapters,
                         testing::Values("m4a", "mp3", "mka", "opus", "mov"));

using ContainerComments = ContainerChapters;

TEST_P(ContainerComments, AreReadAsChapters) {
  const auto marks = chaptersOf(std::string("a.") + GetParam(),
                                {"-map_chapters", "-1", "-metadata", "CHAPTER001=00:00:01.250",
                                 "-metadata", "CHAPTER001NAME=One"});
  ASSERT_EQ(marks.size(), 1U);
  EXPECT_EQ(marks[0].name, "One");
  EXPECT_NEAR(marks[0].startSeconds, 1.25, 0.001);
}

INSTANTIATE_TEST_SUITE_P(Containers, ContainerComments, testing::Values("flac", "ogg", "opus"));

TEST_F(ContainerChapters, AreNoneWhereThereAreNone) {
  EXPECT_TRUE(chaptersOf("a.m4a", {"-map_chapters", "-1"}).empty());
}

}  // namespace
}  // namespace orvane
