#include "orvane/rawpcm/raw_pcm_reader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "orvane/platform/host_memory.h"
#include "orvane/rawpcm/raw_pcm_import_error.h"
#include "tests/reference/sample_conversion_reference.h"
#include "tests/support/address_space_limit.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using Encoding = RawPCMFormat::Encoding;
using Endianness = RawPCMFormat::Endianness;
using Import = RawPCMImportError;
using Bytes = std::vector<std::byte>;

RawPCMFormat declared(Encoding encoding, std::int64_t channels, bool planar = false) {
  return {.sampleRate = 48000, .channelCount = channels, .encoding = encoding, .isPlanar = planar};
}

Bytes bytes(std::initializer_list<int> values) {
  Bytes result;
  for (const int value : values) result.push_back(static_cast<std::byte>(value));
  return result;
}

Bytes noise(std::size_t size) {
  std::mt19937 random(11);
  Bytes result(size);
  for (auto& byte : result) byte = static_cast<std::byte>(random());
  return result;
}

/// What reading these bytes fails with; a text for "it does not fail" otherwise.
template <class Source>
std::variant<Import::Case, std::string> failureOf(const Source& source, const RawPCMFormat& format,
                                                  std::optional<std::int64_t> maxFrames = {}) {
  try {
    RawPCMReader::read(source, format, maxFrames);
    return "no failure";
  } catch (const Import& error) {
    return error.failureCase();
  }
}

template <class Case>
std::variant<Import::Case, std::string> caseOf(Case failure) {
  return Import::Case(failure);
}

float firstSample(const RawPCMFormat& format, const Bytes& data) {
  return RawPCMReader::read(data, format)->channel(0)[0];
}

TEST(RawPCMReader, ConvertsFixedValuesExactly) {
  EXPECT_EQ(firstSample(declared(Encoding::uint8, 1), bytes({0x80})), 0.0F);
  EXPECT_EQ(firstSample(declared(Encoding::uint8, 1), bytes({0x00})), -1.0F);
  EXPECT_EQ(firstSample(declared(Encoding::uint8, 1), bytes({0xFF})), 0.9921875F);
  EXPECT_EQ(firstSample(declared(Encoding::int16, 1), bytes({0x00, 0x80})), -1.0F);
  EXPECT_EQ(firstSample(declared(Encoding::int24Packed, 1), bytes({0, 0, 0x80})), -1.0F);
  EXPECT_EQ(firstSample(declared(Encoding::int24In32, 1), bytes({0, 0, 0x80, 0xFF})), -1.0F);
  EXPECT_EQ(firstSample(declared(Encoding::int24In32, 1), bytes({0, 0, 0x80, 0})), -1.0F);
  EXPECT_EQ(firstSample(declared(Encoding::int32, 1), bytes({0, 0, 0, 0x80})), -1.0F);
}

TEST(RawPCMReader, IgnoresTheTopByteOf24In32) {
  // The word 0xFF000000 has nothing in its low 24 bits.
  EXPECT_EQ(firstSample(declared(Encoding::int24In32, 1), bytes({0, 0, 0, 0xFF})), 0.0F);
  EXPECT_EQ(firstSample(declared(Encoding::int24In32, 1), bytes({1, 0, 0, 0xAB})),
            std::ldexp(1.0F, -23));
}

TEST(RawPCMReader, ReadsBigEndianEightBitsLikeLittleEndian) {
  auto format = declared(Encoding::uint8, 1);
  format.endianness = Endianness::big;
  EXPECT_EQ(firstSample(format, bytes({0x40})), -0.5F);
}

TEST(RawPCMReader, PassesFloatingPointThroughUnscaled) {
  const float over = 1.5F;
  const auto* raw = reinterpret_cast<const std::byte*>(&over);
  EXPECT_EQ(firstSample(declared(Encoding::float32, 1), Bytes(raw, raw + 4)), 1.5F);
  const double wide = -2.25;
  raw = reinterpret_cast<const std::byte*>(&wide);
  EXPECT_EQ(firstSample(declared(Encoding::float64, 1), Bytes(raw, raw + 8)), -2.25F);
}

TEST(RawPCMReader, KeepsRateLengthAndBareStereoFormat) {
  auto format = declared(Encoding::int16, 2);
  format.sampleRate = 44100.5;
  const auto buffer = RawPCMReader::read(noise(400), format);
  EXPECT_EQ(buffer->sampleRate(), 44100.5);
  EXPECT_EQ(buffer->channelCount(), 2U);
  EXPECT_EQ(buffer->frameLength(), 100U);
  EXPECT_EQ(buffer->frameCapacity(), 100U);
  EXPECT_FALSE(buffer->format().layout);
}

