#include "orvane/container/chunked/wave_file.h"

#include <gtest/gtest.h>

#include "tests/support/container_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::formFile;
using test::waveFormatBody;
using enum ChannelLabel;
using Labels = std::vector<ChannelLabel>;

class RiffParser : public testing::Test {
 protected:
  PCMStream parse(const Bytes& bytes) {
    const InputFile file(folder_.write("a.wav", bytes));
    return parseRIFF(file, 0);
  }

  PCMStream parseFormat(const test::WaveFormat& format, std::size_t dataBytes = 48) {
    return parse(test::waveFile(format, Bytes(dataBytes)));
  }

  std::optional<Labels> labelsOf(const test::WaveFormat& format) {
    const auto layout = parseFormat(format).description.layout;
    return layout ? std::optional(layout->labels) : std::nullopt;
  }

  test::TemporaryDirectory folder_;
};

TEST_F(RiffParser, DescribesPlainPCM) {
  const PCMStream stream = parseFormat({.channels = 2, .sampleRate = 44100, .bits = 24});
  EXPECT_EQ(stream.description.fileTypeID, fourCCFrom("WAVE"));
  EXPECT_EQ(stream.description.dataFormat,
            (StreamDescription{.sampleRate = 44100,
                               .formatID = kFormatLinearPCM,
                               .formatFlags = kFormatFlagIsSignedInteger | kFormatFlagIsPacked,
                               .bytesPerPacket = 6,
                               .framesPerPacket = 1,
                               .bytesPerFrame = 6,
                               .channelsPerFrame = 2,
                               .bitsPerChannel = 24}));
  EXPECT_EQ(stream.dataOffset, 44U);
  EXPECT_EQ(stream.frameCount, 8);
  EXPECT_EQ(stream.chunkList.chunks.size(), 2U);
  EXPECT_TRUE(stream.description.warnings.empty());
}

TEST_F(RiffParser, TakesEightBitsForUnsignedAndMoreForSigned) {
  EXPECT_EQ(parseFormat({.bits = 8}).sample.kind, SampleEncoding::Kind::unsignedInteger);
  EXPECT_EQ(parseFormat({.bits = 5}).sample.kind, SampleEncoding::Kind::unsignedInteger);
  EXPECT_EQ(parseFormat({.bits = 9}).sample.kind, SampleEncoding::Kind::signedInteger);
  EXPECT_EQ(parseFormat({.bits = 9}).sample.bytes, 2U);
}

TEST_F(RiffParser, TakesValidBitsOfAnExtensibleFormatForTheDepth) {
  const PCMStream stream = parseFormat({.bits = 24, .mask = 3, .validBits = 20});
  EXPECT_EQ(stream.description.dataFormat.bitsPerChannel, 20U);
  EXPECT_EQ(stream.sample.bytes, 3U);
  EXPECT_NE(stream.description.dataFormat.formatFlags & kFormatFlagIsAlignedHigh, 0U);
  EXPECT_EQ(parseFormat({.bits = 32, .mask = 3, .validBits = 24}).sample.bytes, 4U);
  // Valid bits that are missing or too many say nothing.
  EXPECT_EQ(
      parseFormat({.bits = 24, .mask = 3, .validBits = 0}).description.dataFormat.bitsPerChannel,
      24U);
  EXPECT_EQ(
      parseFormat({.bits = 24, .mask = 3, .validBits = 99}).description.dataFormat.bitsPerChannel,
      24U);
}

TEST_F(RiffParser, BelievesTheFrameSizeWhereTwentyFourBitsTakeFourBytes) {
  EXPECT_EQ(parseFormat({.channels = 2, .bits = 24, .blockAlign = 8}).sample.bytes, 4U);
  EXPECT_EQ(parseFormat({.channels = 2, .bits = 16, .blockAlign = 0}).sample.bytes, 2U);
  EXPECT_EQ(parseFormat({.channels = 2, .bits = 16, .blockAlign = 9999}).sample.bytes, 2U);
}

TEST_F(RiffParser, TakesFloatFromTagAndSubformat) {
  for (const test::WaveFormat& format :
       {test::WaveFormat{.tag = 3, .bits = 32}, test::WaveFormat{.tag = 3, .bits = 32, .mask = 3},
        test::WaveFormat{.tag = 3, .bits = 32, .mask = 0, .isAmbisonic = true}}) {
    const PCMStream stream = parseFormat(format);
    EXPECT_EQ(stream.sample.kind, SampleEncoding::Kind::floatingPoint);
    EXPECT_EQ(stream.description.dataFormat.formatFlags, kFormatFlagIsFloat | kFormatFlagIsPacked);
  }
}

TEST_F(RiffParser, ReadsABigEndianFile) {
  const Bytes bytes =
      formFile("RIFX", "WAVE",
               {{.id = "fmt ", .body = waveFormatBody({.bits = 16}, std::endian::big)},
                {.id = "data", .body = Bytes(8)}});
  const PCMStream stream = parse(bytes);
  EXPECT_EQ(stream.description.fileTypeID, fourCCFrom("WAVE"));
  EXPECT_TRUE(stream.sample.isBigEndian);
  EXPECT_EQ(stream.description.dataFormat.sampleRate, 48000);
  EXPECT_EQ(stream.frameCount, 2);
}

