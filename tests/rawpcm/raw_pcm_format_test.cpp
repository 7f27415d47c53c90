#include "orvane/rawpcm/raw_pcm_format.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <unordered_set>

namespace orvane {
namespace {

using Encoding = RawPCMFormat::Encoding;
using Endianness = RawPCMFormat::Endianness;

RawPCMFormat stereo16() {
  return {.sampleRate = 48000, .channelCount = 2, .encoding = Encoding::int16};
}

TEST(RawPCMEncoding, HasTheFactsOfItsTable) {
  struct Row {
    Encoding encoding;
    std::string_view raw;
    int depth;
    std::int64_t bytes;
    bool matters;
  };
  const Row rows[] = {
      {Encoding::uint8, "uint8", 8, 1, false},
      {Encoding::int16, "int16", 16, 2, true},
      {Encoding::int24Packed, "int24Packed", 24, 3, true},
      {Encoding::int24In32, "int24In32", 24, 4, true},
      {Encoding::int32, "int32", 32, 4, true},
      {Encoding::float32, "float32", 32, 4, true},
      {Encoding::float64, "float64", 64, 8, true},
  };
  ASSERT_EQ(std::size(rows), kAllRawPCMEncodings.size());
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const Row& row = rows[i];
    EXPECT_EQ(kAllRawPCMEncodings[i], row.encoding);
    EXPECT_EQ(rawValue(row.encoding), row.raw);
    EXPECT_EQ(rawPCMEncodingFromRawValue(row.raw), row.encoding);
    EXPECT_EQ(bitDepth(row.encoding), row.depth);
    EXPECT_EQ(bytesPerSample(row.encoding), row.bytes);
    EXPECT_EQ(endiannessMatters(row.encoding), row.matters);
  }
  EXPECT_FALSE(rawPCMEncodingFromRawValue("Int16"));
  EXPECT_FALSE(rawPCMEncodingFromRawValue(""));
}

TEST(RawPCMEndianness, HasTwoRawValues) {
  EXPECT_EQ(rawValue(Endianness::little), "little");
  EXPECT_EQ(rawValue(Endianness::big), "big");
  EXPECT_EQ(rawPCMEndiannessFromRawValue("little"), Endianness::little);
  EXPECT_EQ(rawPCMEndiannessFromRawValue("big"), Endianness::big);
  EXPECT_FALSE(rawPCMEndiannessFromRawValue("LITTLE"));
  EXPECT_EQ(kAllRawPCMEndiannesses[0], Endianness::little);
}

TEST(RawPCMFormat, BytesPerFrameIsSampleBytesTimesChannels) {
  auto format = stereo16();
  EXPECT_EQ(format.bytesPerFrame(), 4);
  format.encoding = Encoding::int24Packed;
  format.channelCount = 6;
  EXPECT_EQ(format.bytesPerFrame(), 18);
}

TEST(RawPCMFormatDeathTest, StopsWhenBytesPerFrameOverflows) {
  auto format = stereo16();
  format.channelCount = std::numeric_limits<std::int64_t>::max();
  EXPECT_DEATH(static_cast<void>(format.bytesPerFrame()), "bytes of one frame");
}

TEST(RawPCMFormat, ShapeIsValidWithinItsBounds) {
  EXPECT_TRUE(stereo16().isShapeValid());
  auto format = stereo16();
  format.channelCount = 64;
  EXPECT_TRUE(format.isShapeValid());
}

TEST(RawPCMFormat, ShapeIsInvalidForAnImpossibleRateChannelCountSkipOrTolerance) {
  const double badRates[] = {0, -1, std::numeric_limits<double>::quiet_NaN(),
                             std::numeric_limits<double>::infinity()};
  for (const double rate : badRates) {
    auto format = stereo16();
    format.sampleRate = rate;
    EXPECT_FALSE(format.isShapeValid()) << rate;
  }
  for (const std::int64_t channels : {-1, 0, 65}) {
    auto format = stereo16();
    format.channelCount = channels;
    EXPECT_FALSE(format.isShapeValid()) << channels;
  }
  auto skip = stereo16();
  skip.headerSkipBytes = -1;
  EXPECT_FALSE(skip.isShapeValid());
  auto tolerance = stereo16();
  tolerance.trailingBytesTolerance = -1;
  EXPECT_FALSE(tolerance.isShapeValid());
}

TEST(RawPCMFormatFrameCount, DividesThePayload) {
  auto format = stereo16();
  EXPECT_EQ(format.frameCount(4000), 1000);
  format.headerSkipBytes = 44;
  EXPECT_EQ(format.frameCount(4044), 1000);
}

TEST(RawPCMFormatFrameCount, IsAbsentWithoutAPayload) {
  auto format = stereo16();
  format.headerSkipBytes = 44;
  EXPECT_FALSE(format.frameCount(44));
  EXPECT_FALSE(format.frameCount(43));
  EXPECT_FALSE(format.frameCount(0));
  EXPECT_FALSE(format.frameCount(std::numeric_limits<std::int64_t>::min()));
}

TEST(RawPCMFormatFrameCount, IsAbsentForAnInvalidShape) {
  auto format = stereo16();
  format.channelCount = 65;
  EXPECT_FALSE(format.frameCount(65 * 2 * 10));
}

TEST(RawPCMFormatFrameCount, AcceptsToleratedBytesOfInterleavedFilesOnly) {
  auto format = stereo16();
  EXPECT_FALSE(format.frameCount(1001));
  format.trailingBytesTolerance = 1;
  EXPECT_EQ(format.frameCount(1001), 250);
  EXPECT_FALSE(format.frameCount(1002));
  format.isPlanar = true;
  EXPECT_FALSE(format.frameCount(1001));
  EXPECT_EQ(format.frameCount(1000), 250);
}

TEST(RawPCMFormatFrameCount, IsAbsentForLessThanOneFrameEvenWithinTheTolerance) {
  auto format = stereo16();
  format.trailingBytesTolerance = 3;
  EXPECT_FALSE(format.frameCount(3));
  EXPECT_EQ(format.frameCount(7), 1);
}

TEST(RawPCMFormatToken, NamesEncodingAndByteOrder) {
  std::vector<std::string> tokens;
  for (const Encoding encoding : kAllRawPCMEncodings)
    for (const Endianness endianness : kAllRawPCMEndiannesses) {
      if (!endiannessMatters(encoding) && endianness == Endianness::big) continue;
      auto format = stereo16();
      format.encoding = encoding;
      format.endianness = endianness;
      tokens.push_back(format.formatToken());
      EXPECT_EQ(format.fileFormatLabel(), "RAW " + tokens.back());
      EXPECT_EQ(RawPCMFormat::encodingAndEndianness(tokens.back()),
                std::pair(encoding, endianness));
    }
  const auto& all = RawPCMFormat::allFormatTokens();
  EXPECT_EQ(tokens, std::vector<std::string>(all.begin(), all.end()));
}

TEST(RawPCMFormatToken, OfEightBitsHasNoByteOrder) {
  auto format = stereo16();
  format.encoding = Encoding::uint8;
  format.endianness = Endianness::big;
  EXPECT_EQ(format.formatToken(), "u8");
  EXPECT_EQ(format.fileFormatLabel(), "RAW u8");
}

TEST(RawPCMFormatToken, IsParsedInAnyCaseOfLetters) {
  EXPECT_EQ(RawPCMFormat::encodingAndEndianness("S16LE"),
            std::pair(Encoding::int16, Endianness::little));
  EXPECT_EQ(RawPCMFormat::encodingAndEndianness("S24_32Be"),
            std::pair(Encoding::int24In32, Endianness::big));
  EXPECT_EQ(RawPCMFormat::encodingAndEndianness("U8"),
            std::pair(Encoding::uint8, Endianness::little));
}

TEST(RawPCMFormatToken, IsNotParsedWhenItIsNone) {
  for (const auto* text : {"u8le", "u8be", "s24", "s16", "", "le", "be", "s16le ", " s16le", "s8le",
                           "s16ne", "f16le", "le16s", "uint8", "s16lele"})
    EXPECT_FALSE(RawPCMFormat::encodingAndEndianness(text)) << text;
}

TEST(RawPCMFormatSummary, JoinsWhatIsDeclared) {
  RawPCMFormat format{.sampleRate = 48000,
                      .channelCount = 2,
                      .encoding = Encoding::int24Packed,
                      .headerSkipBytes = 44};
  EXPECT_EQ(format.summary(), "48 kHz · 2 ch · s24le · skip 44 B");
  format.isPlanar = true;
  format.trailingBytesTolerance = 3;
  format.endianness = Endianness::big;
  EXPECT_EQ(format.summary(), "48 kHz · 2 ch · s24be · planar · skip 44 B · tolerate 3 B");
}

TEST(RawPCMFormatSummary, WritesKilohertzOnlyForMultiplesOfAHundred) {
  const std::pair<double, std::string> cases[] = {
      {44100, "44.1 kHz"}, {48000, "48 kHz"},  {22050, "22050 Hz"},        {11025, "11025 Hz"},
      {1000, "1 kHz"},     {900, "900 Hz"},    {44100.5, "44100.5 Hz"},    {192000, "192 kHz"},
      {8000, "8 kHz"},     {1e9, "1e+06 kHz"}, {1234567, "1.23457e+06 Hz"}};
  for (const auto& [rate, text] : cases) {
    const RawPCMFormat format{.sampleRate = rate, .channelCount = 1, .encoding = Encoding::uint8};
    EXPECT_EQ(format.summary(), text + " · 1 ch · u8");
  }
}

TEST(RawPCMFormat, IsEqualAndHashedByAllFields) {
  const RawPCMFormat base = stereo16();
  std::vector<RawPCMFormat> variants(8, base);
  variants[1].sampleRate = 44100;
  variants[2].channelCount = 1;
  variants[3].encoding = Encoding::int32;
  variants[4].endianness = Endianness::big;
  variants[5].isPlanar = true;
  variants[6].headerSkipBytes = 1;
  variants[7].trailingBytesTolerance = 1;
  std::unordered_set<RawPCMFormat> set(variants.begin(), variants.end());
  EXPECT_EQ(set.size(), 8U);
  EXPECT_TRUE(set.contains(stereo16()));
}

}  // namespace
}  // namespace orvane
