#include "cli/options/source_options.h"

#include <gtest/gtest.h>

#include "cli/usage_error.h"

namespace orvane::cli {
namespace {

using Parts = std::map<std::string, std::string>;

std::string errorOf(const std::string& text, const Parts& parts = {}) {
  try {
    rawFormatOf(text, parts);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST(SourceOptions, ReadsEncodingRateAndChannels) {
  const RawPCMFormat format = rawFormatOf("s24be,44100,6");
  EXPECT_EQ(format.encoding, RawPCMFormat::Encoding::int24Packed);
  EXPECT_EQ(format.endianness, RawPCMFormat::Endianness::big);
  EXPECT_EQ(format.sampleRate, 44100);
  EXPECT_EQ(format.channelCount, 6);
  EXPECT_FALSE(format.isPlanar);
  EXPECT_EQ(format.headerSkipBytes, 0);
  EXPECT_EQ(format.trailingBytesTolerance, 0);
}

TEST(SourceOptions, ReadsTheChoicesInAnyOrder) {
  const RawPCMFormat format = rawFormatOf("F32LE,48000.5,2,tolerate=3,planar,skip=44");
  EXPECT_EQ(format.encoding, RawPCMFormat::Encoding::float32);
  EXPECT_EQ(format.sampleRate, 48000.5);
  EXPECT_TRUE(format.isPlanar);
  EXPECT_EQ(format.headerSkipBytes, 44);
  EXPECT_EQ(format.trailingBytesTolerance, 3);
}

TEST(SourceOptions, KnowsEveryToken) {
  for (const auto token : RawPCMFormat::allFormatTokens())
    EXPECT_EQ(rawFormatOf(std::string(token) + ",8000,1").formatToken(), token);
}

TEST(SourceOptions, TakesWhatTheTextLeavesOutFromOptionsOfItsOwn) {
  const Parts parts = {{"rate", "48000"},
                       {"channels", "2"},
                       {"skip", "512"},
                       {"tolerate", "1"},
                       {"layout", "planar"}};
  EXPECT_EQ(rawFormatOf("s24le", parts), rawFormatOf("s24le,48000,2,skip=512,tolerate=1,planar"));
  EXPECT_EQ(rawFormatOf("s24le,48000,2", {{"skip", "512"}}), rawFormatOf("s24le,48000,2,skip=512"));
}

TEST(SourceOptions, WritesAFormatAsItReadsIt) {
  for (const char* const text :
       {"s16le,48000,2", "u8,8000,1,skip=44", "f64be,44100.5,64,planar,skip=1,tolerate=2"})
    EXPECT_EQ(rawOptionText(rawFormatOf(text)), text);
}

TEST(SourceOptions, SaysWhatIsMissing) {
  const std::string example =
      " is missing; say s16le,48000,2 or --raw s16le --rate 48000 --channels 2";
  EXPECT_EQ(errorOf("s16le"), "--raw: rate" + example);
  EXPECT_EQ(errorOf("s16le", {{"channels", "2"}}), "--raw: rate" + example);
  EXPECT_EQ(errorOf("s16le", {{"rate", "48000"}}), "--raw: channels" + example);
  EXPECT_EQ(errorOf("s16le,48000"), "--raw: channels" + example);
}

TEST(SourceOptions, RefusesWhatIsStatedTwice) {
  EXPECT_EQ(errorOf("s16le,48000,2", {{"rate", "48000"}}), "--raw: rate is stated twice");
  EXPECT_EQ(errorOf("s16le,48000,2", {{"channels", "1"}}), "--raw: channels is stated twice");
  EXPECT_EQ(errorOf("s16le,48000,2,skip=1", {{"skip", "1"}}), "--raw: skip is stated twice");
  EXPECT_EQ(errorOf("s16le,48000,2,tolerate=1,tolerate=2"), "--raw: tolerate is stated twice");
  EXPECT_EQ(errorOf("s16le,48000,2,planar", {{"layout", "planar"}}),
            "--raw: layout is stated twice");
  EXPECT_EQ(errorOf("s16le,48000,2,planar,interleaved"), "--raw: layout is stated twice");
}

TEST(SourceOptions, NamesAnUnknownEncodingAndAllKnownOnes) {
  const std::string error = errorOf("s17le,48000,2");
  EXPECT_EQ(error.find("--raw: unknown encoding 's17le'; one of u8 s16le s16be"), 0U) << error;
  EXPECT_NE(error.find("f64be"), std::string::npos);
}

TEST(SourceOptions, ReadsOptionsAsStrictlyAsTheText) {
  const Parts parts = {{"rate", "48k"}, {"channels", "2"}};
  EXPECT_EQ(errorOf("s16le", parts), "--raw: the rate must be 100 Hz to 10 MHz, not '48k'");
  EXPECT_EQ(errorOf("s16le,48000,2", {{"skip", "-1"}}),
            "--raw: skip takes a number of bytes, not '-1'");
}

TEST(SourceOptions, RefusesRatesThatAreNoneOrOutOfRange) {
  for (const char* rate :
       {"", "x", "0", "-48000", "99", "10000001", "nan", "inf", "1e400", "48k"}) {
    EXPECT_EQ(errorOf("s16le," + std::string(rate) + ",2"),
              "--raw: the rate must be 100 Hz to 10 MHz, not '" + std::string(rate) + "'");
  }
}

TEST(SourceOptions, RefusesChannelCountsOutOfRange) {
  for (const char* count : {"", "x", "0", "-1", "65", "2.0", "99999999999999999999"}) {
    EXPECT_EQ(errorOf("s16le,48000," + std::string(count)),
              "--raw: the channels must be 1 to 64, not '" + std::string(count) + "'");
  }
}

TEST(SourceOptions, RefusesWrongChoices) {
  EXPECT_EQ(errorOf("s16le,48000,2,skip=-1"), "--raw: skip takes a number of bytes, not '-1'");
  EXPECT_EQ(errorOf("s16le,48000,2,tolerate=x"),
            "--raw: tolerate takes a number of bytes, not 'x'");
  EXPECT_EQ(errorOf("s16le,48000,2,skip=9223372036854775808"),
            "--raw: skip takes a number of bytes, not '9223372036854775808'");
  for (const char* part : {"", "skip", "planar=1", "offset=3"}) {
    const std::string error = errorOf("s16le,48000,2," + std::string(part));
    EXPECT_EQ(error.find("--raw: unknown part '" + std::string(part) + "'"), 0U) << error;
  }
}

}  // namespace
}  // namespace orvane::cli
