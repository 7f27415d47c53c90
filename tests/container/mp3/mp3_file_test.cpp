#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "tests/container/modules_beside_ffmpeg.h"
#include "tests/container/mp3/mp3_files.h"
#include "tests/support/random.h"
#include "tests/support/signals.h"
#include "tests/support/tool_runner.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

using test::Arguments;
using test::largestDifference;

/// Both decoders round in 32 bits, in another order; of such noise the largest difference met
/// was 1.6e-6.
constexpr double kRounding = 2e-6;

class MP3File : public test::MP3Files {
 protected:
  /// What libmpg123 gives, beside what FFmpeg does.
  void expectAsByFFmpeg(const std::filesystem::path& file) {
    EXPECT_TRUE(isReadByModule(file));
    const auto found = test::readWholeFile(file, {}, 1000);
    const auto expected = readByFFmpeg(file);
    EXPECT_EQ(found.promisedFrames, expected.frames());
    EXPECT_LE(largestDifference(found.samples, expected.samples), kRounding);
    EXPECT_EQ(found.description, expected.description);
    EXPECT_EQ(describeAudioFile(file), describeByFFmpeg(file));
  }
};

TEST_F(MP3File, GivesTheLengthAndTheSamplesThatFFmpegGives) {
  // At 24 kHz FFmpeg takes another width for a band than encoders do, see below.
  for (const char* rate : {"8000", "11025", "12000", "16000", "22050", "32000", "44100", "48000"})
    for (const char* bits : {"8k", "64k", "320k"})
      for (const char* channels : {"1", "2"}) {
        SCOPED_TRACE(testing::Message() << rate << " Hz, " << bits << ", " << channels);
        expectAsByFFmpeg(test::encodeNoise(folder_, "a.mp3",
                                           {"-ar", rate, "-b:a", bits, "-ac", channels}, 0.777));
      }
}