constexpr SampleEncoding kEncodings[] = {
    SampleEncoding::unsignedInteger(1), SampleEncoding::signedInteger(2),
    SampleEncoding::signedInteger(3),   SampleEncoding::low24In32(),
    SampleEncoding::signedInteger(4),   SampleEncoding::floatingPoint(4),
    SampleEncoding::floatingPoint(8)};

/// Checks every sample of a read against the bytes it came from.
void expectSamples(const PCMBuffer& buffer, const RawPCMFormat& format, const Bytes& data,
                   std::size_t fullFrames) {
  SampleEncoding encoding = kEncodings[static_cast<std::size_t>(format.encoding)];
  encoding.isBigEndian = format.endianness == Endianness::big && encoding.bytes > 1;
  const auto width = static_cast<std::size_t>(bytesPerSample(format.encoding));
  const auto channels = static_cast<std::size_t>(format.channelCount);
  const auto skip = static_cast<std::size_t>(format.headerSkipBytes);
  for (std::size_t c = 0; c < channels; ++c)
    for (std::size_t i = 0; i < buffer.frameLength(); ++i) {
      const std::size_t sample = format.isPlanar ? c * fullFrames + i : i * channels + c;
      const float expected =
          reference::sampleToFloat(encoding, data.data() + skip + sample * width);
      ASSERT_EQ(std::bit_cast<std::uint32_t>(buffer.channel(static_cast<std::uint32_t>(c))[i]),
                std::bit_cast<std::uint32_t>(expected))
          << format.summary() << " channel " << c << " frame " << i;
    }
}

TEST(RawPCMReader, ReadsEveryDeclarationFromMemoryAndFileOnAnyNumberOfThreads) {
  const test::TemporaryDirectory folder;
  constexpr std::size_t kFrames = 70'001;
  for (const Encoding encoding : kAllRawPCMEncodings)
    for (const Endianness endianness : kAllRawPCMEndiannesses)
      for (const bool planar : {false, true})
        for (const std::int64_t channels : {1, 2, 6}) {
          auto format = declared(encoding, channels, planar);
          format.endianness = endianness;
          format.headerSkipBytes = 5;
          const Bytes data = noise(5 + kFrames * static_cast<std::size_t>(format.bytesPerFrame()));
          const auto file = folder.write("noise.raw", data);
          expectSamples(*RawPCMReader::read(data, format), format, data, kFrames);
          expectSamples(*RawPCMReader::read(file, format, {}, {.threadCount = 3}), format, data,
                        kFrames);
          if (HasFatalFailure()) return;
        }
}

TEST(RawPCMReader, ReadsAPreviewOfTheFirstFramesOfEveryChannel) {
  const test::TemporaryDirectory folder;
  for (const bool planar : {false, true}) {
    const auto format = declared(Encoding::int16, 3, planar);
    const Bytes data = noise(6 * 1000);
    const auto file = folder.write("noise.raw", data);
    const auto buffer = RawPCMReader::read(file, format, 10);
    ASSERT_EQ(buffer->frameLength(), 10U);
    EXPECT_EQ(buffer->frameCapacity(), 10U);
    expectSamples(*buffer, format, data, 1000);
  }
}

TEST(RawPCMReader, IgnoresAMaximumBeyondTheFile) {
  const auto buffer = RawPCMReader::read(noise(400), declared(Encoding::int16, 2), 101);
  EXPECT_EQ(buffer->frameLength(), 100U);
}

TEST(RawPCMReader, FindsNoPayloadInAFileNoLongerThanItsHeader) {
  auto format = declared(Encoding::int16, 2);
  format.headerSkipBytes = 44;
  EXPECT_EQ(failureOf(noise(44), format), caseOf(Import::EmptyPayload{}));
  EXPECT_EQ(failureOf(noise(10), format), caseOf(Import::EmptyPayload{}));
  EXPECT_EQ(failureOf(Bytes{}, declared(Encoding::uint8, 1)), caseOf(Import::EmptyPayload{}));
}

TEST(RawPCMReader, ReportsOrToleratesTrailingBytesOfAnInterleavedFile) {
  auto format = declared(Encoding::int16, 2);
  EXPECT_EQ(failureOf(noise(1001), format), caseOf(Import::NonDivisibleSize{1, 4}));
  format.trailingBytesTolerance = 1;
  EXPECT_EQ(RawPCMReader::read(noise(1001), format)->frameLength(), 250U);
  EXPECT_EQ(failureOf(noise(1002), format), caseOf(Import::NonDivisibleSize{2, 4}));
}

