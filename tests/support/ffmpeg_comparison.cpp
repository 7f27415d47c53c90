#include "tests/support/ffmpeg_comparison.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "tests/support/file_reading.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane::test {

void FFmpegComparison::decodeWithFFmpeg(std::size_t first, std::size_t count) const {
  std::vector<std::string> arguments = {"-v", "error", "-y"};
  for (std::size_t i = first; i < first + count; ++i)
    arguments.insert(arguments.end(), {"-i", path(files_[i].first)});
  for (std::size_t i = 0; i < count; ++i)
    arguments.insert(arguments.end(), {"-map", std::to_string(i) + ":a", "-f", "f32le", "-c:a",
                                       "pcm_f32le", path(files_[first + i].first + ".raw")});
  runTool("ffmpeg", arguments);
}

void FFmpegComparison::expectEqual() const {
  ASSERT_GT(files_.size(), 0U);
  // Many files to a run of the program: most of its time goes into starting it.
  constexpr std::size_t kBatch = 64;
  for (std::size_t first = 0; first < files_.size(); first += kBatch)
    decodeWithFFmpeg(first, std::min(kBatch, files_.size() - first));
  for (const Named& file : files_) expectEqual(file);
}

void FFmpegComparison::expectEqual(const Named& file) const {
  const auto& [name, channels] = file;
  SCOPED_TRACE(name);
  const std::string raw = readFile(path(name + ".raw"));
  const auto buffer = readWhole(path(name), 2);
  ASSERT_TRUE(buffer);
  ASSERT_EQ(buffer->channelCount(), static_cast<std::uint32_t>(channels));
  ASSERT_EQ(std::size_t{buffer->frameLength()} * buffer->channelCount() * sizeof(float),
            raw.size());
  ASSERT_GT(raw.size(), 0U);
  std::size_t offset = 0;
  for (std::uint32_t frame = 0; frame < buffer->frameLength(); ++frame) {
    for (std::uint32_t c = 0; c < buffer->channelCount(); ++c, offset += sizeof(float)) {
      const float sample = buffer->channel(c)[frame];
      ASSERT_EQ(std::memcmp(&sample, raw.data() + offset, sizeof(float)), 0)
          << "channel " << c << ", frame " << frame;
    }
  }
}

}  // namespace orvane::test
