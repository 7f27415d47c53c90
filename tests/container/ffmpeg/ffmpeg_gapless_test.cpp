#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "orvane/platform/error.h"
#include "tests/container/ffmpeg/compressed_files.h"
#include "tests/container/ffmpeg/damaged_files.h"
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

/// The edit list's end was left to whole packets of 1024 frames.
TEST_F(FFmpegGapless, EndsAACWhereItsEditListDoes) {
  for (const char* name : {"a.m4a", "b.mp4", "c.mov", "d.3gp"})
    EXPECT_EQ(lengthOf(name, {"-c:a", "aac"}), kFrames);
  // Another frame more than the movie's milliseconds can tell.
  const auto odd = test::encodeNoise(folder_, "e.m4a", {"-c:a", "aac"}, 60001.0 / 48000);
  EXPECT_EQ(test::readWholeFile(odd).frames(), 60001);
  // ADTS has no edit list and shows all.
  const std::int64_t inADTS = lengthOf("f.aac", {"-c:a", "aac"});
  EXPECT_EQ(inADTS % 1024, 0);
  EXPECT_GE(inADTS, kFrames + 1024);
}

/// What FFmpeg's program decodes of the file, between these frames.
std::vector<float> stretch(const std::filesystem::path& file, std::int64_t from, std::int64_t to) {
  const auto all = test::decodeWithFFmpeg(file);
  EXPECT_GE(static_cast<std::int64_t>(all.size()), to);
  return {all.begin() + from, all.begin() + to};
}

TEST_F(FFmpegGapless, EndsAACWhereITunesNotesIt) {
  constexpr std::int64_t kPriming = 1024;
  const auto file =
      test::encodeNoise(folder_, "a.m4a", {"-c:a", "aac", "-use_editlist", "0"}, kSeconds);
  std::string bytes = test::readFile(file);
  char note[64];
  std::snprintf(note, sizeof note, " 00000000 %08X %08X %016llX", static_cast<unsigned>(kPriming),
                416U, static_cast<unsigned long long>(kFrames));
  const auto atom = [](const std::string& id, const std::string& body) {
    std::string head(4, '\0');
    test::putBigEndian32(head, 0, static_cast<std::uint32_t>(8 + body.size()));
    return head + id + body;
  };
  const std::string zeros(4, '\0');
  const std::string entry =
      atom("----", atom("mean", zeros + "com.apple.iTunes") + atom("name", zeros + "iTunSMPB") +
                       atom("data", std::string("\0\0\0\1", 4) + zeros + note));
  // The list of tags ends with the file, and so do all the boxes around it.
  for (const char* id : {"moov", "udta", "meta", "ilst"}) {
    const std::size_t at = bytes.rfind(id) - 4;
    const auto size = static_cast<std::uint32_t>(bytes.size() - at + entry.size());
    test::putBigEndian32(bytes, at, size);
  }
  const auto noted = test::writeFile(folder_ / "noted.m4a", bytes + entry);
  EXPECT_EQ(test::readWholeFile(noted).frames(), kFrames);
}

/// The packet table of CAF was not heeded: priming and padding counted as audio.
TEST_F(FFmpegGapless, GivesTheValidFramesOfCAF) {
  for (const Arguments& arguments : {Arguments{"-c:a", "libmp3lame"}, Arguments{"-c:a", "alac"}}) {
    SCOPED_TRACE(arguments.back());
    const auto file = test::encodeNoise(folder_, "a.caf", arguments, kSeconds);
    const auto whole = static_cast<std::int64_t>(test::decodeWithFFmpeg(file).size());
    constexpr std::int64_t kPriming = 1105;
    const std::int64_t valid = whole - kPriming - 700;
    std::string bytes = test::readFile(file);
    const std::size_t table = test::placeOf(bytes, "pakt") + 12;
    test::putBigEndian32(bytes, table + 8, 0);
    test::putBigEndian32(bytes, table + 12, static_cast<std::uint32_t>(valid));
    test::putBigEndian32(bytes, table + 16, kPriming);
    test::putBigEndian32(bytes, table + 20, 700);
    const auto found = test::readWholeFile(test::writeFile(folder_ / "b.caf", bytes));
    EXPECT_EQ(found.promisedFrames, valid);
    EXPECT_EQ(found.frames(), valid);
    EXPECT_EQ(test::largestDifference(found.samples, stretch(file, kPriming, kPriming + valid)), 0);
    // A table that promises more than the packets hold is not believed.
    test::putBigEndian32(bytes, table + 16, 0x70000000);
    EXPECT_EQ(test::readWholeFile(test::writeFile(folder_ / "c.caf", bytes)).frames(), whole);
  }
}

TEST_F(FFmpegGapless, ReadsTheSameInBuffersOfAnySize) {
  const auto file = test::encodeNoise(folder_, "a.ogg");
  const auto expected = test::readWholeFile(file).samples;
  EXPECT_EQ(test::readWholeFile(file, {}, 1000).samples, expected);
  EXPECT_EQ(test::readWholeFile(file, {}, 1 << 20).samples, expected);
}

TEST_F(FFmpegGapless, ReadsTheSameOnSeveralThreads) {
  for (const char* name : {"a.flac", "a.mp3", "a.m4a", "a.opus"}) {
    const auto file = test::encodeNoise(folder_, name);
    AudioFileOpenOptions options;
    options.execution.threadCount = 4;
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
