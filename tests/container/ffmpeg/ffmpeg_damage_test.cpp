// What damaged compressed files still give, and what is said about them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string>

#include "tests/container/ffmpeg/damaged_files.h"
#include "tests/support/in_child.h"
#include "tests/support/random.h"

namespace orvane {
namespace {

using test::Arguments;
using Code = AudioFileWarning::Code;

class FFmpegDamage : public test::DamagedFiles {};

struct CutFormat {
  std::string file;
  Arguments arguments{};
  double rounding = 0;  ///< of the whole file's decoder, where the cut one has another
};

std::ostream& operator<<(std::ostream& out, const CutFormat& format) {
  return out << format.file;
}

class FFmpegCut : public test::DamagedFiles, public testing::WithParamInterface<CutFormat> {};

TEST_P(FFmpegCut, IsMeasuredAsFarAsItGoesAndSaysSo) {
  const std::string whole = encode(GetParam().file, GetParam().arguments, 4);
  const auto expected = test::readWholeFile(write(whole)).samples;
  for (const double share : {0.3, 0.5, 0.71, 0.93}) {
    SCOPED_TRACE(share);
    const auto cut = static_cast<std::size_t>(static_cast<double>(whole.size()) * share);
    const auto found = test::readWholeFile(write(whole.substr(0, cut)));
    EXPECT_GT(found.samples.size(), 0U);
    EXPECT_LT(found.samples.size(), expected.size());
    EXPECT_LE(found.frames(), found.promisedFrames);
    // All but the last packet is what it was. A tag's padding belongs to the missing end.
    const std::size_t sure =
        found.samples.size() - std::min<std::size_t>(found.samples.size(), 8192);
    const auto start = [&](const std::vector<float>& samples) {
      return std::vector(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(sure));
    };
    EXPECT_LE(test::largestDifference(start(found.samples), start(expected)), GetParam().rounding);
    EXPECT_TRUE(found.hasWarning(Code::truncatedAudio));
    EXPECT_FALSE(found.hasWarning(Code::damagedAudio));
  }
}

INSTANTIATE_TEST_SUITE_P(
    OfEveryKind, FFmpegCut,
    testing::Values(CutFormat{"a.flac"}, CutFormat{"a.mp3", {}, 2e-6}, CutFormat{"a.aac"},
                    CutFormat{"a.m4a", {"-movflags", "+faststart"}},
                    CutFormat{"alac.m4a", {"-c:a", "alac", "-movflags", "+faststart"}},
                    CutFormat{"a.wv"}, CutFormat{"adpcm.wav", {"-c:a", "adpcm_ms"}},
                    CutFormat{"ulaw.wav", {"-c:a", "pcm_mulaw"}},
                    CutFormat{"mp3.wav", {"-c:a", "libmp3lame"}},
                    CutFormat{"alaw.au", {"-c:a", "pcm_alaw"}},
                    CutFormat{"ima.aiff", {"-c:a", "adpcm_ima_qt"}},
                    CutFormat{"ima.caf", {"-c:a", "adpcm_ima_qt"}}),
    [](const auto& tested) { return test::wordOf(tested.param.file); });

TEST_F(FFmpegDamage, NamesAFileThatLacksItsIndex) {
  const std::string whole = encode("a.m4a");
  const auto file = write(whole.substr(0, whole.size() / 2));
  EXPECT_EQ(test::openingError(file), "The file is damaged or incomplete");
}

TEST_F(FFmpegDamage, SkipsCorruptPacketsWithAWarning) {
  // A block of FLAC with a wrong checksum is left out, which FFmpeg does not look at.
  const std::string flac = "a.flac";
  for (const std::string& name :
       {std::string("a.mp3"), flac, std::string("a.aac"), std::string("a.ac3")}) {
    std::string bytes = encode(name, {}, 4);
    test::Random random(5);
    for (std::size_t i = bytes.size() / 2; i < bytes.size() / 2 + 6000; ++i)
      bytes[i] = static_cast<char>(random.next());
    const auto file = write(bytes);
    const auto found = test::readWholeFile(file);
    const auto byFFmpeg = test::decodeWithFFmpeg(file).size();
    EXPECT_LE(found.samples.size(), byFFmpeg) << name;
    EXPECT_TRUE(found.samples.size() == byFFmpeg || name == flac) << name;
    EXPECT_GT(found.frames(), 2 * 48000) << name;
    EXPECT_TRUE(found.hasWarning(Code::damagedAudio)) << name;
  }
}

TEST_F(FFmpegDamage, RefusesAFileOfWhichNothingDecodes) {
  std::string bytes = encode("a.m4a", {"-movflags", "+faststart"});
  const std::size_t audio = test::placeOf(bytes, "mdat") + 4;
  std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(audio), bytes.end(), '\xFF');
  EXPECT_EQ(test::openingError(write(bytes)), "None of its audio can be decoded");
}

TEST_F(FFmpegDamage, GivesNoFramesForAFileWithoutAudio) {
  const auto file = test::encodeNoise(folder_, "a.flac", {"-frames:a", "0"});
  const auto found = test::readWholeFile(file);
  EXPECT_EQ(found.promisedFrames, 0);
  EXPECT_EQ(found.frames(), 0);
}

TEST_F(FFmpegDamage, CountsTheFLACFramesThatAreThere) {
  std::string bytes = encode("a.flac");
  const std::int64_t length = test::readWholeFile(write(bytes)).frames();
  // STREAMINFO's 36-bit total, behind the signature, the block header and 13 bytes.
  const std::size_t total = 4 + 4 + 13;
  for (const bool claimsMost : {false, true}) {
    const char fill = claimsMost ? '\xFF' : '\0';
    bytes[total] = static_cast<char>((bytes[total] & 0xF0) | (fill & 0x0F));
    for (std::size_t i = 1; i < 5; ++i) bytes[total + i] = fill;
    const auto found = test::readWholeFile(write(bytes));
    EXPECT_EQ(found.promisedFrames, length);
    EXPECT_EQ(found.frames(), length);
    EXPECT_EQ(found.hasWarning(Code::truncatedAudio), claimsMost);
  }
}

TEST_F(FFmpegDamage, CountsTheMP3FramesThatAreThere) {
  std::string bytes = encode("a.mp3");
  const std::int64_t length = test::readWholeFile(write(bytes)).frames();
  const std::size_t tag = bytes.find("Xing") != std::string::npos ? test::placeOf(bytes, "Xing")
                                                                  : test::placeOf(bytes, "Info");
  test::putBigEndian32(bytes, tag + 8, 0xFFFFFFF0);  // frames
  const auto found = test::readWholeFile(write(bytes));
  EXPECT_NEAR(static_cast<double>(found.promisedFrames), static_cast<double>(length), 2 * 1152);
  EXPECT_EQ(found.frames(), found.promisedFrames);
}

/// An index of twenty million samples in a file of twenty kilobytes.
TEST_F(FFmpegDamage, TakesNoMemoryForWhatIsNotThere) {
  constexpr std::uint32_t kClaimed = 20'000'000;
  std::string bytes = encode("a.m4a", {"-movflags", "+faststart"});
  const std::size_t sizes = test::placeOf(bytes, "stsz");
  test::putBigEndian32(bytes, sizes + 8, 1);  // every sample one byte
  test::putBigEndian32(bytes, sizes + 12, kClaimed);
  test::putBigEndian32(bytes, test::placeOf(bytes, "stsc") + 16, kClaimed);  // all in one chunk
  test::putBigEndian32(bytes, test::placeOf(bytes, "stts") + 12, kClaimed);
  const auto file = write(bytes);
  const auto end = test::runInChild([&] {
    AudioFile::open(folder_ / "a.m4a");  // what FFmpeg itself takes
    const long before = test::peakMemoryKiB();
    test::openingError(file);
    describeAudioFile(file);
    return test::peakMemoryKiB() - before < 64 * 1024 ? 0 : 1;
  });
  EXPECT_EQ(end.exitCode, 0);
}

}  // namespace
}  // namespace orvane
