#include <gtest/gtest.h>

#include <initializer_list>
#include <stdexcept>
#include <string>
#include <utility>

#include "tests/container/ffmpeg/compressed_files.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

/// The AAC family differs in the few bytes of its configuration alone, which no encoder here writes
/// in all its forms: they are written over those of a plain file.
class FFmpegCodes : public testing::Test {
 protected:
  /// A mono M4A of 24 kHz whose five configuration bytes are these.
  std::filesystem::path withConfiguration(std::initializer_list<unsigned char> configuration) {
    std::string bytes = test::readFile(
        test::encodeNoise(folder_, "plain.m4a", {"-ar", "24000", "-movflags", "+faststart"}));
    const std::string plain("\x13\x08\x56\xE5\x00", 5);
    const std::size_t at = bytes.find(plain, bytes.find("esds"));
    if (at == std::string::npos) throw std::runtime_error("no AAC configuration in the file");
    bytes.replace(at, plain.size(), std::string(configuration.begin(), configuration.end()));
    return test::writeFile(folder_ / "patched.m4a", bytes);
  }

  std::string codeWith(std::initializer_list<unsigned char> configuration) {
    const auto description = describeAudioFile(withConfiguration(configuration));
    return description ? test::textOf(description->dataFormat.formatID) : "absent";
  }

  test::TemporaryDirectory folder_;
};

TEST_F(FFmpegCodes, TellTheMembersOfTheAACFamilyApart) {
  // Object type 5 bits, rate index 4, channels 4; types from 32 on as 31 and 6 bits more.
  EXPECT_EQ(codeWith({0x13, 0x08, 0x56, 0xE5, 0x00}), "aac ");  // low complexity, no extension
  EXPECT_EQ(codeWith({0x13, 0x08, 0x56, 0xE5, 0x98}), "aach");  // with band replication behind it
  EXPECT_EQ(codeWith({0x2B, 0x09, 0x88, 0x00, 0x00}), "aach");  // type 5, extended to 48 kHz
  EXPECT_EQ(codeWith({0xEB, 0x09, 0x88, 0x00, 0x00}), "aacp");  // type 29
  EXPECT_EQ(codeWith({0xF3, 0x08, 0x00, 0x00, 0x00}), "aacs");  // type 30
  EXPECT_EQ(codeWith({0xBB, 0x08, 0x00, 0x00, 0x00}), "aacl");  // type 23
  EXPECT_EQ(codeWith({0xF8, 0xEC, 0x20, 0x00, 0x00}), "aace");  // type 39
  EXPECT_EQ(codeWith({0xF8, 0xEC, 0x21, 0x00, 0x00}), "aacf");  // with band replication
  EXPECT_EQ(codeWith({0xF9, 0x4C, 0x20, 0x00, 0x00}), "usac");  // type 42
}

TEST_F(FFmpegCodes, BandReplicationDoublesRateAndPacket) {
  const auto file = withConfiguration({0x13, 0x08, 0x56, 0xE5, 0x98});
  const auto found = test::readWholeFile(file);
  EXPECT_EQ(found.description.dataFormat.sampleRate, 48000);
  EXPECT_EQ(found.description.dataFormat.framesPerPacket, 2048U);
  EXPECT_EQ(found.promisedFrames, found.frames());
  // FFmpeg's program plays the padding of the last packet too.
  auto decoded = test::decodeWithFFmpeg(file);
  ASSERT_LE(found.samples.size(), decoded.size());
  EXPECT_LT(decoded.size() - found.samples.size(), 2048U);
  decoded.resize(found.samples.size());
  EXPECT_LE(test::largestDifference(found.samples, decoded), 1e-6);
}

TEST_F(FFmpegCodes, CodecsWithoutADecoderAreStillNamed) {
  const auto file = withConfiguration({0xF9, 0x4C, 0x20, 0x00, 0x00});
  const auto description = describeAudioFile(file);
  ASSERT_TRUE(description);
  EXPECT_EQ(test::textOf(description->fileTypeID), "m4af");
  EXPECT_EQ(test::textOf(description->dataFormat.formatID), "usac");
  EXPECT_EQ(test::openingError(file), "There is no decoder for this variant of its codec, aac");
}