TEST_F(RiffParser, TakesLongSizesFromTheirChunk) {
  for (const char* form : {"RF64", "BW64"}) {
    const PCMStream stream =
        parse(formFile(form, "WAVE",
                       {{.id = "ds64", .body = test::longSizesBody(1000, 8, 2)},
                        {.id = "fmt ", .body = waveFormatBody({})},
                        {.id = "data", .body = Bytes(8), .statedSize = 0xFFFFFFFF},
                        {.id = "LIST", .body = Bytes(4)}}));
    EXPECT_EQ(stream.description.fileTypeID, fourCCFrom(form));
    EXPECT_EQ(stream.frameCount, 2);
    EXPECT_EQ(stream.chunkList.chunks.size(), 4U);
    EXPECT_TRUE(stream.description.warnings.empty());
  }
}

TEST_F(RiffParser, ReadsTheTableOfLongSizes) {
  Bytes sizes = test::longSizesBody(1000, 8, 2);
  sizes[24] = std::byte{1};
  const Bytes entry = test::ByteWriter().text("big ").u64(6).bytes();
  sizes.insert(sizes.end(), entry.begin(), entry.end());
  const PCMStream stream =
      parse(formFile("RF64", "WAVE",
                     {{.id = "ds64", .body = sizes},
                      {.id = "big ", .body = Bytes(6), .statedSize = 0xFFFFFFFF},
                      {.id = "fmt ", .body = waveFormatBody({})},
                      {.id = "data", .body = Bytes(8), .statedSize = 0xFFFFFFFF}}));
  EXPECT_EQ(stream.frameCount, 2);
}

TEST_F(RiffParser, TakesCommonLayoutsWhereAFileHasNone) {
  EXPECT_EQ(labelsOf({.channels = 2}), (Labels{left, right}));
  EXPECT_EQ(labelsOf({.channels = 3}), (Labels{left, right, center}));
  EXPECT_EQ(labelsOf({.channels = 4}), (Labels{left, right, leftSurround, rightSurround}));
  EXPECT_EQ(labelsOf({.channels = 5}), (Labels{left, right, center, leftSurround, rightSurround}));
  EXPECT_EQ(labelsOf({.channels = 6}),
            (Labels{left, right, center, lfe, leftSurround, rightSurround}));
  EXPECT_EQ(labelsOf({.channels = 7}),
            (Labels{left, right, center, lfe, centerSurround, leftSurround, rightSurround}));
  EXPECT_EQ(labelsOf({.channels = 8}), (Labels{left, right, center, lfe, rearSurroundLeft,
                                               rearSurroundRight, leftSurround, rightSurround}));
  EXPECT_EQ(labelsOf({.channels = 9}), std::nullopt);
}

TEST_F(RiffParser, TakesTheLayoutFromTheMask) {
  EXPECT_EQ(labelsOf({.channels = 6, .mask = 0x60F}),
            (Labels{left, right, center, lfe, leftSurround, rightSurround}));
  EXPECT_EQ(labelsOf({.channels = 2, .mask = 0x30}), (Labels{leftSurround, rightSurround}));
  EXPECT_EQ(labelsOf({.channels = 4, .mask = 0}), std::nullopt);  // explicitly none
}

TEST_F(RiffParser, NamesTheCodecOfCompressedFiles) {
  const auto code = [&](std::uint16_t tag) {
    return parseFormat({.tag = tag, .bits = 8}).description.dataFormat.formatID;
  };
  EXPECT_EQ(code(0x06), fourCCFrom("alaw"));
  EXPECT_EQ(code(0x07), fourCCFrom("ulaw"));
  EXPECT_EQ(code(0x11), fourCCFrom("ima4"));
  EXPECT_EQ(code(0x31), fourCCFrom("agsm"));
  EXPECT_EQ(code(0x50), fourCCFrom(".mp2"));
  EXPECT_EQ(code(0x55), fourCCFrom(".mp3"));
  EXPECT_EQ(code(0xFF), fourCCFrom("aac "));
  EXPECT_EQ(parseFormat({.tag = 7, .bits = 8}).description.dataFormat.bitsPerChannel, 0U);
}

TEST_F(RiffParser, ReadsAFileBehindATag) {
  const Bytes tag = test::ByteWriter().text("ID3").u8(4).zeros(5).u8(20).zeros(20).bytes();
  const Bytes wave = test::waveFile({}, Bytes(8));
  const auto path = folder_.write("b.wav", test::ByteWriter().append(tag).append(wave).bytes());
  const auto file = AudioFile::open(path);
  EXPECT_EQ(file->frameLength(), 2);
  EXPECT_EQ(file->description().fileTypeID, fourCCFrom("WAVE"));
}

}  // namespace
}  // namespace orvane
