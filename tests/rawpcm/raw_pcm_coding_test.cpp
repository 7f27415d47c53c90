#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "orvane/rawpcm/raw_pcm_format.h"
#include "orvane/text/json/json_text.h"
#include "tests/support/doubled_keys.h"

namespace orvane {
namespace {

const RawPCMFormat kFormat{.sampleRate = 44100.5,
                           .channelCount = 6,
                           .encoding = RawPCMFormat::Encoding::int24In32,
                           .endianness = RawPCMFormat::Endianness::big,
                           .isPlanar = true,
                           .headerSkipBytes = 44,
                           .trailingBytesTolerance = 3};

const std::string kText =
    R"({"sampleRate":44100.5,"channelCount":6,"encoding":"int24In32","endianness":"big",)"
    R"("isPlanar":true,"headerSkipBytes":44,"trailingBytesTolerance":3})";

/// The text with one part of it put otherwise.
std::string with(const std::string& part, const std::string& replacement) {
  std::string text = kText;
  const auto place = text.find(part);
  EXPECT_NE(place, std::string::npos) << part;
  return text.replace(place, part.size(), replacement);
}

RawPCMFormat decode(const std::string& text) {
  return decodeJSON<RawPCMFormat>(text);
}

TEST(RawPCMFormatJSON, HasTheSevenFieldsUnderTheirNames) {
  EXPECT_EQ(encodeJSON(kFormat), kText);
  EXPECT_EQ(decode(kText), kFormat);
}

TEST(RawPCMFormatJSON, WritesEveryEncodingAndByteOrderAsItsRawValue) {
  for (const auto encoding : kAllRawPCMEncodings)
    for (const auto endianness : kAllRawPCMEndiannesses) {
      auto format = kFormat;
      format.encoding = encoding;
      format.endianness = endianness;
      const auto text = encodeJSON(format);
      EXPECT_NE(text.find("\"" + std::string(rawValue(encoding)) + "\""), std::string::npos);
      EXPECT_NE(text.find("\"" + std::string(rawValue(endianness)) + "\""), std::string::npos);
      EXPECT_EQ(decode(text), format);
    }
}

TEST(RawPCMFormatJSON, RefusesAKeyThatStandsThereTwice) {
  test::expectEachKeyOnce(kText, decode);
}

TEST(RawPCMFormatJSON, NeedsEveryKey) {
  const char* const keys[] = {
      "sampleRate",      "channelCount",          "encoding", "endianness", "isPlanar",
      "headerSkipBytes", "trailingBytesTolerance"};
  for (const std::string key : keys) {
    try {
      decode(with("\"" + key + "\"", "\"_" + key + "\""));
      FAIL() << key;
    } catch (const DecodingError& error) {
      EXPECT_EQ(error.kind(), DecodingError::Case::keyNotFound) << key;
    }
  }
}

TEST(RawPCMFormatJSON, PassesForeignKeysOver) {
  EXPECT_EQ(decode(with("{", R"({"comment":{"by":["field recorder"]},)")), kFormat);
}

TEST(RawPCMFormatJSON, RefusesValuesOfAnotherType) {
  const std::pair<const char*, const char*> replacements[] = {{"44100.5", R"("44100.5")"},
                                                              {"44100.5", "true"},
                                                              {":6", ":2.5"},
                                                              {":6", R"(:"6")"},
                                                              {":6", ":true"},
                                                              {":6", ":null"},
                                                              {":6", ":1e30"},
                                                              {"int24In32", "Int24In32"},
                                                              {R"("int24In32")", "16"},
                                                              {R"("big")", R"("middle")"},
                                                              {R"("big")", "null"},
                                                              {"true", "1"},
                                                              {"true", R"("true")"},
                                                              {":44,", R"(:"44",)"},
                                                              {":3}", ":0.5}"},
                                                              {":44,", ":18446744073709551615,"}};
  for (const auto& [part, replacement] : replacements)
    EXPECT_THROW(decode(with(part, replacement)), DecodingError) << replacement;
  EXPECT_THROW(decode("3"), DecodingError);
  EXPECT_THROW(decode("[]"), DecodingError);
}

TEST(RawPCMFormatJSON, WritesARateThatIsNoNumberAsNull) {
  auto format = kFormat;
  format.sampleRate = std::numeric_limits<double>::quiet_NaN();
  const auto text = encodeJSON(format);
  EXPECT_EQ(text, with("44100.5", "null"));
  EXPECT_EQ(decode(text).sampleRate, -std::numeric_limits<double>::infinity());
}

}  // namespace
}  // namespace orvane
