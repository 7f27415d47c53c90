#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/container/ffmpeg/damaged_files.h"
#include "tests/container/modules_beside_ffmpeg.h"
#include "tests/support/random.h"
#include "tests/support/tool_runner.h"

namespace orvane {
namespace {

using enum ChannelLabel;
using Code = AudioFileWarning::Code;
using Labels = std::vector<ChannelLabel>;
using test::Arguments;

class FLACFile : public test::DamagedFiles {
 protected:
  /// Noise of that many bits and channels, coded by the reference encoder without saying for which
  /// loudspeakers.
  std::filesystem::path encodeByReference(int bits, int channels, const Arguments& arguments = {}) {
    const std::string form = bits == 8 ? "s8" : "s" + std::to_string(bits) + "le";
    const auto raw = test::encodeNoise(
        folder_, "a.raw", {"-ac", std::to_string(channels), "-f", form, "-c:a", "pcm_" + form});
    const auto file = folder_ / "a.flac";
    Arguments words = {"-s",
                       "-f",
                       "--force-raw-format",
                       "--endian=little",
                       "--sign=signed",
                       "--sample-rate=48000",
                       "--bps=" + std::to_string(bits),
                       "--channels=" + std::to_string(channels),
                       "-o",
                       file.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    words.push_back(raw.string());
    test::runTool("flac", words);
    return file;
  }

  /// The place of the n-th block: of the n-th frame header that stands behind the metadata.
  static std::size_t placeOfBlock(const std::string& bytes, int n) {
    for (std::size_t at = bytes.find("\xFF\xF8", 42); at != std::string::npos;
         at = bytes.find("\xFF\xF8", at + 1))
      // A block of a fixed size, of stereo or mono, whose number is one byte.
      if (bytes[at + 4] == static_cast<char>(n) && (bytes[at + 2] & 0xF) == 0xA) return at;
    throw std::runtime_error("no such block");
  }
};

TEST_F(FLACFile, GivesTheSamplesThatFFmpegGives) {
  for (const int bits : {8, 16, 24})
    for (const int channels : {1, 2, 3, 8}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, " << channels << " channels");
      const auto file = encodeByReference(bits, channels);
      const auto found = test::readWholeFile(file, {}, 1000);
      EXPECT_EQ(found.samples, test::decodeWithFFmpeg(file));
      EXPECT_EQ(found.promisedFrames, found.frames());
      EXPECT_THAT(found.description.warnings, testing::IsEmpty());
      EXPECT_EQ(found.description.fileTypeID, fourCCFrom("flac"));
      EXPECT_EQ(found.description.dataFormat.formatID, fourCCFrom("flac"));
      EXPECT_EQ(found.description.sourceBitDepth, bits);
    }
}

TEST_F(FLACFile, GivesTheSamplesOfAnotherEncoder) {
  const auto file = test::encodeNoise(folder_, "a.flac",
                                      {"-c:a", "flac", "-sample_fmt", "s32", "-ar", "96000",
                                       "-compression_level", "12", "-strict", "-2"});
  const auto found = test::readWholeFile(file);
  EXPECT_EQ(found.samples, test::decodeWithFFmpeg(file));
  EXPECT_EQ(found.description.dataFormat.sampleRate, 96000);
  EXPECT_EQ(found.description.sourceBitDepth, 24);
}

TEST_F(FLACFile, OrdersChannelsByTheirNumberOrTheStatedMask) {
  const Labels byCount[] = {
      {center},
      {left, right},
      {left, right, center},
      {left, right, leftSurround, rightSurround},
      {left, right, center, leftSurround, rightSurround},
      {left, right, center, lfe, leftSurround, rightSurround},
      {left, right, center, lfe, centerSurround, leftSurround, rightSurround},
      {left, right, center, lfe, rearSurroundLeft, rearSurroundRight, leftSurround, rightSurround}};
  for (int channels = 1; channels <= 8; ++channels) {
    const auto file = encodeByReference(16, channels);
    ASSERT_TRUE(describeAudioFile(file)->layout);
    EXPECT_EQ(describeAudioFile(file)->layout->labels, byCount[channels - 1]);
  }
  const auto masked = encodeByReference(16, 3, {"-T", "WAVEFORMATEXTENSIBLE_CHANNEL_MASK=0x000B"});
  EXPECT_EQ(describeAudioFile(masked)->layout->labels, (Labels{left, right, lfe}));
  for (const char* mask : {"0x1", "none", "", "0"}) {
    const auto odd =
        encodeByReference(16, 3, {"-T", std::string("waveformatextensible_channel_mask=") + mask});
    EXPECT_EQ(describeAudioFile(odd)->layout->labels, byCount[2]) << mask;
  }
}

TEST_F(FLACFile, IsReadWithoutFFmpeg) {
  test::expectReadWithoutFFmpeg(encodeByReference(16, 2), "libFLAC");
}

TEST_F(FLACFile, HasTheTagsAndChaptersThatFFmpegFinds) {
  test::expectSongInTwoHalves(encodeByReference(
      16, 2,
      {"-T", "TITLE=A song", "-T", "CHAPTER001=00:00:00.500", "-T", "CHAPTER001NAME=Second half"}));
}

TEST_F(FLACFile, CountsWhatNoHeaderStates) {
  std::string bytes = test::readFile(encodeByReference(16, 2));
  const auto whole = test::readWholeFile(folder_ / "a.flac");
  for (std::size_t i = 22; i < 26; ++i) bytes[i] = 0;  // the low 32 bits of the number of frames
  const auto unstated = test::readWholeFile(write(bytes));
  EXPECT_EQ(unstated.samples, whole.samples);
  EXPECT_EQ(unstated.promisedFrames, whole.frames());
  EXPECT_FALSE(AudioFile::open(folder_ / "damaged.bin")->expectedFrameLength());
  bytes[25] = 100;  // far too few
  EXPECT_EQ(test::readWholeFile(write(bytes)).samples, whole.samples);
  bytes[22] = 1;  // too many
  const auto missing = test::readWholeFile(write(bytes));
  EXPECT_EQ(missing.samples, whole.samples);
  EXPECT_TRUE(missing.hasWarning(Code::truncatedAudio));
}

TEST_F(FLACFile, LeavesDamagedBlocksOut) {
  const std::string bytes = test::readFile(encodeByReference(16, 2, {"-b", "4096"}));
  const auto whole = test::readWholeFile(folder_ / "a.flac").samples;
  const std::size_t block = placeOfBlock(bytes, 3), next = placeOfBlock(bytes, 4);
  constexpr std::size_t kBlockSamples = std::size_t{4096} * 2;
  auto without = whole;
  without.erase(without.begin() + 3 * kBlockSamples, without.begin() + 4 * kBlockSamples);

  std::string flipped = bytes;
  flipped[(block + next) / 2] ^= 4;
  std::string holed = bytes;
  holed.replace(block + 20, 64, 64, '\0');
  const std::string lost = std::string(bytes).erase(block + 100, 500);
  for (const std::string& damaged : {flipped, holed, lost}) {
    const auto found = test::readWholeFile(write(damaged));
    EXPECT_EQ(found.samples, without);
    EXPECT_EQ(found.promisedFrames, found.frames());
    EXPECT_TRUE(found.hasWarning(Code::damagedAudio));
    EXPECT_FALSE(found.hasWarning(Code::truncatedAudio));
  }
}

TEST_F(FLACFile, SaysWhereItBreaksOff) {
  std::string bytes = test::readFile(encodeByReference(16, 2, {"-b", "4096"}));
  const std::size_t block = placeOfBlock(bytes, 5);
  for (const bool isStated : {true, false}) {
    if (!isStated)
      for (std::size_t i = 22; i < 26; ++i) bytes[i] = 0;
    const auto cut = test::readWholeFile(write(bytes.substr(0, block + 100)));
    EXPECT_EQ(cut.frames(), 5 * 4096);
    EXPECT_EQ(cut.promisedFrames, cut.frames());
    EXPECT_TRUE(cut.hasWarning(Code::truncatedAudio));
    EXPECT_FALSE(cut.hasWarning(Code::damagedAudio));
  }
}

TEST_F(FLACFile, PassesOverWhatStandsBeforeAndBehindIt) {
  const std::string bytes = test::readFile(encodeByReference(16, 2));
  const auto whole = test::readWholeFile(folder_ / "a.flac");
  const std::string tag = std::string("ID3\x04\0\0\0\0\0\x0A", 10) + std::string(10, '\0');
  for (const std::string& padded :
       {tag + bytes, bytes + "TAG" + std::string(125, ' '), bytes + std::string(5000, '\0')}) {
    const auto found = test::readWholeFile(write(padded));
    EXPECT_EQ(found.samples, whole.samples);
    EXPECT_THAT(found.description.warnings, testing::IsEmpty());
    EXPECT_EQ(found.description.dataFormat, whole.description.dataFormat);
  }
}

TEST_F(FLACFile, GivesTheSameToTwoThreadsWhateverIsDamaged) {
  const std::string whole = encode("long.flac", {"-ac", "2"}, 30);
  const auto at = [&](double share) {
    return static_cast<std::size_t>(share * static_cast<double>(whole.size()));
  };
  std::vector<std::string> files = {whole, whole + whole, whole.substr(0, at(0.7)),
                                    std::string(whole).erase(at(0.3), 5000)};
  for (const double share : {0.1, 0.2, 0.4, 0.5, 0.6, 0.8, 0.97}) {
    files.push_back(whole);
    files.back()[at(share)] ^= 16;
    files.push_back(std::string(whole).replace(at(share), 2000, 2000, '\0'));
    files.push_back(std::string(whole).insert(at(share), whole, 0, 3000));
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    SCOPED_TRACE(i);
    const auto file = write(files[i]);
    const auto alone = test::readWholeFile(file, {.execution = {.threadCount = 1}}, 1U << 19);
    for (const std::uint32_t slice : {1U << 19, 30'000U}) {
      const auto shared = test::readWholeFile(file, {.execution = {.threadCount = 2}}, slice);
      EXPECT_EQ(shared.samples, alone.samples);
      EXPECT_EQ(shared.description, alone.description);
      EXPECT_EQ(shared.promisedFrames, alone.promisedFrames);
    }
    EXPECT_GT(alone.frames(), 100'000);
  }
}

TEST_F(FLACFile, RefusesAFormatThatChanges) {
  const std::string low = test::readFile(encodeByReference(16, 2));
  const std::string high =
      test::readFile(test::encodeNoise(folder_, "b.flac", {"-ar", "96000", "-ac", "2"}));
  EXPECT_THROW(test::readWholeFile(write(low + high)), PlatformError);
}

TEST_F(FLACFile, LeavesToFFmpegWhatLibFLACDoesNotKnow) {
  const std::string bytes = test::readFile(encodeByReference(16, 2));
  EXPECT_NE(test::openingError(write("fLaC" + std::string(2000, '\0'))), "");
  // Without a block of audio.
  EXPECT_NE(test::openingError(write(bytes.substr(0, 60))), "");
  EXPECT_THAT(test::openingError(folder_ / "a.flac", {.streamIndex = 1}),
              testing::StartsWith("There is no audio stream"));
}

}  // namespace
}  // namespace orvane
