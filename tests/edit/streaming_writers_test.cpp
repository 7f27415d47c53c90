// What is streamed to a file is what the edit in memory gives, whatever the chunks.

#include "orvane/edit/streaming_writers.h"

#include <bit>
#include <cmath>
#include <limits>

#include "orvane/container/audio_container.h"
#include "orvane/container/audio_file.h"
#include "orvane/core/loudness/loudness_processor.h"
#include "orvane/edit/edit_operations.h"
#include "tests/edit/edit_samples.h"
#include "tests/support/address_space_limit.h"
#include "tests/support/file_reading.h"
#include "tests/support/sanitized.h"
#include "tests/support/signals.h"
#include "tests/support/temporary_directory.h"

namespace orvane::EditOperations {
namespace {

namespace support = orvane::test;

constexpr double kRate = 48'000;
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::shared_ptr<PCMBuffer> bufferOf(const ChannelArrays& channels) {
  return buildBuffer({channels, kRate, static_cast<int>(channels.size())});
}

std::vector<std::vector<std::uint32_t>> bitsOf(const ChannelArrays& channels) {
  std::vector<std::vector<std::uint32_t>> bits;
  for (const auto& channel : channels)
    for (auto& to = bits.emplace_back(); const float x : channel)
      to.push_back(std::bit_cast<std::uint32_t>(x));
  return bits;
}

class StreamingWritersTest : public testing::Test {
 protected:
  using Write = std::function<void(const PCMBuffer&, std::int64_t chunkFrames)>;

  ChannelArrays written() const {
    const auto buffer = support::readWhole(out);
    ChannelArrays channels;
    for (std::uint32_t c = 0; c < buffer->channelCount(); ++c) {
      const auto samples = buffer->view().samples(c);
      channels.emplace_back(samples.begin(), samples.end());
    }
    return channels;
  }

  /// In chunks of one frame, of some, and of more than there are.
  void expectStreamed(const ChannelArrays& channels, const ChannelArrays& expected,
                      const Write& write) const {
    const auto source = bufferOf(channels);
    for (const std::int64_t chunk : {std::int64_t{1}, std::int64_t{97}, std::int64_t{1} << 40}) {
      write(*source, chunk);
      ASSERT_EQ(bitsOf(written()), bitsOf(expected)) << "chunks of " << chunk;
    }
  }