TEST_F(FFmpegCodes, ADPCMOfVoiceSystemsIsNotTakenForAMR) {
  std::string bytes = test::readFile(test::encodeNoise(folder_, "a.wav", {"-c:a", "pcm_mulaw"}));
  const std::size_t format = bytes.find("fmt ") + 8;
  bytes[format] = 0x38;
  bytes[format + 12] = 42;  // bytes of a block
  bytes[format + 14] = 2;   // bits of a sample
  const auto file = test::writeFile(folder_ / "voice.wav", bytes);
  const auto description = describeAudioFile(file);
  ASSERT_TRUE(description);
  EXPECT_EQ(test::textOf(description->dataFormat.formatID), "nms ");
  EXPECT_EQ(test::openingError(file), "There is no decoder for its codec");
}

/// Behind more padding than the sniffer looks at FFmpeg still finds the stream.
TEST_F(FFmpegCodes, StreamsFoundByProbingAloneHaveTheUsualCodes) {
  for (const auto& [name, container] : {std::pair{"a.mp3", "MPG3"}, {"a.mp2", "MPG2"}}) {
    const std::string stream =
        test::readFile(test::encodeNoise(folder_, name, {"-id3v2_version", "0"}, 2));
    const auto file = test::writeFile(folder_ / "padded.bin", std::string(20'000, '\0') + stream);
    const auto description = describeAudioFile(file);
    ASSERT_TRUE(description) << name;
    EXPECT_EQ(test::textOf(description->fileTypeID), container);
  }
}

TEST_F(FFmpegCodes, PacketsHaveTheirShape) {
  const struct {
    const char* name;
    test::Arguments arguments;
    std::uint32_t frames;
    std::uint32_t bytes;
  } files[] = {
      {"a.mp3", {}, 1152, 0},
      {"b.mp3", {"-ar", "22050"}, 576, 0},
      {"a.m4a", {}, 1024, 0},
      {"a.ac3", {}, 1536, 0},
      {"b.m4a", {"-c:a", "alac"}, 4096, 0},
      {"a.aiff", {"-c:a", "adpcm_ima_qt", "-ac", "2"}, 64, 68},
      {"a.wav", {"-c:a", "libgsm_ms", "-ar", "8000"}, 320, 65},
      {"b.wav", {"-c:a", "pcm_mulaw", "-ac", "2"}, 1, 2},
      {"a.ogg", {}, 0, 0},
      {"a.mov", {"-c:a", "pcm_s24be", "-ac", "2"}, 1, 6},
  };
  for (const auto& [name, arguments, frames, bytes] : files) {
    const auto description = describeAudioFile(test::encodeNoise(folder_, name, arguments));
    ASSERT_TRUE(description) << name;
    EXPECT_EQ(description->dataFormat.framesPerPacket, frames) << name;
    EXPECT_EQ(description->dataFormat.bytesPerPacket, bytes) << name;
  }
}

TEST_F(FFmpegCodes, LinearPCMInVideoContainersIsDescribedInFull) {
  const struct {
    const char* codec;
    std::uint32_t bits;
    std::uint32_t flags;
  } forms[] = {
      {"pcm_s16le", 16, kFormatFlagIsSignedInteger | kFormatFlagIsPacked},
      {"pcm_s24be", 24, kFormatFlagIsSignedInteger | kFormatFlagIsPacked | kFormatFlagIsBigEndian},
      {"pcm_f32le", 32, kFormatFlagIsFloat | kFormatFlagIsPacked},
      {"pcm_f64be", 64, kFormatFlagIsFloat | kFormatFlagIsPacked | kFormatFlagIsBigEndian},
  };
  for (const auto& [codec, bits, flags] : forms) {
    const auto description =
        describeAudioFile(test::encodeNoise(folder_, "a.mov", {"-c:a", codec, "-ac", "2"}));
    ASSERT_TRUE(description) << codec;
    EXPECT_EQ(description->dataFormat.formatID, kFormatLinearPCM) << codec;
    EXPECT_EQ(description->dataFormat.bitsPerChannel, bits) << codec;
    EXPECT_EQ(description->dataFormat.formatFlags, flags) << codec;
    EXPECT_EQ(description->dataFormat.bytesPerFrame, bits / 4) << codec;
  }
}

}  // namespace
}  // namespace orvane