TEST(RawPCMReader, ReportsTrailingBytesOfAPlanarFileWhateverTheTolerance) {
  auto format = declared(Encoding::int16, 2, true);
  format.trailingBytesTolerance = 3;
  EXPECT_EQ(failureOf(noise(1001), format), caseOf(Import::NonDivisibleSize{1, 4}));
}

TEST(RawPCMReader, FindsNoPayloadInLessThanAFrameWithinTheTolerance) {
  auto format = declared(Encoding::int16, 2);
  format.trailingBytesTolerance = 3;
  EXPECT_EQ(failureOf(noise(3), format), caseOf(Import::EmptyPayload{}));
  format.trailingBytesTolerance = 2;
  EXPECT_EQ(failureOf(noise(3), format), caseOf(Import::NonDivisibleSize{3, 4}));
}

TEST(RawPCMReader, RefusesAnInvalidShapeBeforeLookingAtTheSize) {
  std::vector<RawPCMFormat> invalid(7, declared(Encoding::int16, 2));
  invalid[0].channelCount = 65;
  invalid[1].sampleRate = 0;
  invalid[2].sampleRate = std::numeric_limits<double>::quiet_NaN();
  invalid[3].sampleRate = std::numeric_limits<double>::infinity();
  invalid[4].headerSkipBytes = -1;
  invalid[5].trailingBytesTolerance = -1;
  invalid[6].headerSkipBytes = std::numeric_limits<std::int64_t>::min();
  for (const auto& format : invalid) {
    EXPECT_EQ(failureOf(noise(1001), format), caseOf(Import::InvalidFormat{}));
    EXPECT_EQ(failureOf(Bytes{}, format), caseOf(Import::InvalidFormat{}));
  }
}

TEST(RawPCMReader, ChecksTheMemoryLimitAgainstTheFramesReallyRead) {
  const ScopedHostMemory memory({.physicalBytes = std::int64_t{8} << 30});
  const test::TemporaryDirectory folder;
  const auto file = folder.write("sparse.raw", "");
  // 1.5 · 2^30 bytes of mono are as many frames, beyond the bound of 2^30.
  std::filesystem::resize_file(file, (std::uintmax_t{1} << 30) * 3 / 2);
  const auto format = declared(Encoding::uint8, 1);
  EXPECT_EQ(failureOf(file, format), caseOf(Import::TooLarge{}));
  const auto preview = RawPCMReader::read(file, format, 1000);
  EXPECT_EQ(preview->frameLength(), 1000U);
  EXPECT_EQ(preview->channel(0)[999], -1.0F);
  EXPECT_EQ(failureOf(file, format, 0), caseOf(Import::TooLarge{}));
  EXPECT_EQ(failureOf(file, format, -5), caseOf(Import::TooLarge{}));
}

TEST(RawPCMReader, ReportsABufferThatCannotBeAllocated) {
  const ScopedHostMemory memory({.physicalBytes = std::int64_t{64} << 30});
  const test::TemporaryDirectory folder;
  const auto file = folder.write("sparse.raw", "");
  std::filesystem::resize_file(file, std::uintmax_t{1} << 29);  // 2 GiB as floats
  const test::AddressSpaceLimit limit(std::size_t{512} << 20);
  EXPECT_EQ(failureOf(file, declared(Encoding::uint8, 1)),
            caseOf(Import::BufferAllocationFailed{}));
}

TEST(RawPCMReader, ReportsAFileThatCannotBeRead) {
  const test::TemporaryDirectory folder;
  const auto format = declared(Encoding::int16, 2);
  EXPECT_EQ(failureOf(folder / "missing.raw", format),
            caseOf(Import::UnreadableFile{"missing.raw: No such file or directory"}));
  EXPECT_EQ(failureOf(folder.path(), format),
            caseOf(Import::UnreadableFile{folder.path().filename().string() + ": Is a directory"}));
  ASSERT_EQ(mkfifo((folder / "pipe.raw").c_str(), 0600), 0);
  EXPECT_EQ(failureOf(folder / "pipe.raw", format),
            caseOf(Import::UnreadableFile{"pipe.raw: Not a regular file"}));
  // An unreadable file comes before an invalid declaration.
  EXPECT_EQ(failureOf(folder / "missing.raw", declared(Encoding::int16, 65)),
            caseOf(Import::UnreadableFile{"missing.raw: No such file or directory"}));
}

