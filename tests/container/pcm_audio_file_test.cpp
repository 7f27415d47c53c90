#include "orvane/container/pcm_audio_file.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <limits>

#include "tests/support/container_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::SampleSpec;

constexpr SampleSpec kSpec{.bits = 24, .bytes = 3};

class PCMAudioFileTest : public testing::Test {
 protected:
  /// A stereo file of several reading blocks.
  std::filesystem::path writeLongFile(std::size_t frames = 300'001) {
    values_ = test::testValues(kSpec, frames, 2);
    return folder_.write("long.wav",
                         test::waveFile({.bits = 24}, test::storedSamples(kSpec, values_)));
  }

  test::TemporaryDirectory folder_;
  std::vector<double> values_;
};

TEST_F(PCMAudioFileTest, GivesTheSameSamplesOnAnyNumberOfThreads) {
  const auto path = writeLongFile();
  for (const std::size_t threads : {0U, 1U, 2U, 5U}) {
    const auto buffer = test::readWhole(path, threads);
    ASSERT_TRUE(buffer);
    test::expectSamples(*buffer, values_);
  }
}

TEST_F(PCMAudioFileTest, ReadsOnFromWhereTheLastReadEnded) {
  const auto file = AudioFile::open(writeLongFile(1000), {.execution = {.threadCount = 2}});
  const auto part = PCMBuffer::make(file->processingFormat(), 300);
  ASSERT_TRUE(part);
  std::vector<std::uint32_t> lengths;
  std::size_t frame = 0;
  do {
    file->read(*part);
    lengths.push_back(part->frameLength());
    for (std::uint32_t i = 0; i < part->frameLength(); ++i, ++frame)
      ASSERT_EQ(part->channel(1)[i], static_cast<float>(values_[frame * 2 + 1]));
  } while (part->frameLength() > 0);
  EXPECT_EQ(lengths, (std::vector<std::uint32_t>{300, 300, 300, 100, 0}));
}

TEST_F(PCMAudioFileTest, ReportsAFileThatShrinksMeanwhile) {
  const auto path = writeLongFile();
  const auto file = AudioFile::open(path, {.execution = {.threadCount = 2}});
  std::filesystem::resize_file(path, 100'000);
  try {
    test::readWhole(*file);
    FAIL() << "read what is not there";
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.errorDescription(), "long.wav: The file ended while it was being read");
  }
}

TEST_F(PCMAudioFileTest, LeavesOutALastFrameThatIsNotWhole) {
  const auto path = folder_.write("odd.wav", test::waveFile({.bits = 24}, Bytes(6 * 10 + 5)));
  EXPECT_EQ(AudioFile::open(path)->frameLength(), 10);
}

TEST_F(PCMAudioFileTest, PassesFloatsThatAreNoNumbersOrBeyondFullScale) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float infinity = std::numeric_limits<float>::infinity();
  test::ByteWriter samples;
  for (const float value : {nan, infinity, -infinity, 4.0F, -0.0F, 1e-42F})
    samples.u32(std::bit_cast<std::uint32_t>(value));
  const auto buffer = test::readWhole(folder_.write(
      "f.wav", test::waveFile({.tag = 3, .channels = 1, .bits = 32}, samples.bytes())));
  ASSERT_TRUE(buffer);
  const float* const read = buffer->channel(0);
  EXPECT_TRUE(std::isnan(read[0]));
  EXPECT_EQ(read[1], infinity);
  EXPECT_EQ(read[2], -infinity);
  EXPECT_EQ(read[3], 4.0F);
  EXPECT_TRUE(read[4] == 0 && std::signbit(read[4]));
  EXPECT_EQ(read[5], 1e-42F);
}

TEST_F(PCMAudioFileTest, DescribesItsFormatToWriters) {
  const auto path = folder_.write(
      "a.wav",
      test::waveFile({.tag = 3, .channels = 1, .sampleRate = 96000, .bits = 32}, Bytes(8)));
  const auto file = AudioFile::open(path);
  EXPECT_EQ(file->fileFormat(), (AudioFormatSettings{.formatID = kFormatLinearPCM,
                                                     .sampleRate = 96000,
                                                     .channelCount = 1,
                                                     .linearPCMBitDepth = 32,
                                                     .linearPCMIsFloat = true,
                                                     .linearPCMIsBigEndian = false}));
  EXPECT_EQ(file->processingFormat().sampleRate, 96000);
  EXPECT_EQ(file->processingFormat().channelCount, 1U);
}

TEST_F(PCMAudioFileTest, HasOneStreamOnly) {
  const auto path = writeLongFile(10);
  EXPECT_EQ(AudioFile::open(path, {.streamIndex = 0})->frameLength(), 10);
  EXPECT_THROW(AudioFile::open(path, {.streamIndex = 1}), PlatformError);
}

class Watcher : public ProgressObserver {
 public:
  void onProgress(std::string_view stage, double fraction) override {
    EXPECT_EQ(stage, "Reading");
    EXPECT_GT(fraction, lastFraction);
    lastFraction = fraction;
    ++calls;
  }
  bool isCancelled() override { return cancelAfter >= 0 && calls >= cancelAfter; }

  int calls = 0;
  int cancelAfter = -1;
  double lastFraction = 0;
};

TEST_F(PCMAudioFileTest, TellsHowFarItIs) {
  Watcher watcher;
  const auto file =
      AudioFile::open(writeLongFile(), {.execution = {.threadCount = 2, .observer = &watcher}});
  test::readWhole(*file);
  EXPECT_GT(watcher.calls, 3);
  EXPECT_EQ(watcher.lastFraction, 1);
}

TEST_F(PCMAudioFileTest, StopsWhenItIsCancelled) {
  Watcher watcher;
  watcher.cancelAfter = 2;
  const auto file =
      AudioFile::open(writeLongFile(), {.execution = {.threadCount = 2, .observer = &watcher}});
  EXPECT_THROW(test::readWhole(*file), Cancelled);
  EXPECT_EQ(watcher.calls, 2);
}

}  // namespace
}  // namespace orvane