  void expectRefused(EditStreamError::Case errorCase, const ChannelArrays& channels,
                     const Write& write, std::int64_t chunkFrames = 100) const {
    try {
      write(*bufferOf(channels), chunkFrames);
      ADD_FAILURE() << "nothing is thrown";
    } catch (const EditStreamError& error) {
      EXPECT_EQ(error, EditStreamError(errorCase));
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
  }

  support::TemporaryDirectory folder;
  std::filesystem::path out = folder / "out.wav";
};

TEST_F(StreamingWritersTest, TrimLikeInMemory) {
  const auto channels = test::noise(2, 301);
  for (const auto& [start, end] : test::rangesOf(301)) {
    const auto write = [&, start = start, end = end](const PCMBuffer& source, std::int64_t chunk) {
      writeTrimmedWAV(source, start, end, out, chunk);
    };
    if (FrameRange{start, end}.clamped(301).isEmpty())
      expectRefused(EditStreamError::Case::invalidRange, channels, write);
    else
      expectStreamed(channels, trim(channels, kRate, start, end).channelData, write);
    std::filesystem::remove(out);
  }
}

TEST_F(StreamingWritersTest, CutLikeInMemory) {
  const auto channels = test::noise(2, 301);
  for (const std::int64_t crossfade : {-1, 0, 30, 1000})
    for (const auto& [start, end] : test::rangesOf(301)) {
      const auto write = [&, start = start, end = end](const PCMBuffer& source,
                                                       std::int64_t chunk) {
        writeCutWAV(source, start, end, crossfade, out, chunk);
      };
      const auto range = FrameRange{start, end}.clamped(301);
      if (range.isEmpty() || range.length() == 301)
        expectRefused(EditStreamError::Case::invalidRange, channels, write);
      else
        expectStreamed(channels, cutRange(channels, kRate, start, end, crossfade).channelData,
                       write);
      std::filesystem::remove(out);
    }
}

TEST_F(StreamingWritersTest, AddSilenceLikeInMemory) {
  const auto channels = test::noise(2, 301);
  for (const SilenceMode mode :
       {SilenceMode::insertBefore, SilenceMode::insertAfter, SilenceMode::replace})
    for (const std::int64_t duration : {0, 150})
      for (const auto& [start, end] : test::rangesOf(301)) {
        const auto write = [&, start = start, end = end](const PCMBuffer& source,
                                                         std::int64_t chunk) {
          writeSilenceWAV(source, start, end, mode, duration, out, chunk);
        };
        if (mode == SilenceMode::replace && FrameRange{start, end}.clamped(301).isEmpty())
          expectRefused(EditStreamError::Case::invalidRange, channels, write);
        else
          expectStreamed(
              channels, addSilence(channels, kRate, start, end, mode, duration).channelData, write);
        std::filesystem::remove(out);
      }
}

TEST_F(StreamingWritersTest, DoNotInsertANegativeTime) {
  const auto source = bufferOf(test::noise(1, 10));
  EXPECT_DEATH(writeSilenceWAV(*source, 0, 5, SilenceMode::insertAfter, -1, out, 100),
               "no negative time");
}

TEST_F(StreamingWritersTest, NormaliseThePeakOverAllChannels) {
  ChannelArrays channels = {{0.25F, kNaN, -0.125F}, {0.5F, kInfinity, 0.0F}};
  expectStreamed(channels, normalizePeak(channels, kRate, -6).channelData,
                 [&](const PCMBuffer& source, std::int64_t chunk) {
                   writePeakNormalizedWAV(source, -6, out, chunk);
                 });
  EXPECT_NEAR(written()[1][0], std::pow(10.0, -6.0 / 20), 1e-7);
}

TEST_F(StreamingWritersTest, KeepSilenceSilent) {
  const ChannelArrays silence(2, std::vector<float>(500));
  expectStreamed(silence, silence, [&](const PCMBuffer& source, std::int64_t chunk) {
    writePeakNormalizedWAV(source, -1, out, chunk);
  });
  expectStreamed(silence, silence, [&](const PCMBuffer& source, std::int64_t chunk) {
    writeNormalizedWAV(source, -23, -1, out, chunk);
  });
}

TEST_F(StreamingWritersTest, SwapChannelsOfStereoOnly) {
  for (const std::size_t count : {1U, 2U, 6U}) {
    const auto channels = test::noise(count, 301);
    expectStreamed(channels, swapChannels(channels, kRate).channelData,
                   [&](const PCMBuffer& source, std::int64_t chunk) {
                     writeChannelSwappedWAV(source, out, chunk);
                   });
  }
}

TEST_F(StreamingWritersTest, WriteOneChannelOfSeveral) {
  const auto channels = test::noise(3, 301);
  const auto mono = splitToMono(channels, kRate);
  const auto writing = [&](std::int64_t channel) {
    return [this, channel](const PCMBuffer& source, std::int64_t chunk) {
      writeMonoChannelWAV(source, channel, out, chunk);
    };
  };
  for (const std::size_t c : {0U, 1U, 2U})
    expectStreamed(channels, mono[c].channelData, writing(static_cast<std::int64_t>(c)));
  std::filesystem::remove(out);
  for (const std::int64_t none : {-1, 3})
    expectRefused(EditStreamError::Case::invalidRange, channels, writing(none));
}

float truePeakOf(const PCMBuffer& buffer) {
  core::LoudnessProcessor meter(buffer.sampleRate(), buffer.channelCount());
  meter.updateTruePeak(buffer.view());
  meter.flushPartialBlock();
  return meter.truePeakDB();
}

float loudnessOf(const PCMBuffer& buffer, std::optional<std::vector<float>> weights = {}) {
  core::LoudnessProcessor meter(buffer.sampleRate(), buffer.channelCount(), std::nullopt,
                                std::move(weights));
  meter.process(buffer.view());
  meter.flushPartialBlock();
  return meter.integratedLUFS();
}

TEST_F(StreamingWritersTest, BringAllToTheCeilingWithOneGain) {
  const auto channels = test::noise(2, 4801);  // peaks above full scale between its samples
  const auto source = bufferOf(channels);
  const float before = truePeakOf(*source);
  ASSERT_GT(before, 0);
  writeLimitedWAV(*source, -3, out, 1000);
  EXPECT_NEAR(truePeakOf(*support::readWhole(out)), -3, 1e-4);
  const auto result = written();
  for (std::size_t i = 0; i < 4801; ++i)
    ASSERT_NEAR(result[0][i], channels[0][i] * std::pow(10.0, (-3 - before) / 20), 1e-6);

  writeGainLimitedWAV(*source, 12, -1, out, 1000);
  EXPECT_NEAR(truePeakOf(*support::readWhole(out)), -1, 1e-4);
}

TEST_F(StreamingWritersTest, UseTheGainAskedForBelowTheCeiling) {
  const auto channels = test::noise(2, 4801);
  expectStreamed(channels, channels, [&](const PCMBuffer& source, std::int64_t chunk) {
    writeLimitedWAV(source, 12, out, chunk);
  });
  expectStreamed(channels, changeLevel(channels, kRate, -20, 0, 4801).channelData,
                 [&](const PCMBuffer& source, std::int64_t chunk) {
                   writeGainLimitedWAV(source, -20, -1, out, chunk);
                 });
}

TEST_F(StreamingWritersTest, WriteNothingNonFiniteWhereTheyLevelByTruePeak) {
  const ChannelArrays channels = {{0.25F, kNaN, kInfinity, -kInfinity, -0.125F}};
  const ChannelArrays expected = {{0.25F, 0, 0, 0, -0.125F}};
  expectStreamed(channels, expected, [&](const PCMBuffer& source, std::int64_t chunk) {
    writeLimitedWAV(source, 0, out, chunk);
  });
}

TEST_F(StreamingWritersTest, BringTheLoudnessToTheTarget) {
  const auto music = support::music(7, 48'000, 2, 5);
  const auto source = bufferOf(music.channels);
  writeNormalizedWAV(*source, -33, -1, out, 4096);
  EXPECT_NEAR(loudnessOf(*support::readWhole(out)), -33, 0.01);

  writeNormalizedWAV(*source, 0, -1, out, 4096);
  EXPECT_NEAR(truePeakOf(*support::readWhole(out)), -1, 1e-3) << "the ceiling holds it back";
}

TEST_F(StreamingWritersTest, WeighChannelsByTheLayout) {
  // By their number alone the last two of four channels are surrounds, which weigh more.
  const auto channels = test::noise(4, 48'000);
  using enum ChannelLabel;
  const auto layout = ChannelLayout::fromLabels({left, right, center, lfe});
  const auto source = buildBuffer({channels, kRate, 4}, layout);
  writeNormalizedWAV(*source, -30, -1, out, 4096);
  const auto result = support::readWhole(out);
  EXPECT_EQ(result->format().layout, source->format().layout);
  EXPECT_NEAR(loudnessOf(*result, std::vector<float>{1, 1, 1, 0}), -30, 0.01);
}

TEST_F(StreamingWritersTest, WriteFloatsAtTheRateOfTheSource) {
  writeLimitedWAV(*buildBuffer({{{0.5F}}, 44'100, 1}), 0, out, 1);
  const auto file = AudioFile::open(out);
  EXPECT_EQ(file->description().fileTypeID, fileTypeID(AudioContainer::wave));
  EXPECT_EQ(file->description().dataFormat.bitsPerChannel, 32U);
  EXPECT_TRUE(file->description().dataFormat.formatFlags & kFormatFlagIsFloat);
  EXPECT_EQ(file->description().dataFormat.sampleRate, 44'100);
}

const auto kEachWriter =
    std::to_array<void (*)(const PCMBuffer&, const std::filesystem::path&, std::int64_t)>({
        [](auto& source, auto& url, auto chunk) { writeTrimmedWAV(source, 0, 5, url, chunk); },
        [](auto& source, auto& url, auto chunk) { writeCutWAV(source, 0, 5, 0, url, chunk); },
        [](auto& source, auto& url, auto chunk) {
          writeSilenceWAV(source, 0, 0, SilenceMode::insertBefore, 9, url, chunk);
        },
        [](auto& source, auto& url, auto chunk) { writePeakNormalizedWAV(source, -1, url, chunk); },
        [](auto& source, auto& url, auto chunk) { writeChannelSwappedWAV(source, url, chunk); },
        [](auto& source, auto& url, auto chunk) { writeMonoChannelWAV(source, 0, url, chunk); },
        [](auto& source, auto& url, auto chunk) {
          writeNormalizedWAV(source, -23, -1, url, chunk);
        },
        [](auto& source, auto& url, auto chunk) { writeLimitedWAV(source, -1, url, chunk); },
        [](auto& source, auto& url, auto chunk) { writeGainLimitedWAV(source, 1, -1, url, chunk); },
    });

TEST_F(StreamingWritersTest, RefuseASourceWithoutFramesOrChannels) {
  const auto noChannels = PCMBuffer::make({.sampleRate = kRate}, 10);
  noChannels->setFrameLength(10);
  const auto noFrames = bufferOf({{}, {}});
  for (const auto& write : kEachWriter)
    for (const auto& source : {noChannels, noFrames}) {
      EXPECT_THROW(write(*source, out, 100), EditStreamError);
      EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
    }
}

TEST_F(StreamingWritersTest, RefuseChunksThatCannotBe) {
  for (const auto& write : kEachWriter)
    for (const std::int64_t chunk : {0, -1})
      expectRefused(
          EditStreamError::Case::allocationFailed, test::noise(1, 20),
          [&](const PCMBuffer& source, std::int64_t frames) { write(source, out, frames); }, chunk);
  if (support::isSanitized()) return;  // it takes all address space for itself
  const auto source = bufferOf(test::noise(1, 20));
  const support::AddressSpaceLimit limit(64 << 20);
  EXPECT_THROW(writeSilenceWAV(*source, 0, 0, SilenceMode::insertBefore, 1 << 30, out, 1 << 30),
               EditStreamError);
}

TEST_F(StreamingWritersTest, NameTheFileThatCannotBeWritten) {
  for (const auto& write : kEachWriter) try {
      write(*bufferOf(test::noise(1, 20)), folder / "missing" / "out.wav", 100);
      ADD_FAILURE() << "nothing is thrown";
    } catch (const PlatformError& error) {
      EXPECT_TRUE(error.errorDescription().starts_with("out.wav: ")) << error.errorDescription();
    }
}

TEST(EditStreamError, SaysWhatIsWrong) {
  EXPECT_EQ(EditStreamError(EditStreamError::Case::invalidRange).errorDescription(),
            "The requested range is empty or outside the audio.");
  EXPECT_EQ(EditStreamError(EditStreamError::Case::allocationFailed).errorDescription(),
            "Could not allocate a chunk buffer.");
}

}  // namespace
}  // namespace orvane::EditOperations
