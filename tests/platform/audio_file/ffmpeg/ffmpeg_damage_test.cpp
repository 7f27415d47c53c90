#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>

#include "orvane/platform/error.h"
#include "tests/platform/audio_file/ffmpeg/compressed_files.h"
#include "tests/support/in_child.h"
#include "tests/support/random.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using test::Arguments;
using Code = AudioFileWarning::Code;

/// Files that lie, break off or are scratched.
class FFmpegDamage : public testing::Test {
 protected:
  std::string encode(const std::string& name, const Arguments& arguments = {},
                     double seconds = 1.2345) {
    return test::readFile(test::encodeNoise(folder_, name, arguments, seconds));
  }

  std::filesystem::path write(const std::string& bytes) {
    return test::writeFile(folder_ / "damaged.bin", bytes);
  }

  /// Reads the file to its end or to its error, whose text must be there. Gives the frames read.
  std::int64_t survive(const std::string& bytes) {
    const auto file = write(bytes);
    describeAudioFile(file);
    try {
      return test::readWholeFile(file).frames();
    } catch (const Error& error) {
      EXPECT_FALSE(error.errorDescription().empty());
      return 0;
    }
  }

  test::TemporaryDirectory folder_;
};

void putBigEndian32(std::string& bytes, std::size_t at, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>(value >> (24 - 8 * i));
}

void putLittleEndian(std::string& bytes, std::size_t at, std::uint32_t value, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) bytes[at + i] = static_cast<char>(value >> (8 * i));
}

std::size_t find(const std::string& bytes, const std::string& what) {
  const std::size_t at = bytes.find(what);
  if (at == std::string::npos) throw std::runtime_error("no " + what + " in the file");
  return at;
}

TEST_F(FFmpegDamage, MeasuresTruncatedFilesAsFarAsTheyGoAndSaysSo) {
  const struct {
    const char* name;
    Arguments arguments;
  } files[] = {{"a.flac", {}},
               {"a.mp3", {}},
               {"a.aac", {}},
               {"a.m4a", {"-movflags", "+faststart"}},
               {"b.m4a", {"-c:a", "alac", "-movflags", "+faststart"}},
               {"a.wv", {}},
               {"a.wav", {"-c:a", "adpcm_ms"}},
               {"b.wav", {"-c:a", "pcm_mulaw"}},
               {"c.wav", {"-c:a", "libmp3lame"}},
               {"a.au", {"-c:a", "pcm_alaw"}},
               {"a.aiff", {"-c:a", "adpcm_ima_qt"}},
               {"a.caf", {"-c:a", "adpcm_ima_qt"}}};
  for (const auto& [name, arguments] : files) {
    const std::string whole = encode(name, arguments, 4);
    const auto expected = test::readWholeFile(write(whole)).samples;
    for (const double share : {0.3, 0.5, 0.71, 0.93}) {
      const auto cut = static_cast<std::size_t>(static_cast<double>(whole.size()) * share);
      const auto found = test::readWholeFile(write(whole.substr(0, cut)));
      EXPECT_GT(found.samples.size(), 0U) << name << share;
      EXPECT_LT(found.samples.size(), expected.size()) << name << share;
      EXPECT_LE(found.frames(), found.promisedFrames) << name << share;
      // All but the last packet is what it was. A tag's padding belongs to the missing end.
      const std::size_t sure =
          found.samples.size() - std::min<std::size_t>(found.samples.size(), 8192);
      EXPECT_TRUE(std::equal(found.samples.begin(),
                             found.samples.begin() + static_cast<std::ptrdiff_t>(sure),
                             expected.begin()))
          << name << share;
      EXPECT_TRUE(found.hasWarning(Code::truncatedAudio)) << name << share;
      EXPECT_FALSE(found.hasWarning(Code::damagedAudio)) << name << share;
    }
  }
}

TEST_F(FFmpegDamage, NamesAFileThatLacksItsIndex) {
  const std::string whole = encode("a.m4a");
  const auto file = write(whole.substr(0, whole.size() / 2));
  EXPECT_EQ(test::openingError(file), "The file is damaged or incomplete");
}

