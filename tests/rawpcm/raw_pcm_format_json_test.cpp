#include "orvane/rawpcm/raw_pcm_format_json.h"

#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

namespace orvane {
namespace {

using nlohmann::json;

const RawPCMFormat kFormat{.sampleRate = 44100.5,
                           .channelCount = 6,
                           .encoding = RawPCMFormat::Encoding::int24In32,
                           .endianness = RawPCMFormat::Endianness::big,
                           .isPlanar = true,
                           .headerSkipBytes = 44,
                           .trailingBytesTolerance = 3};

constexpr const char* kText =
    R"({"channelCount":6,"encoding":"int24In32","endianness":"big","headerSkipBytes":44,)"
    R"("isPlanar":true,"sampleRate":44100.5,"trailingBytesTolerance":3})";

TEST(RawPCMFormatJSON, WritesTheSevenFields) {
  EXPECT_EQ(json(kFormat).dump(), kText);
}

TEST(RawPCMFormatJSON, ReadsWhatItWrites) {
  EXPECT_EQ(json::parse(kText).get<RawPCMFormat>(), kFormat);
}

TEST(RawPCMFormatJSON, NeedsEveryKey) {
  const json complete(kFormat);
  for (const auto& entry : complete.items()) {
    json partial = complete;
    partial.erase(entry.key());
    EXPECT_THROW(static_cast<void>(partial.get<RawPCMFormat>()), json::exception) << entry.key();
  }
}

TEST(RawPCMFormatJSON, IgnoresForeignKeys) {
  json extended(kFormat);
  extended["comment"] = "field recorder";
  EXPECT_EQ(extended.get<RawPCMFormat>(), kFormat);
}

TEST(RawPCMFormatJSON, RefusesValuesOfAnotherType) {
  const std::pair<const char*, json> cases[] = {
      {"sampleRate", "48000"},
      {"sampleRate", true},
      {"channelCount", 2.5},
      {"channelCount", "2"},
      {"channelCount", true},
      {"channelCount", nullptr},
      {"channelCount", 1e30},
      {"encoding", "Int16"},
      {"encoding", 16},
      {"endianness", "middle"},
      {"endianness", nullptr},
      {"isPlanar", 0},
      {"isPlanar", "false"},
      {"headerSkipBytes", "44"},
      {"trailingBytesTolerance", 0.5},
      {"headerSkipBytes", std::numeric_limits<std::uint64_t>::max()}};
  for (const auto& [key, value] : cases) {
    json spoiled(kFormat);
    spoiled[key] = value;
    EXPECT_THROW(static_cast<void>(spoiled.get<RawPCMFormat>()), json::exception)
        << key << " " << value.dump();
  }
  EXPECT_THROW(static_cast<void>(json(3).get<RawPCMFormat>()), json::exception);
  EXPECT_THROW(static_cast<void>(json::array().get<RawPCMFormat>()), json::exception);
}

TEST(RawPCMFormatJSON, ReadsWholeNumbersHoweverTheyAreWritten) {
  json record(kFormat);
  record["channelCount"] = 6.0;
  record["sampleRate"] = 48000;
  const auto format = record.get<RawPCMFormat>();
  EXPECT_EQ(format.channelCount, 6);
  EXPECT_EQ(format.sampleRate, 48000.0);
}

TEST(RawPCMFormatJSON, WritesARateThatIsNoNumberAsNull) {
  auto format = kFormat;
  format.sampleRate = std::numeric_limits<double>::quiet_NaN();
  const auto text = json(format).dump();
  EXPECT_NE(text.find("\"sampleRate\":null"), std::string::npos);
  EXPECT_EQ(json::parse(text).get<RawPCMFormat>().sampleRate,
            -std::numeric_limits<double>::infinity());
}

}  // namespace
}  // namespace orvane