TEST_F(MP3File, GivesThemWhateverTheEncoderIsAskedFor) {
  for (const Arguments& arguments :
       {Arguments{"-q:a", "0"}, Arguments{"-q:a", "9"}, Arguments{"-abr", "1", "-b:a", "112k"},
        Arguments{"-joint_stereo", "0"}, Arguments{"-reservoir", "0"},
        Arguments{"-write_xing", "0"}, Arguments{"-write_id3v1", "1"},
        Arguments{"-id3v2_version", "0"}, Arguments{"-c:a", "libshine", "-ar", "44100"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    Arguments words = arguments;
    words.insert(words.end(), {"-ac", "2", "-metadata", "title=A song"});
    expectAsByFFmpeg(test::encodeNoise(folder_, "a.mp3", words, 3));
  }
}

TEST_F(MP3File, HasTheLengthOfShortOnes) {
  for (const double seconds : {0.03, 0.05, 0.06, 0.08, 0.1, 0.12, 0.15})
    for (const char* tagged : {"0", "1"})
      for (const char* rate : {"48000", "16000"}) {
        SCOPED_TRACE(testing::Message() << seconds << " s, " << tagged << ", " << rate);
        const auto file =
            test::encodeNoise(folder_, "a.mp3", {"-write_xing", tagged, "-ar", rate}, seconds);
        const auto found = test::readWholeFile(file);
        const auto expected = readByFFmpeg(file);
        EXPECT_EQ(found.promisedFrames, expected.frames());
        EXPECT_LE(largestDifference(found.samples, expected.samples), kRounding);
      }
}

/// FFmpeg lets the eighteenth band end at line 330; encoders and other decoders at 332.
TEST_F(MP3File, GivesTheSamplesOfOthersAt24kHz) {
  const auto file = test::encodeNoise(
      folder_, "a.mp3", {"-ar", "24000", "-b:a", "160k", "-ac", "2", "-write_xing", "0"});
  const auto raw = folder_ / "a.f32";
  test::runTool("sox", {file.string(), "-t", "f32", raw.string()});
  const std::string bytes = test::readFile(raw);
  auto found = test::readWholeFile(file).samples;
  ASSERT_GT(bytes.size(), 10'000U);
  ASSERT_GE(found.size(), bytes.size() / sizeof(float));
  std::vector<float> expected(bytes.size() / sizeof(float));
  std::memcpy(expected.data(), bytes.data(), bytes.size());
  found.resize(expected.size());  // sox leaves the last packet out
  EXPECT_LE(largestDifference(found, expected), kRounding);
}

TEST_F(MP3File, IsReadWithoutFFmpeg) {
  test::expectReadWithoutFFmpeg(test::encodeNoise(folder_, "a.mp3"), "libmpg123");
}

TEST_F(MP3File, HasTheTagsAndChaptersThatFFmpegFinds) {
  const auto list = test::writeFile(folder_ / "list.txt",
                                    ";FFMETADATA1\ntitle=A song\n[CHAPTER]\nTIMEBASE=1/1000\n"
                                    "START=500\nEND=1000\ntitle=Second half\n");
  const auto file = test::encodeNoise(
      folder_, "a.mp3", {"-f", "ffmetadata", "-i", list.string(), "-map_metadata", "1"});
  EXPECT_TRUE(isReadByModule(file));
  test::expectSongInTwoHalves(file);
}

TEST_F(MP3File, PassesOverTagsAtItsEnd) {
  const std::string bytes = encode("a.mp3");
  const auto plain = test::readWholeFile(folder_ / "a.mp3");
  const std::string id3 = "TAG" + std::string(125, ' ');
  // Items that look like frames, which a reader that searches for these would decode.
  const std::string items = bytes.substr(bytes.size() / 2);
  std::string apeMark = "APETAGEX" + std::string(24, '\0');
  test::putLittleEndian(apeMark, 8, 2000, 4);
  test::putLittleEndian(apeMark, 12, static_cast<std::uint32_t>(items.size() + 32), 4);
  const std::string apeV1 = items + apeMark;
  test::putLittleEndian(apeMark, 20, 0x80000000, 4);
  const std::string apeV2 = apeMark + items + apeMark;
  const std::string lyrics = "LYRICSBEGIN" + items;
  char digits[8];
  std::snprintf(digits, sizeof digits, "%06zu", lyrics.size());
  const std::string lyrics3 = lyrics + digits + "LYRICS200";
  for (const std::string& tags : {id3, apeV1, apeV2, apeV2 + id3, lyrics3 + id3}) {
    const auto file = write(bytes + tags);
    EXPECT_TRUE(isReadByModule(file));
    const auto found = test::readWholeFile(file);
    EXPECT_EQ(found.samples, plain.samples);
    EXPECT_EQ(found.description, plain.description);
  }
}

TEST_F(MP3File, GivesTheSameToAnyNumberOfThreadsWhateverIsDamaged) {
  constexpr std::uint32_t kLongSlice = 1U << 20, kShortSlice = 30'000;
  test::Random random(20251122);
  for (const Arguments& arguments :
       {Arguments{"-q:a", "4", "-ac", "2"}, Arguments{"-b:a", "320k", "-ac", "2"},
        Arguments{"-b:a", "8k", "-ar", "22050"}, Arguments{"-b:a", "24k", "-ar", "24000"}}) {
    SCOPED_TRACE(testing::PrintToString(arguments));
    const std::string whole = encode("long.mp3", arguments, 30);
    int readByModule = 0;
    for (int damages = 0; damages < 6; ++damages) {
      std::string bytes = whole;
      for (int i = 0; i < damages; ++i)
        bytes[bytes.size() / 20 + random.below(bytes.size() * 9 / 10)] ^=
            static_cast<char>(1U << random.below(8));
      const auto file = write(bytes);
      if (!isReadByModule(file)) continue;
      ++readByModule;
      const auto alone = test::readWholeFile(file, {.execution = {.threadCount = 1}}, kLongSlice);
      for (const auto& [threads, slice] :
           {std::pair{2U, kLongSlice}, {3U, kShortSlice}, {16U, kLongSlice}}) {
        const auto shared =
            test::readWholeFile(file, {.execution = {.threadCount = threads}}, slice);
        EXPECT_EQ(shared.samples, alone.samples);
        EXPECT_EQ(shared.description, alone.description);
      }
      EXPECT_EQ(alone.promisedFrames, alone.frames());
    }
    EXPECT_GT(readByModule, 2);
  }
}

/// In a pause any two decoders agree, whatever comes of them behind it. At low rates most packets
/// need main data that a decoder which begins in mid-file has not been given.
TEST_F(MP3File, GivesTheSameWhereDecodersMeetInAPause) {
  constexpr std::uint32_t kRate = 22'050;
  constexpr std::uint32_t kWholeFile = 2'000'000;
  for (std::uint64_t seed = 0; seed < 16; ++seed) {
    SCOPED_TRACE(seed);
    const auto samples = test::noiseBursts(seed, kRate, std::size_t{kRate} * 20);
    std::string bytes(samples.size() * sizeof(float), '\0');
    std::memcpy(bytes.data(), samples.data(), bytes.size());
    const auto file = folder_ / "bursts.mp3";
    test::runTool("ffmpeg",
                  {"-v", "error", "-y", "-f", "f32le", "-ar", std::to_string(kRate), "-ac", "1",
                   "-i", folder_.write("bursts.f32", bytes), "-b:a", "8k", file});
    ASSERT_TRUE(isReadByModule(file));
    const auto alone = test::readWholeFile(file, {.execution = {.threadCount = 1}}, kWholeFile);
    for (const std::size_t threads : {2U, 3U})
      EXPECT_EQ(
          test::readWholeFile(file, {.execution = {.threadCount = threads}}, kWholeFile).samples,
          alone.samples)
          << threads << " threads";
  }
}

/// A damaged payload spoils its packet and at most the next ones; all others keep their places.
TEST_F(MP3File, KeepsItsLengthWhenAPayloadIsDamaged) {
  std::string bytes = encode("a.mp3", {"-b:a", "128k", "-write_xing", "0"}, 4);
  const auto sound = test::readWholeFile(folder_ / "a.mp3");
  constexpr std::size_t kPacketBytes = 384;  // at 48 kHz
  const std::size_t start = bytes.find("\xFF\xFB");
  constexpr std::int64_t kDamaged = 80;
  for (std::size_t i = 0; i < 100; ++i) bytes[start + kDamaged * kPacketBytes + 100 + i] = '\x55';
  const auto file = write(bytes);
  EXPECT_TRUE(isReadByModule(file));
  const auto found = test::readWholeFile(file);
  ASSERT_EQ(found.samples.size(), sound.samples.size());
  const auto isSame = [&](std::int64_t from, std::int64_t to) {
    return std::equal(found.samples.begin() + from, found.samples.begin() + to,
                      sound.samples.begin() + from);
  };
  EXPECT_TRUE(isSame(0, (kDamaged - 1) * 1152));
  EXPECT_FALSE(isSame((kDamaged - 1) * 1152, (kDamaged + 3) * 1152));
  EXPECT_TRUE(isSame((kDamaged + 4) * 1152, found.frames()));
}

class Canceller final : public ProgressObserver {
 public:
  explicit Canceller(int calls) : callsLeft_(calls) {}
  void onProgress(std::string_view stage, double fraction) override {
    EXPECT_EQ(stage, "Reading");
    EXPECT_GE(fraction, last_);
    last_ = fraction;
  }
  bool isCancelled() override { return callsLeft_-- == 0; }
  double last() const { return last_; }

 private:
  int callsLeft_;
  double last_ = 0;
};

TEST_F(MP3File, IsWatchedToItsEndAndMayBeCancelled) {
  const auto file = test::encodeNoise(folder_, "a.mp3", {}, 6);
  Canceller patient(-1);
  test::readWholeFile(file, {.execution = {.observer = &patient}});
  EXPECT_EQ(patient.last(), 1.0);
  Canceller opening(0), reading(3);
  EXPECT_THROW(AudioFile::open(file, {.execution = {.observer = &opening}}), Cancelled);
  const auto opened = AudioFile::open(file, {.execution = {.observer = &reading}});
  EXPECT_THROW(test::readToEnd(*opened), Cancelled);
  EXPECT_GT(reading.last(), 0.0);
}

TEST_F(MP3File, SaysThatItChangesWhileItIsRead) {
  // It becomes shorter, or has fewer channels from then on.
  for (const bool isShortened : {true, false}) {
    const auto file = test::encodeNoise(folder_, "a.mp3", {"-ac", "2", "-b:a", "128k"}, 30);
    const std::string mono = encode("mono.mp3", {"-ac", "1", "-b:a", "128k"}, 30);
    const auto opened = AudioFile::open(file);
    if (isShortened)
      std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
    else
      test::writeFile(file, mono);
    try {
      test::readToEnd(*opened);
      ADD_FAILURE() << "the change went unnoticed";
    } catch (const PlatformError& error) {
      EXPECT_EQ(error.message(), "The file changes while it is read");
    }
  }
}

}  // namespace
}  // namespace orvane