TEST_F(FFmpegDamage, SkipsCorruptPacketsWithAWarning) {
  for (const char* name : {"a.mp3", "a.flac", "a.aac", "a.ac3"}) {
    std::string bytes = encode(name, {}, 4);
    test::Random random(5);
    for (std::size_t i = bytes.size() / 2; i < bytes.size() / 2 + 6000; ++i)
      bytes[i] = static_cast<char>(random.next());
    const auto file = write(bytes);
    const auto found = test::readWholeFile(file);
    EXPECT_EQ(found.samples.size(), test::decodeWithFFmpeg(file).size()) << name;
    EXPECT_GT(found.frames(), 2 * 48000) << name;
    EXPECT_TRUE(found.hasWarning(Code::damagedAudio)) << name;
  }
}

TEST_F(FFmpegDamage, RefusesAFileOfWhichNothingDecodes) {
  std::string bytes = encode("a.m4a", {"-movflags", "+faststart"});
  const std::size_t audio = find(bytes, "mdat") + 4;
  std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(audio), bytes.end(), '\xFF');
  EXPECT_EQ(test::openingError(write(bytes)), "None of its audio can be decoded");
}

TEST_F(FFmpegDamage, GivesNoFramesForAFileWithoutAudio) {
  const auto file = test::encodeNoise(folder_, "a.flac", {"-frames:a", "0"});
  const auto found = test::readWholeFile(file);
  EXPECT_EQ(found.promisedFrames, 0);
  EXPECT_EQ(found.frames(), 0);
}

TEST_F(FFmpegDamage, SurvivesEveryTruncation) {
  for (const char* name :
       {"a.flac", "a.mp3", "a.m4a", "a.opus", "a.ogg", "a.wv", "a.mkv", "a.ts", "a.ac3", "a.wma"}) {
    const std::string whole = encode(name, {}, 0.5);
    const std::int64_t length = survive(whole);
    for (std::size_t cut = 0; cut < whole.size(); cut += cut < 200 ? 7 : whole.size() / 25 + 1)
      EXPECT_LE(survive(whole.substr(0, cut)), length + 4096) << name << cut;
  }
}

TEST_F(FFmpegDamage, SurvivesFlippedBits) {
  constexpr int kVariants = 40;
  constexpr auto kLongest = std::chrono::seconds(20);
  test::Random random(20251121);
  const auto start = std::chrono::steady_clock::now();
  std::chrono::steady_clock::duration longest{};
  for (const char* name : {"a.flac", "a.mp3", "a.m4a", "a.opus", "a.ogg", "a.wv", "a.tta", "a.mkv",
                           "a.ts", "a.ac3", "a.wma", "a.avi", "a.mov", "a.flv"}) {
    const Arguments rate =
        std::string_view(name) == "a.flv" ? Arguments{"-ar", "44100"} : Arguments{};
    const std::string whole = encode(name, rate, 0.5);
    for (int variant = 0; variant < kVariants; ++variant) {
      std::string bytes = whole;
      // Half of them in the header, where they hurt most.
      const std::uint64_t range =
          variant % 2 == 0 ? bytes.size() : std::min<std::uint64_t>(bytes.size(), 1500);
      const std::uint64_t flips = 1 + random.below(variant % 3 == 0 ? 40 : 3);
      for (std::uint64_t i = 0; i < flips; ++i)
        bytes[random.below(range)] ^= static_cast<char>(1U << random.below(8));
      const auto before = std::chrono::steady_clock::now();
      survive(bytes);
      longest = std::max(longest, std::chrono::steady_clock::now() - before);
    }
  }
  EXPECT_LT(longest, kLongest);
  RecordProperty("seconds", static_cast<int>(std::chrono::duration_cast<std::chrono::seconds>(
                                                 std::chrono::steady_clock::now() - start)
                                                 .count()));
}

