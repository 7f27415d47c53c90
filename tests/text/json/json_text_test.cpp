#include "orvane/text/json/json_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>

#include "orvane/report/report_records.h"

namespace orvane {
namespace {

// The records that show each kind of value: LoudnessSample a 64-bit and a 32-bit number,
// ReportChannel an integer, a text and a Boolean, ReportViolations optionals and arrays.

constexpr float kInfinity = std::numeric_limits<float>::infinity();

std::string errorOf(const std::string& text) {
  try {
    decodeJSON<LoudnessSample>(text);
  } catch (const DecodingError& error) {
    return error.errorDescription();
  }
  return "none";
}

std::string channelErrorOf(const std::string& text) {
  try {
    decodeJSON<ReportChannel>(text);
  } catch (const DecodingError& error) {
    return error.errorDescription();
  }
  return "none";
}

std::string channelJSON(const std::string& label) {
  return R"({"index":0,"label":)" + label +
         R"(,"peakDB":0,"rmsDB":0,"crestFactorDB":0,"dcOffset":0,"hasClipping":false})";
}

std::string decodedLabel(const std::string& label) {
  return decodeJSON<ReportChannel>(channelJSON(label)).label;
}

std::string encodedLabel(const std::string& label) {
  const std::string text = encodeJSON(ReportChannel{.label = label});
  const auto start = text.find("\"label\":") + 8;
  return text.substr(start, text.find(",\"peakDB\"") - start);
}

TEST(JSONNumbers, HaveTheShortestDigitsOfTheirOwnWidth) {
  EXPECT_EQ(encodeJSON(LoudnessSample{0.1, 0.1F}), R"({"time":0.1,"lufs":0.1})");
  EXPECT_EQ(encodeJSON(LoudnessSample{1.0 / 3, -23.4F}),
            R"({"time":0.3333333333333333,"lufs":-23.4})");
  EXPECT_EQ(encodeJSON(LoudnessSample{36000, -0.0F}), R"({"time":36000,"lufs":-0})");
}

TEST(JSONNumbers, ReadBackAsTheSameBits) {
  std::mt19937_64 generator(11);
  for (int i = 0; i < 20'000; ++i) {
    const auto bits = generator();
    LoudnessSample sample;
    const auto low = static_cast<std::uint32_t>(bits);
    std::memcpy(&sample.time, &bits, sizeof bits);
    std::memcpy(&sample.lufs, &low, sizeof low);
    if (!std::isfinite(sample.time) || !std::isfinite(sample.lufs)) continue;
    EXPECT_EQ(decodeJSON<LoudnessSample>(encodeJSON(sample)), sample);
  }
}

TEST(JSONNumbers, AreNullWhenTheyAreNotFiniteAndReadBackAsMinusInfinity) {
  for (const float level : {-kInfinity, kInfinity, std::nanf("")}) {
    const std::string text = encodeJSON(LoudnessSample{1, level});
    EXPECT_EQ(text, R"({"time":1,"lufs":null})");
    EXPECT_EQ(decodeJSON<LoudnessSample>(text), (LoudnessSample{1, -kInfinity}));
  }
}

TEST(JSONNumbers, ReadInEveryFormOfTheGrammar) {
  const auto time = [](const std::string& number) {
    return decodeJSON<LoudnessSample>("{\"time\":" + number + ",\"lufs\":0}").time;
  };
  EXPECT_EQ(time("-0.5e+1"), -5);
  EXPECT_EQ(time("1E2"), 100);
  EXPECT_EQ(time("0"), 0);
  EXPECT_EQ(time("-1e-400"), 0);
  EXPECT_EQ(time("0." + std::string(400, '0') + "1"), 0);
}

TEST(JSONNumbers, BecomeAsSmallAsThirtyTwoBitsAllow) {
  EXPECT_EQ(decodeJSON<LoudnessSample>(R"({"time":0,"lufs":1e-60})").lufs, 0);
}

TEST(JSONNumbers, OutOfRangeAreRefused) {
  EXPECT_EQ(errorOf(R"({"time":1e999,"lufs":0})"), "\"time\" holds a number that is out of range.");
  EXPECT_EQ(errorOf(R"({"time":0,"lufs":1e39})"), "\"lufs\" holds a number that is out of range.");
}

TEST(JSONNumbers, OfOtherGrammarsAreRefused) {
  for (const char* number : {"+1", ".5", "1.", "01", "-", "1e", "0x10", "NaN", "Infinity", "-inf"})
    EXPECT_NE(errorOf("{\"time\":" + std::string(number) + ",\"lufs\":0}"), "none") << number;
}

TEST(JSONIntegers, MayBeWrittenLikeOtherNumbers) {
  const auto index = [](const std::string& number) {
    std::string text = channelJSON("\"\"");
    return decodeJSON<ReportChannel>(text.replace(9, 1, number)).index;
  };
  EXPECT_EQ(index("-7"), -7);
  EXPECT_EQ(index("2.0"), 2);
  EXPECT_EQ(index("1e3"), 1000);
  EXPECT_EQ(index("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(index("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
}

TEST(JSONIntegers, WithFractionsOrBeyondTheirRangeAreRefused) {
  for (const char* number : {"1.5", "9223372036854775808", "1e19", "-1e30"}) {
    std::string text = channelJSON("\"\"");
    EXPECT_EQ(channelErrorOf(text.replace(9, 1, number)),
              "\"index\" holds a number that is no integer.");
  }
}

TEST(JSONText, IsReadWithItsEscapes) {
  EXPECT_EQ(decodedLabel(R"("a\"\\\/\b\f\n\r\tz")"), "a\"\\/\b\f\n\r\tz");
  EXPECT_EQ(decodedLabel(R"("\u0041\u00e9\u20ac\ud83d\ude00")"), "A\u00E9\u20AC\U0001F600");
  EXPECT_EQ(decodedLabel("\"na\u00EFve \U0001F600\""), "na\u00EFve \U0001F600");
  EXPECT_EQ(decodedLabel("\"\""), "");
  EXPECT_EQ(decodedLabel(R"("\u0000")"), std::string(1, '\0'));
}

TEST(JSONText, WithBrokenEscapesIsRefused) {
  for (const char* label : {R"("\x")", R"("\u12")", R"("\u12g4")", R"("\ud83d")", R"("\ud83dx")",
                            R"("\ud83d\u0041")", R"("\ude00")", "\"\n\"", "\"\\"})
    EXPECT_NE(channelErrorOf(channelJSON(label)), "none") << label;
}

TEST(JSONText, ThatIsNoUTF8IsRefused) {
  EXPECT_EQ(channelErrorOf(channelJSON("\"\xC3(\"")), "\"label\" holds a text that is not UTF-8.");
}

TEST(JSONText, IsWrittenSoThatItReadsAsWhatItIs) {
  EXPECT_EQ(encodedLabel("\"\\\n\r\t\x1B\x7F"), R"("\"\\\n\r\t\u001b\u007f")");
  EXPECT_EQ(encodedLabel("a\u202Eb\u2028c\U000E0041"), R"("a\u202eb\u2028c\udb40\udc41")");
  EXPECT_EQ(encodedLabel("</script>"), R"("<\/script>")");
  EXPECT_EQ(encodedLabel("a/b"), R"("a/b")");
  EXPECT_EQ(encodedLabel("F\u266F \U0001F600"), "\"F\u266F \U0001F600\"");
}

TEST(JSONText, HasReplacementCharactersForWhatIsNoUTF8) {
  EXPECT_EQ(encodedLabel("a\xFFz\xE2\x82"), "\"a\uFFFDz\uFFFD\uFFFD\"");
}

TEST(JSONText, ReadsBackAsItWas) {
  const std::string hostile = "</script>\"'\\=cmd\x1B[31m\u202E\u200B\uFEFF\t\n\x01";
  EXPECT_EQ(decodeJSON<ReportChannel>(encodeJSON(ReportChannel{.label = hostile})).label, hostile);
}

TEST(JSONRecords, LeaveOutAbsentFieldsAndWriteEmptyArrays) {
  EXPECT_EQ(encodeJSON(ReportViolations{.shortTermThreshold = -10.5F}),
            R"({"shortTermThreshold":-10.5,"momentaryCount":0,"shortTermCount":0,)"
            R"("momentaryRanges":[],"shortTermRanges":[]})");
}

TEST(JSONRecords, LeaveOutOptionalNumbersThatAreNotFinite) {
  const ReportViolations violations{.momentaryThreshold = -kInfinity,
                                    .shortTermThreshold = std::nanf("")};
  EXPECT_EQ(encodeJSON(violations),
            R"({"momentaryCount":0,"shortTermCount":0,"momentaryRanges":[],"shortTermRanges":[]})");
}

TEST(JSONRecords, ReadNullAsAbsent) {
  const auto violations = decodeJSON<ReportViolations>(
      R"({"momentaryThreshold":null,"momentaryCount":1,"shortTermCount":2,)"
      R"("momentaryRanges":[{"start":1,"end":2.5}],"shortTermRanges":[]})");
  EXPECT_EQ(
      violations,
      (ReportViolations{.momentaryCount = 1, .shortTermCount = 2, .momentaryRanges = {{1, 2.5}}}));
}

TEST(JSONRecords, ReadKeysInAnyOrderAndPassOverUnknownOnes) {
  const auto sample = decodeJSON<LoudnessSample>(
      "\xEF\xBB\xBF { \"lufs\" : -1 ,\n\"x\":[1,{\"y\":\"}\\\"]\"},null,true,-2e1],\"z\":{},"
      "\"ti\\u006de\"\t:\r5 } \n");
  EXPECT_EQ(sample, (LoudnessSample{5, -1}));
}

// The last of two equal keys counted, so that two readers could see two different records.
TEST(JSONRecords, WithAKeyThatStandsThereTwiceAreRefused) {
  EXPECT_EQ(errorOf(R"({"time":1,"lufs":2,"time":1})"), "\"time\" stands there twice.");
  EXPECT_EQ(errorOf(R"({"time":1,"lufs":2,"ti\u006de":1})"), "\"time\" stands there twice.");
}

TEST(JSONRecords, MayHaveUnknownKeysTwice) {
  EXPECT_EQ(errorOf(R"({"x":0,"time":1,"x":0,"lufs":2})"), "none");
}

TEST(JSONRecords, WithoutARequiredKeyAreRefused) {
  EXPECT_EQ(errorOf(R"({"time":1})"), "The key \"lufs\" is missing.");
  EXPECT_EQ(errorOf("{}"), "The key \"time\" is missing.");
}

TEST(JSONRecords, WithValuesOfAnotherTypeAreRefused) {
  EXPECT_EQ(errorOf(R"({"time":"1","lufs":0})"), "\"time\" is a string, not a number.");
  EXPECT_EQ(errorOf(R"({"time":true,"lufs":0})"), "\"time\" is a Boolean, not a number.");
  EXPECT_EQ(errorOf(R"({"time":[],"lufs":0})"), "\"time\" is an array, not a number.");
  EXPECT_EQ(errorOf("[]"), "The document is an array, not an object.");
  EXPECT_EQ(errorOf("null"), "The document is null, not an object.");
  EXPECT_EQ(channelErrorOf(channelJSON("1")), "\"label\" is a number, not a string.");
  EXPECT_EQ(channelErrorOf(channelJSON("null")), "\"label\" is null, not a string.");
  EXPECT_EQ(channelErrorOf(R"({"index":{}})"), "\"index\" is an object, not an integer.");
  EXPECT_EQ(channelErrorOf(R"({"hasClipping":0})"), "\"hasClipping\" is a number, not a Boolean.");
}

TEST(JSONRecords, TellTheKindOfTheFailure) {
  const auto kind = [](const char* text) {
    try {
      decodeJSON<LoudnessSample>(text);
    } catch (const DecodingError& error) {
      return error.kind();
    }
    throw std::logic_error("decoded");
  };
  EXPECT_EQ(kind("{}"), DecodingError::Case::keyNotFound);
  EXPECT_EQ(kind("[]"), DecodingError::Case::typeMismatch);
  EXPECT_EQ(kind("{"), DecodingError::Case::dataCorrupted);
}

TEST(JSONDocuments, ThatAreNoneAreRefused) {
  EXPECT_EQ(errorOf(""), "The JSON ends too early.");
  EXPECT_EQ(errorOf(R"({"time":1,)"), "The JSON ends too early.");
  EXPECT_EQ(errorOf(R"({"time":1,"lufs":2)"), "The JSON ends too early.");
  EXPECT_EQ(errorOf(R"({"time":1,"lufs":2}x)"), "The JSON is malformed at byte 19.");
  EXPECT_EQ(errorOf(R"({"time":1 "lufs":2})"), "The JSON is malformed at byte 10.");
  EXPECT_EQ(errorOf(R"({,"time":1,"lufs":2})"), "The JSON is malformed at byte 1.");
  EXPECT_EQ(errorOf(R"({"time" 1})"), "The JSON is malformed at byte 8.");
  EXPECT_EQ(errorOf(R"({time:1})"), "The JSON is malformed at byte 1.");
  EXPECT_EQ(errorOf("{'time':1}"), "The JSON is malformed at byte 1.");
  EXPECT_EQ(errorOf("nonsense"), "The JSON is malformed at byte 0.");
}

TEST(JSONDocuments, NestedTooDeeplyAreRefused) {
  const std::string opened(100'000, '[');
  EXPECT_EQ(errorOf("{\"x\":" + opened), "The document is nested too deeply.");
}

TEST(JSONDocuments, WithATrailingCommaAreRefused) {
  EXPECT_NE(errorOf(R"({"time":1,"lufs":2,})"), "none");
  EXPECT_NE(errorOf(R"({"x":[1,],"time":1,"lufs":2})"), "none");
}

}  // namespace
}  // namespace orvane
