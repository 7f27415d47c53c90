#include "tests/container/modules_beside_ffmpeg.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "orvane/platform/module_location.h"
#include "tests/container/ffmpeg/compressed_files.h"
#include "tests/support/tool_runner.h"

namespace orvane::test {
namespace {

bool isLoaded(const std::string& library) {
  std::ifstream maps("/proc/self/maps");
  return std::string(std::istreambuf_iterator<char>(maps), {}).find(library) != std::string::npos;
}

}  // namespace

void expectReadWithoutFFmpeg(const std::filesystem::path& file, const std::string& library) {
  if (isLoaded("libavformat")) {
    const auto& test = *testing::UnitTest::GetInstance()->current_test_info();
    const std::string output =
        runTool(ModuleLocation::executable().value().string(),
                {std::string("--gtest_filter=") + test.test_suite_name() + "." + test.name()});
    EXPECT_NE(output.find("[  PASSED  ] 1 test"), std::string::npos);
    return;
  }
  EXPECT_TRUE(describeAudioFile(file));
  EXPECT_GT(readWholeFile(file).frames(), 0);
  EXPECT_TRUE(isLoaded(library));
  EXPECT_FALSE(isLoaded("libavformat"));
}

void expectSongInTwoHalves(const std::filesystem::path& file) {
  const auto opened = AudioFile::open(file);
  EXPECT_THAT(opened->tagNames(), testing::Contains("title"));
  const auto chapters = opened->chapters();
  ASSERT_EQ(chapters.size(), 1U);
  EXPECT_EQ(chapters[0].startSeconds, 0.5);
  EXPECT_EQ(chapters[0].name, "Second half");
}

}  // namespace orvane::test
