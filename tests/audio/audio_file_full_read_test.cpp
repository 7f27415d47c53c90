#include "orvane/audio/audio_file_full_read.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "orvane/platform/error.h"

namespace orvane {
namespace {

/// A decoder of a ramp that delivers only so many frames at a time.
class SlowFile final : public AudioFile {
 public:
  SlowFile(std::uint32_t frames, std::uint32_t framesPerRead)
      : AudioFile(nullptr), left_(frames), step_(framesPerRead) {
    description_.dataFormat = {.sampleRate = 48000, .channelsPerFrame = 2};
  }

  const AudioFileDescription& description() const noexcept override { return description_; }
  std::int64_t frameLength() override { return left_; }
  bool knowsFrameLength() const noexcept override { return true; }
  std::optional<std::int64_t> expectedFrameLength() const override { return left_; }

  void read(PCMBuffer& buffer) override {
    ++reads;
    largestRequest = std::max(largestRequest, buffer.frameCapacity());
    if (reads == failAtRead) throw PlatformError("slow", "The decoder failed");
    const std::uint32_t frames = std::min({left_, step_, buffer.frameCapacity()});
    for (std::uint32_t i = 0; i < frames; ++i) {
      buffer.channel(0)[i] = static_cast<float>(position_ + i);
      buffer.channel(1)[i] = -static_cast<float>(position_ + i);
    }
    position_ += frames;
    left_ -= frames;
    buffer.setFrameLength(frames);
  }

  int reads = 0;
  int failAtRead = -1;
  std::uint32_t largestRequest = 0;

 private:
  std::vector<ChapterMark> unsortedChapters() const override { return {}; }

  AudioFileDescription description_;
  std::uint32_t left_;
  std::uint32_t step_;
  std::uint32_t position_ = 0;
};

std::shared_ptr<PCMBuffer> bufferFor(const AudioFile& file, std::uint32_t frames) {
  return PCMBuffer::make(file.processingFormat(), frames);
}

void expectRamp(const PCMBuffer& buffer, std::uint32_t frames) {
  ASSERT_EQ(buffer.frameLength(), frames);
  for (std::uint32_t i = 0; i < frames; ++i) {
    ASSERT_EQ(buffer.channel(0)[i], static_cast<float>(i));
    ASSERT_EQ(buffer.channel(1)[i], -static_cast<float>(i));
  }
}

TEST(AudioFileFullRead, GathersTheFullLengthFromSmallDeliveries) {
  SlowFile file(100'000, 4096);
  const auto buffer = bufferFor(file, 100'000);
  ASSERT_TRUE(buffer);
  AudioFileFullRead::read(file, *buffer);
  expectRamp(*buffer, 100'000);
}

TEST(AudioFileFullRead, ReadsOnceWhenAllComesAtOnce) {
  SlowFile file(100'000, 100'000);
  const auto buffer = bufferFor(file, 100'000);
  ASSERT_TRUE(buffer);
  AudioFileFullRead::read(file, *buffer);
  expectRamp(*buffer, 100'000);
  EXPECT_EQ(file.reads, 1);
}

TEST(AudioFileFullRead, EndsWithAFileThatIsShorterThanItSaid) {
  SlowFile file(10'000, 4096);
  const auto buffer = bufferFor(file, 100'000);
  ASSERT_TRUE(buffer);
  AudioFileFullRead::read(file, *buffer);
  expectRamp(*buffer, 10'000);
}

TEST(AudioFileFullRead, TakesNoMoreThanFits) {
  SlowFile file(100'000, 4096);
  const auto buffer = bufferFor(file, 5000);
  ASSERT_TRUE(buffer);
  AudioFileFullRead::read(file, *buffer);
  expectRamp(*buffer, 5000);
}

TEST(AudioFileFullRead, AsksForLimitedPiecesAfterAShortDelivery) {
  SlowFile file(300'000, 200'000);
  const auto buffer = bufferFor(file, 300'000);
  ASSERT_TRUE(buffer);
  AudioFileFullRead::read(file, *buffer);
  expectRamp(*buffer, 300'000);
  EXPECT_EQ(file.reads, 3);  // 200,000, then pieces of 65,536
}

TEST(AudioFileFullRead, PassesErrorsOn) {
  for (const int failing : {1, 2, 5}) {
    SlowFile file(100'000, 4096);
    file.failAtRead = failing;
    const auto buffer = bufferFor(file, 100'000);
    ASSERT_TRUE(buffer);
    EXPECT_THROW(AudioFileFullRead::read(file, *buffer), PlatformError);
  }
}

}  // namespace
}  // namespace orvane