/// Header fields of a compressed WAVE file that disagree with each other.
TEST_F(FFmpegDamage, SurvivesImpossibleBlockSizes) {
  for (const Arguments& codec :
       {Arguments{"-c:a", "adpcm_ms"}, Arguments{"-c:a", "adpcm_ima_wav"},
        Arguments{"-c:a", "libgsm_ms", "-ar", "8000"}, Arguments{"-c:a", "adpcm_yamaha"}}) {
    const std::string whole = encode("a.wav", codec, 0.3);
    const std::size_t format = find(whole, "fmt ") + 8;
    for (const std::uint32_t channels : {0U, 1U, 2U, 3U, 255U, 65535U})
      for (const std::uint32_t blockAlign : {0U, 1U, 5U, 256U, 65535U})
        for (const std::uint32_t samplesPerBlock : {0U, 1U, 65535U}) {
          std::string bytes = whole;
          putLittleEndian(bytes, format + 2, channels, 2);
          putLittleEndian(bytes, format + 12, blockAlign, 2);
          putLittleEndian(bytes, format + 18, samplesPerBlock, 2);
          survive(bytes);
        }
    for (const std::uint32_t rate : {0U, 1U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
      std::string bytes = whole;
      putLittleEndian(bytes, format + 4, rate, 4);
      survive(bytes);
    }
  }
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
  const std::size_t tag =
      bytes.find("Xing") != std::string::npos ? find(bytes, "Xing") : find(bytes, "Info");
  putBigEndian32(bytes, tag + 8, 0xFFFFFFF0);  // frames
  const auto found = test::readWholeFile(write(bytes));
  EXPECT_NEAR(static_cast<double>(found.promisedFrames), static_cast<double>(length), 2 * 1152);
  EXPECT_EQ(found.frames(), found.promisedFrames);
}

/// An index of twenty million samples in a file of twenty kilobytes.
TEST_F(FFmpegDamage, TakesNoMemoryForWhatIsNotThere) {
  constexpr std::uint32_t kClaimed = 20'000'000;
  std::string bytes = encode("a.m4a", {"-movflags", "+faststart"});
  const std::size_t sizes = find(bytes, "stsz");
  putBigEndian32(bytes, sizes + 8, 1);  // every sample one byte
  putBigEndian32(bytes, sizes + 12, kClaimed);
  putBigEndian32(bytes, find(bytes, "stsc") + 16, kClaimed);  // all in one chunk
  putBigEndian32(bytes, find(bytes, "stts") + 12, kClaimed);
  const auto file = write(bytes);
  const auto residentKiB = [] {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
  };
  const auto end = test::runInChild([&] {
    AudioFile::open(folder_ / "a.m4a");  // what FFmpeg itself takes
    const long before = residentKiB();
    test::openingError(file);
    describeAudioFile(file);
    return residentKiB() - before < 64 * 1024 ? 0 : 1;
  });
  EXPECT_EQ(end.exitCode, 0);
}

TEST_F(FFmpegDamage, SurvivesForgedSizes) {
  const struct {
    const char* name;
    std::vector<std::string> fields;  ///< atoms, chunks or tags whose following numbers are forged
  } files[] = {
      {"a.m4a", {"stsz", "stsc", "stts", "stco", "mdat", "moov", "esds", "elst", "mdhd", "ftyp"}},
      {"b.mp4", {"stsz", "stsc", "stts", "stco", "mdat", "moov", "esds", "elst", "mdhd", "ftyp"}},
      {"a.caf", {"desc", "pakt", "data", "kuki", "chan"}},
      {"a.wav", {"RIFF", "fmt ", "fact", "data"}},
      {"a.aiff", {"FORM", "COMM", "SSND", "FVER"}},
      {"a.avi", {"RIFF", "avih", "strh", "strf", "movi", "idx1"}},
      {"a.ogg", {"OggS", "vorbis"}},
      {"a.wv", {"wvpk"}},
      {"a.tta", {"TTA1"}},
  };
  for (const auto& [name, fields] : files) {
    const std::string_view ending = std::string_view(name).substr(2);
    const Arguments codec = ending == "caf"    ? Arguments{"-c:a", "alac"}
                            : ending == "wav"  ? Arguments{"-c:a", "adpcm_ms"}
                            : ending == "aiff" ? Arguments{"-c:a", "adpcm_ima_qt"}
                                               : Arguments{};
    const std::string whole = encode(name, codec, 0.4);
    for (const std::string& field : fields) {
      const std::size_t at = whole.find(field);
      if (at == std::string::npos) continue;
      for (const std::uint32_t lie : {0U, 1U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFEU, 0xFFFFFFFFU})
        for (const std::ptrdiff_t offset : {-4, 4, 8, 12, 16, 20}) {
          const auto place = static_cast<std::ptrdiff_t>(at) + offset;
          if (place < 0 || static_cast<std::size_t>(place) + 4 > whole.size()) continue;
          std::string bytes = whole;
          putBigEndian32(bytes, static_cast<std::size_t>(place), lie);
          survive(bytes);
        }
    }
  }
}

}  // namespace
}  // namespace orvane
