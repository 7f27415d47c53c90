// What others could read while a residual is made into bytes.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>

#include "orvane/analysis/offline_diff_pipeline.h"
#include "tests/support/system_call_faults.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

namespace faults = test::SystemCallFaults;

TEST(ResidualAsBytes, IsNeverReadableByOthers) {
  const test::TemporaryDirectory folder;
  ASSERT_EQ(setenv("TMPDIR", folder.path().c_str(), 1), 0);
  const mode_t before = umask(0);
  const auto buffer = PCMBuffer::make({.sampleRate = 48000, .channelCount = 1}, 1000);
  buffer->setFrameLength(1000);
  for (const bool anonymous : {true, false}) {
    int looks = 0;
    faults::begin({.anonymous = anonymous, .meanwhile = [&](std::string_view) {
                     for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
                       struct stat status {};
                       if (stat(entry.path().c_str(), &status) != 0) continue;
                       EXPECT_EQ(status.st_mode & 0777, 0600U) << entry.path();
                       ++looks;
                     }
                   }});
    const auto bytes = OfflineDiffPipeline::wavData(*buffer);
    faults::end();
    EXPECT_GT(looks, 5);
    EXPECT_GT(bytes.size(), 4000U);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
  }
  umask(before);
  unsetenv("TMPDIR");
}

}  // namespace
}  // namespace orvane
