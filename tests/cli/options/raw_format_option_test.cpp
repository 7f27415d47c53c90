#include "cli/options/raw_format_option.h"

#include <gtest/gtest.h>

#include "cli/usage_error.h"

namespace orvane::cli {
namespace {

std::string errorOf(const std::string& text) {
  try {
    RawFormatOption::parse(text);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST(RawFormatOption, ReadsEncodingRateAndChannels) {
  const RawPCMFormat format = RawFormatOption::parse("s24be,44100,6");
  EXPECT_EQ(format.encoding, RawPCMFormat::Encoding::int24Packed);
  EXPECT_EQ(format.endianness, RawPCMFormat::Endianness::big);
  EXPECT_EQ(format.sampleRate, 44100);
  EXPECT_EQ(format.channelCount, 6);
  EXPECT_FALSE(format.isPlanar);
  EXPECT_EQ(format.headerSkipBytes, 0);
  EXPECT_EQ(format.trailingBytesTolerance, 0);
}

TEST(RawFormatOption, ReadsTheChoicesInAnyOrder) {
  const RawPCMFormat format = RawFormatOption::parse("F32LE,48000.5,2,tolerate=3,planar,skip=44");
  EXPECT_EQ(format.encoding, RawPCMFormat::Encoding::float32);
  EXPECT_EQ(format.sampleRate, 48000.5);
  EXPECT_TRUE(format.isPlanar);
  EXPECT_EQ(format.headerSkipBytes, 44);
  EXPECT_EQ(format.trailingBytesTolerance, 3);
}

TEST(RawFormatOption, KnowsEveryToken) {
  for (const auto token : RawPCMFormat::allFormatTokens())
    EXPECT_EQ(RawFormatOption::parse(std::string(token) + ",8000,1").formatToken(), token);
}

TEST(RawFormatOption, SaysWhatIsMissing) {
  for (const char* text : {"", "s16le", "s16le,48000"})
    EXPECT_EQ(errorOf(text), "--raw: ENCODING,RATE,CHANNELS are needed, as in s16le,48000,2");
}

TEST(RawFormatOption, NamesAnUnknownEncodingAndAllKnownOnes) {
  const std::string error = errorOf("s17le,48000,2");
  EXPECT_EQ(error.find("--raw: unknown encoding 's17le'; one of u8 s16le s16be"), 0U) << error;
  EXPECT_NE(error.find("f64be"), std::string::npos);
}

TEST(RawFormatOption, RefusesRatesThatAreNoneOrOutOfRange) {
  for (const char* rate :
       {"", "x", "0", "-48000", "99", "10000001", "nan", "inf", "1e400", "48k"}) {
    EXPECT_EQ(errorOf("s16le," + std::string(rate) + ",2"),
              "--raw: the rate must be 100 Hz to 10 MHz, not '" + std::string(rate) + "'");
  }
}

TEST(RawFormatOption, RefusesChannelCountsOutOfRange) {
  for (const char* count : {"", "x", "0", "-1", "65", "2.0", "99999999999999999999"}) {
    EXPECT_EQ(errorOf("s16le,48000," + std::string(count)),
              "--raw: the channels must be 1 to 64, not '" + std::string(count) + "'");
  }
}

TEST(RawFormatOption, RefusesWrongChoices) {
  EXPECT_EQ(errorOf("s16le,48000,2,skip=-1"), "--raw: skip takes a number of bytes, not '-1'");
  EXPECT_EQ(errorOf("s16le,48000,2,tolerate=x"),
            "--raw: tolerate takes a number of bytes, not 'x'");
  EXPECT_EQ(errorOf("s16le,48000,2,skip=9223372036854775808"),
            "--raw: skip takes a number of bytes, not '9223372036854775808'");
  EXPECT_EQ(errorOf("s16le,48000,2,skip=1,skip=2"), "--raw: 'skip' is given twice");
  for (const char* part : {"", "skip", "planar=1", "offset=3"}) {
    const std::string error = errorOf("s16le,48000,2," + std::string(part));
    EXPECT_EQ(error.find("--raw: unknown part '" + std::string(part) + "'"), 0U) << error;
  }
}

}  // namespace
}  // namespace orvane::cli