TEST(RawPCMReader, ReadsAnEmptyFileAsOneWithoutPayload) {
  const test::TemporaryDirectory folder;
  EXPECT_EQ(failureOf(folder.write("empty.raw", ""), declared(Encoding::int16, 2)),
            caseOf(Import::EmptyPayload{}));
}

TEST(RawPCMReader, TellsItsProgressAndStopsWhenAsked) {
  struct Observer : ProgressObserver {
    void onProgress(std::string_view stage, double fraction) override {
      EXPECT_EQ(stage, "Reading");
      EXPECT_GT(fraction, last);
      last = fraction;
    }
    bool isCancelled() override { return last >= stopAt; }
    double last = 0;
    double stopAt = 2;
  };
  const Bytes data = noise(4'000'000);
  const auto format = declared(Encoding::int16, 2);
  Observer observer;
  RawPCMReader::read(data, format, {}, {.observer = &observer});
  EXPECT_EQ(observer.last, 1.0);
  Observer impatient;
  impatient.stopAt = 0.2;
  EXPECT_THROW(RawPCMReader::read(data, format, {}, {.observer = &impatient}), Cancelled);
  EXPECT_LT(impatient.last, 0.5);
}

TEST(RawPCMProcessingFormat, ChoosesTheLayoutByChannelCount) {
  const auto layoutOf = [](std::int64_t channels) {
    return RawPCMReader::processingFormat(48000, channels)->layout;
  };
  EXPECT_FALSE(layoutOf(1));
  EXPECT_FALSE(layoutOf(2));
  EXPECT_EQ(layoutOf(3)->tag, ChannelLayoutTags::mpeg30A);
  EXPECT_EQ(layoutOf(4)->tag, ChannelLayoutTags::quadraphonic);
  EXPECT_EQ(layoutOf(5)->tag, ChannelLayoutTags::mpeg50A);
  EXPECT_EQ(layoutOf(6)->tag, ChannelLayoutTags::mpeg51A);
  EXPECT_EQ(layoutOf(8)->tag, ChannelLayoutTags::mpeg71C);
  for (std::int64_t channels = 3; channels <= 64; ++channels) {
    ASSERT_TRUE(layoutOf(channels)) << channels;
    EXPECT_EQ(layoutOf(channels)->labels.size(), static_cast<std::size_t>(channels));
  }
  EXPECT_FALSE(RawPCMReader::processingFormat(48000, 0));
  EXPECT_FALSE(RawPCMReader::processingFormat(48000, 0x10000));
}

TEST(RawPCMProcessingFormat, IsDiscreteAndUnlabelledForSevenAndFromNineOn) {
  for (const std::uint32_t channels : {7U, 9U, 64U}) {
    const auto layout = RawPCMReader::processingFormat(48000, channels)->layout;
    EXPECT_EQ(layout->tag, ChannelLayoutTags::discreteInOrder | channels);
    EXPECT_EQ(layout->labels[0], ChannelLabel::discrete0);
  }
}

TEST(RawPCMFill, DoesNothingWithoutFramesOrChannels) {
  const auto mono = PCMBuffer::make({.sampleRate = 8000, .channelCount = 1}, 4);
  mono->channel(0)[0] = 3;
  const auto format = declared(Encoding::uint8, 1);
  RawPCMReader::fill(*mono, noise(4), format, 0, 4);
  EXPECT_EQ(mono->channel(0)[0], 3);
  const auto none = PCMBuffer::make({.sampleRate = 8000, .channelCount = 0}, 4);
  RawPCMReader::fill(*none, noise(4), format, 4, 4);
  EXPECT_EQ(none->frameLength(), 0U);
}

TEST(RawPCMFill, LeavesTheFrameLengthAlone) {
  const auto mono = PCMBuffer::make({.sampleRate = 8000, .channelCount = 1}, 4);
  RawPCMReader::fill(*mono, bytes({0, 64, 128, 255}), declared(Encoding::uint8, 1), 3, 4);
  EXPECT_EQ(mono->frameLength(), 0U);
  EXPECT_EQ(mono->channel(0)[1], -0.5F);
  EXPECT_EQ(mono->channel(0)[3], 0.0F);
}

TEST(RawPCMFillDeathTest, StopsWhenThePayloadDoesNotHoldTheFrames) {
  const auto mono = PCMBuffer::make({.sampleRate = 8000, .channelCount = 1}, 10);
  EXPECT_DEATH(RawPCMReader::fill(*mono, noise(4), declared(Encoding::uint8, 1), 10, 10),
               "payload must hold");
}

}  // namespace
}  // namespace orvane
