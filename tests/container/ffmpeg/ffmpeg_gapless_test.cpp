#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <iterator>

#include "orvane/platform/error.h"
#include "tests/container/ffmpeg/compressed_files.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using test::Arguments;

/// Frames of the noise that the encoders are given.
constexpr double kSeconds = 1.25;
constexpr std::int64_t kFrames = 60000;

class FFmpegGapless : public testing::Test {
 protected:
  /// Length of the noise once encoded and read again.
  std::int64_t lengthOf(const std::string& name, const Arguments& arguments = {}) {
    const auto file = test::encodeNoise(folder_, name, arguments, kSeconds);
    const auto found = test::readWholeFile(file);
    EXPECT_EQ(found.promisedFrames, found.frames()) << name;
    return found.frames();
  }

  /// One file behind the other.
  std::filesystem::path join(const std::string& name, const std::filesystem::path& first,
                             const std::filesystem::path& second) {
    return test::writeFile(folder_ / name, test::readFile(first) + test::readFile(second));
  }

  test::TemporaryDirectory folder_;
};

TEST_F(FFmpegGapless, TakesPrimingAndPaddingOffMP3) {
  EXPECT_EQ(lengthOf("a.mp3"), kFrames);
  // Without the encoder's tag nobody can tell: all 1152-frame packets are audio.
  EXPECT_EQ(lengthOf("b.mp3", {"-write_xing", "0"}) % 1152, 0);
}

TEST_F(FFmpegGapless, TakesPreSkipAndEndTrimmingOffOpus) {
  EXPECT_EQ(lengthOf("a.opus"), kFrames);
  EXPECT_EQ(lengthOf("b.opus", {"-frame_duration", "60"}), kFrames);
  EXPECT_EQ(lengthOf("c.mkv", {"-c:a", "libopus"}), kFrames);
  EXPECT_EQ(lengthOf("d.webm", {"-c:a", "libopus"}), kFrames);
}

TEST_F(FFmpegGapless, EndsVorbisAtItsLastGranule) {
  EXPECT_EQ(lengthOf("a.ogg", {"-c:a", "libvorbis"}), kFrames);
}

TEST_F(FFmpegGapless, KeepsTheLengthOfLosslessFiles) {
  EXPECT_EQ(lengthOf("a.flac"), kFrames);
  EXPECT_EQ(lengthOf("b.m4a", {"-c:a", "alac"}), kFrames);
  EXPECT_EQ(lengthOf("c.caf", {"-c:a", "alac"}), kFrames);
  EXPECT_EQ(lengthOf("d.wv"), kFrames);
  EXPECT_EQ(lengthOf("e.tta"), kFrames);
}

TEST_F(FFmpegGapless, TakesTheEditListOffAAC) {
  // The edit list hides the priming of 1024 frames; ADTS has none and shows it.
  const std::int64_t inM4A = lengthOf("a.m4a");
  const std::int64_t inADTS = lengthOf("b.aac", {"-c:a", "aac"});
  EXPECT_EQ(inADTS - inM4A, 1024);
  EXPECT_EQ(inADTS % 1024, 0);
}

TEST_F(FFmpegGapless, ReadsTheSameInBuffersOfAnySize) {
  const auto file = test::encodeNoise(folder_, "a.mp3");
  const auto expected = test::readWholeFile(file).samples;
  EXPECT_EQ(test::readWholeFile(file, {}, 1000).samples, expected);
  EXPECT_EQ(test::readWholeFile(file, {}, 1 << 20).samples, expected);
}

TEST_F(FFmpegGapless, ReadsTheSameOnSeveralThreads) {
  for (const char* name : {"a.flac", "a.mp3", "a.m4a", "a.opus"}) {
    const auto file = test::encodeNoise(folder_, name);
    AudioFileOpenOptions options;
    options.threadCount = 4;
    EXPECT_EQ(test::readWholeFile(file, options).samples, test::readWholeFile(file).samples)
        << name;
  }
}

TEST_F(FFmpegGapless, ReadsChainedVorbisAsOneProgramme) {
  const auto link = test::encodeNoise(folder_, "a.ogg", {}, kSeconds);
  const auto chain = join("chain.ogg", link, link);
  const auto found = test::readWholeFile(chain);
  EXPECT_EQ(found.samples, test::decodeWithFFmpeg(chain));
  EXPECT_GE(found.frames(), 2 * kFrames);
  EXPECT_FALSE(found.hasWarning(AudioFileWarning::Code::damagedAudio));
}

/// Every link begins anew, with a pre-skip of its own; the ffmpeg program decodes through the join.
TEST_F(FFmpegGapless, ReadsEveryLinkOfChainedOpusAsIfAlone) {
  const auto first = test::encodeNoise(folder_, "a.opus", {}, kSeconds);
  const auto second = test::encodeNoise(folder_, "b.opus", {"-frame_duration", "60"}, 0.7);
  // Links of the same file share their serial number, those of two files do not.
  for (const auto& next : {first, second}) {
    const auto found = test::readWholeFile(join("chain.opus", first, next));
    auto expected = test::readWholeFile(first).samples;
    const auto rest = test::readWholeFile(next).samples;
    expected.insert(expected.end(), rest.begin(), rest.end());
    EXPECT_EQ(found.samples, expected);
    EXPECT_EQ(found.promisedFrames, found.frames());
    EXPECT_TRUE(found.description.warnings.empty());
  }
}

TEST_F(FFmpegGapless, RefusesARateThatChangesInMidStream) {
  const auto file = join("a.mp3", test::encodeNoise(folder_, "low.mp3", {"-ar", "22050"}),
                         test::encodeNoise(folder_, "high.mp3"));
  try {
    test::readWholeFile(file);
    FAIL() << "the change went unnoticed";
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.message(), "The audio format changes in mid-stream");
  }
}

TEST_F(FFmpegGapless, RefusesAChannelCountThatChangesInMidStream) {
  const auto file =
      join("a.ac3", test::encodeNoise(folder_, "two.ac3", {"-ac", "2"}),
           test::encodeNoise(folder_, "six.ac3", {"-af", "aformat=channel_layouts=5.1"}));
  try {
    test::readWholeFile(file);
    FAIL() << "the change went unnoticed";
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.message(), "The audio format changes in mid-stream");
  }
}

}  // namespace
}  // namespace orvane
