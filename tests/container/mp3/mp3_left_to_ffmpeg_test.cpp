// What is not plain and sound is FFmpeg's, whose reader gives and says what it always did.
#include <gmock/gmock.h>

#include "tests/container/mp3/mp3_files.h"
#include "tests/support/tool_runner.h"

namespace orvane {
namespace {

constexpr std::size_t kPacketBytes = 384;  // of 128 kbit/s at 48 kHz

class MP3LeftToFFmpeg : public test::MP3Files {
 protected:
  /// Packets of one length, the first without a tag.
  std::string packets() {
    return encode("a.mp3", {"-b:a", "128k", "-write_xing", "0", "-id3v2_version", "0"});
  }

  /// With an encoder's tag, which begins the file.
  std::string tagged() { return encode("b.mp3", {"-b:a", "128k", "-id3v2_version", "0"}); }

  void expectLeft(const std::string& bytes) {
    const auto file = write(bytes);
    EXPECT_FALSE(isReadByModule(file));
    const auto found = test::readWholeFile(file);
    const auto expected = readByFFmpeg(file);
    EXPECT_EQ(found.samples, expected.samples);
    EXPECT_EQ(found.promisedFrames, expected.promisedFrames);
    EXPECT_EQ(found.description, expected.description);
    // Whichever of the two describes it, it is the same.
    EXPECT_EQ(describeAudioFile(file), describeByFFmpeg(file));
  }
};

TEST_F(MP3LeftToFFmpeg, BrokenChains) {
  const std::string sound = packets();
  ASSERT_TRUE(isReadByModule(write(sound)));
  const std::string other = encode("c.mp3", {"-b:a", "128k", "-ac", "2", "-write_xing", "0"});
  const std::size_t place = 20 * kPacketBytes;
  expectLeft(std::string(100, '\0') + sound);
  expectLeft(std::string(sound).insert(place, 1, '\0'));
  expectLeft(std::string(sound).insert(place, "junk between two frames"));
  expectLeft(std::string(sound).erase(place, 100));
  expectLeft(sound.substr(0, sound.size() - 1));
  expectLeft(sound + std::string(2000, '\0'));
  expectLeft(sound + "TAG" + std::string(100, ' '));
  expectLeft(sound + "TAG" + std::string(125, ' ') + sound);
}

TEST_F(MP3LeftToFFmpeg, DamagedSideInformation) {
  const std::string sound = packets();
  const std::size_t packet = 20 * kPacketBytes;
  for (const auto& [at, byte] : {std::pair{1, '\xFD'}, std::pair{2, '\0'}, std::pair{3, '\x44'}})
    expectLeft(std::string(sound).replace(packet + static_cast<std::size_t>(at), 1, 1, byte));
  // All its bits set, it tells of impossible blocks.
  expectLeft(std::string(sound).replace(packet + 4, 17, 17, '\xFF'));
  // More data than there are.
  expectLeft(std::string(sound).replace(packet + 4 + 2, 2, 2, '\xFF'));
}

TEST_F(MP3LeftToFFmpeg, StreamsThatBeginInTheMiddle) {
  const std::string sound =
      encode("a.mp3", {"-q:a", "2", "-write_xing", "0", "-id3v2_version", "0"}, 3);
  const auto whole = test::writeFile(folder_ / "whole.mp3", sound);
  const auto part = folder_ / "part.mp3";
  test::runTool("ffmpeg", {"-v", "error", "-ss", "1.1", "-i", whole.string(), "-c", "copy",
                           "-write_xing", "0", part.string()});
  expectLeft(test::readFile(part));
}

TEST_F(MP3LeftToFFmpeg, OddTags) {
  const std::string sound = tagged();
  ASSERT_TRUE(isReadByModule(write(sound)));
  const std::size_t tag = test::placeOf(sound, "Info");
  const auto with = [&](std::size_t at, std::uint32_t value) {
    std::string bytes = sound;
    test::putBigEndian32(bytes, tag + at, value);
    return bytes;
  };
  const auto right = static_cast<unsigned char>(sound[tag + 11]);
  for (const std::uint32_t count : {0U, 5U, right - 1U, right + 1U, 100'000U, 0xFFFFFFFFU})
    expectLeft(with(8, count));
  expectLeft(with(4, 0));   // nothing stated
  expectLeft(with(4, 14));  // all but the number of packets
  expectLeft(std::string(sound).insert(tag, "xx").erase(tag + 100, 2));
  expectLeft(std::string(sound).replace(tag, 4, "VBRI"));
  // As if the audio were nothing but priming and padding.
  const std::string brief = encode("c.mp3", {"-id3v2_version", "0"}, 0.15);
  const std::size_t delays = test::placeOf(brief, "Info") + 141;
  expectLeft(std::string(brief).replace(delays, 3, 3, '\xFF'));
}

TEST_F(MP3LeftToFFmpeg, OtherStreamsThanTheFirst) {
  const auto file = write(packets());
  EXPECT_THAT(test::openingError(file, {.streamIndex = 1}),
              testing::StartsWith("There is no audio stream"));
}

TEST_F(MP3LeftToFFmpeg, ForgedSizesOfTags) {
  const std::string sound = packets();
  const std::string huge("ID3\x04\0\0\x7F\x7F\x7F\x7F", 10);
  survive(huge + sound);
  std::string ape = "APETAGEX" + std::string(24, '\xFF');
  expectLeft(sound + ape);
  expectLeft(sound + "999999LYRICS200");
  expectLeft(sound + "ABCDEFLYRICS200");
}

}  // namespace
}  // namespace orvane
