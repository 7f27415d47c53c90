#include "orvane/speech/dialogue/dialogue_json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "tests/speech/dialogue/dialogue_samples.h"
#include "tests/support/doubled_keys.h"

namespace orvane {
namespace {

constexpr const char* kSample = R"({
  "audioFile": {
    "durationSeconds": 12.5,
    "filename": "take1.wav",
    "sampleRate": 48000
  },
  "createdAt": "2024-02-29T23:59:59Z",
  "generator": "Orvane",
  "generatorVersion": "0.1.0",
  "modifiedAt": "2024-03-01T00:00:00Z",
  "regions": [
    {
      "end": 0.30000000000000004,
      "id": "123E4567-E89B-42D3-A456-426614174000",
      "start": 0.1,
      "vadOrigin": [
        0.1,
        0.30000000000000004
      ]
    },
    {
      "end": 2,
      "id": "123E4567-E89B-42D3-A456-426614174001",
      "label": "Anna, \"off\" \né",
      "start": 1.25,
      "vadOrigin": [
        1,
        2
      ]
    },
    {
      "end": 4,
      "id": "123E4567-E89B-42D3-A456-426614174002",
      "label": "",
      "start": 3
    }
  ],
  "schemaVersion": 1,
  "source": "user-edited"
}
)";

/// The sample with one piece of text in the place of another.
std::string changed(const std::string& from, const std::string& to) {
  std::string json = kSample;
  const auto place = json.find(from);
  if (place == std::string::npos) throw std::logic_error("not in the sample: " + from);
  return json.replace(place, from.size(), to);
}

std::string refusal(const std::string& json) {
  try {
    (void)DialogueJSON::sidecar(json);
  } catch (const DecodingError& error) {
    return error.errorDescription();
  }
  return "accepted";
}

TEST(DialogueJSON, SidecarsArePrettyPrintedWithSortedKeys) {
  EXPECT_EQ(DialogueJSON::text(test::sampleSidecar()), kSample);
  EXPECT_NE(DialogueJSON::text(test::sidecarWith({})).find("\"regions\": [],\n"),
            std::string::npos);
}

TEST(DialogueJSON, SidecarsComeBackEqual) {
  for (const auto& sidecar : {test::sampleSidecar(), test::sidecarWith({})})
    EXPECT_EQ(DialogueJSON::sidecar(DialogueJSON::text(sidecar)), sidecar);
}

TEST(DialogueJSON, NumbersComeBackBitForBit) {
  for (const double value : {0.1, 1.0 / 3, 1e308, 5e-324, -0.0, 123456789.123456789, 0.1 * 3}) {
    const DialogueRegion region(UUID::random(), value, value);
    const auto back = DialogueJSON::region(DialogueJSON::text(region));
    EXPECT_EQ(back, region);
    EXPECT_EQ(std::signbit(back.start), std::signbit(value));
  }
}

TEST(DialogueJSON, RegionsHaveTheirKeysInTheOrderOfTheFields) {
  const auto sample = test::sampleSidecar();
  EXPECT_EQ(DialogueJSON::text(sample.regions[1]),
            "{\"id\":\"123E4567-E89B-42D3-A456-426614174001\",\"start\":1.25,\"end\":2,"
            "\"label\":\"Anna, \\\"off\\\" \\n\u00E9\",\"vadOrigin\":[1,2]}");
  EXPECT_EQ(
      DialogueJSON::text(sample.regions[2]),
      "{\"id\":\"123E4567-E89B-42D3-A456-426614174002\",\"start\":3,\"end\":4,\"label\":\"\"}");
  for (const auto& region : sample.regions)
    EXPECT_EQ(DialogueJSON::region(DialogueJSON::text(region)), region);
}

TEST(DialogueJSON, ReadsKeysInAnyOrderNullsAsAbsentAndSkipsWhatItDoesNotKnow) {
  const auto region = DialogueJSON::region(
      "\xEF\xBB\xBF {\"label\":null, \"end\":1e0, \"note\":{\"a\":[true,null,\"x\"]},\r\n\t"
      "\"vadOrigin\":null, \"start\":-0.5,\"id\":\"123e4567-e89b-42d3-a456-426614174000\"} ");
  EXPECT_EQ(region, DialogueRegion(*UUID::parse("123E4567-E89B-42D3-A456-426614174000"), -0.5, 1));
}

TEST(DialogueJSON, ReadingNeitherSortsNorSwaps) {
  const auto sidecar = DialogueJSON::sidecar(changed("\"start\": 0.1", "\"start\": 9"));
  EXPECT_EQ(sidecar.regions[0].start, 9.0);
  EXPECT_EQ(sidecar.regions[0].end, 0.30000000000000004);
}

TEST(DialogueJSON, EverySchemaVersionIsRead) {
  for (const char* version : {"0", "-3", "2", "1.0", "9223372036854775807"})
    EXPECT_NO_THROW((void)DialogueJSON::sidecar(
        changed("\"schemaVersion\": 1", std::string("\"schemaVersion\": ") + version)));
}

TEST(DialogueJSON, NamesEveryMissingKey) {
  for (const char* key : {"audioFile", "createdAt", "generator", "generatorVersion", "modifiedAt",
                          "regions", "schemaVersion", "source"}) {
    const auto quoted = "\"" + std::string(key) + "\":";
    EXPECT_EQ(refusal(changed(quoted, "\"other\":")),
              "The key \"" + std::string(key) + "\" is missing.");
  }
  for (const char* key : {"durationSeconds", "filename", "sampleRate"}) {
    const auto quoted = "\"" + std::string(key) + "\":";
    EXPECT_EQ(refusal(changed(quoted, "\"other\":")),
              "The key \"audioFile." + std::string(key) + "\" is missing.");
  }
  for (const char* key : {"id", "start", "end"}) {
    const auto quoted = "\"" + std::string(key) + "\":";
    EXPECT_EQ(refusal(changed(quoted, "\"other\":")),
              "The key \"regions[0]." + std::string(key) + "\" is missing.");
  }
}

TEST(DialogueJSON, NamesThePlaceOfAWrongValue) {
  EXPECT_EQ(refusal(changed("\"user-edited\"", "\"manual\"")),
            "\"source\" is none of \"silero\", \"user-edited\" and \"imported\".");
  EXPECT_EQ(refusal(changed("174001\"", "17400G\"")), "\"regions[1].id\" is no UUID.");
  EXPECT_EQ(refusal(changed("\"2024-02-29T23:59:59Z\"", "\"2023-02-29T23:59:59Z\"")),
            "\"createdAt\" is no date of the form 2024-01-31T12:00:00Z.");
  EXPECT_EQ(refusal(changed("\"start\": 3", "\"start\": \"3\"")),
            "\"regions[2].start\" is a string, not a number.");
  EXPECT_EQ(refusal(changed("\"start\": 3", "\"start\": null")),
            "\"regions[2].start\" is null, not a number.");
  EXPECT_EQ(refusal(changed("\"start\": 3", "\"start\": 1e999")),
            "\"regions[2].start\" holds a number that is out of range.");
  EXPECT_EQ(refusal(changed("\"schemaVersion\": 1", "\"schemaVersion\": 1.5")),
            "\"schemaVersion\" holds a number that is no integer.");
  EXPECT_EQ(refusal(changed("\"label\": \"\"", "\"label\": 7")),
            "\"regions[2].label\" is a number, not a string.");
  EXPECT_EQ(refusal(changed("\"regions\": [", "\"regions\": {}, \"more\": [")),
            "\"regions\" is an object, not an array.");
  EXPECT_EQ(refusal("[]"), "The document is an array, not an object.");
}

TEST(DialogueJSON, AnOriginIsTwoNumbersInOrder) {
  const std::string pair = "[\n        1,\n        2\n      ]";
  const std::string place = "\"regions[1].vadOrigin\" ";
  for (const char* wrong : {"[]", "[1]", "[1,2,3]"})
    EXPECT_EQ(refusal(changed(pair, wrong)), place + "does not hold two numbers.");
  EXPECT_EQ(refusal(changed(pair, "[2,1]")), place + "ends before it starts.");
  EXPECT_EQ(refusal(changed(pair, "[1,\"2\"]")),
            "\"regions[1].vadOrigin[1]\" is a string, not a number.");
  EXPECT_EQ(refusal(changed(pair, "[1,1]")), "accepted");
}

TEST(DialogueJSON, RefusesWhatIsNoJSON) {
  for (const char* number : {"NaN", "Infinity", "-Infinity", "+1", "01", ".5", "1.", "0x10", "1e"})
    EXPECT_NE(refusal(changed("\"start\": 3", std::string("\"start\": ") + number)), "accepted")
        << number;
  for (const char* json : {"", " ", "{", "{}x", "nul", "{\"a\" 1}", "{'a':1}", "{\"a\":1,}"})
    EXPECT_NE(refusal(json), "accepted") << json;
  EXPECT_NE(refusal(std::string(kSample) + "{}"), "accepted");
  EXPECT_NE(refusal(changed("Anna", "An\xFFna")), "accepted");
  EXPECT_NE(refusal(changed("\"source\"", "// comment\n\"source\"")), "accepted");
}

TEST(DialogueJSON, EveryShortenedDocumentIsRefused) {
  const std::string whole = kSample;
  for (std::size_t length = 0; length + 2 < whole.size(); ++length)
    EXPECT_NE(refusal(whole.substr(0, length)), "accepted") << length;
}

TEST(DialogueJSON, DeepNestingIsRefusedWithoutHarm) {
  const std::string deep(1'000'000, '[');
  EXPECT_NE(refusal("{\"x\":" + deep), "accepted");
  EXPECT_NE(refusal(deep), "accepted");
}

TEST(DialogueJSON, RefusesAKeyThatStandsThereTwiceInAnyRecord) {
  test::expectEachKeyOnce(kSample, DialogueJSON::sidecar);
  EXPECT_EQ(refusal(changed("\"source\":", "\"source\": \"silero\", \"source\":")),
            "\"source\" stands there twice.");
  EXPECT_EQ(refusal(changed("\"end\": 4,", "\"end\": 4, \"end\": 4,")),
            "\"regions[2].end\" stands there twice.");
}

TEST(DialogueJSON, RefusesToWriteWhatCouldNotBeRead) {
  const auto problem = [](const DialogueSidecar& sidecar) {
    try {
      (void)DialogueJSON::text(sidecar);
    } catch (const EncodingError& error) {
      return error.errorDescription();
    }
    return std::string("written");
  };
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  auto sidecar = test::sampleSidecar();
  sidecar.regions[2].end = kInfinity;
  EXPECT_EQ(problem(sidecar), "\"regions[2].end\" is not a finite number.");
  sidecar = test::sampleSidecar();
  sidecar.regions[1].vadOrigin->lowerBound = std::nan("");
  EXPECT_EQ(problem(sidecar), "\"regions[1].vadOrigin[0]\" is not a finite number.");
  sidecar = test::sampleSidecar();
  sidecar.audioFile.durationSeconds = -kInfinity;
  EXPECT_EQ(problem(sidecar), "\"audioFile.durationSeconds\" is not a finite number.");
  sidecar = test::sampleSidecar();
  sidecar.modifiedAt = Date::max();
  EXPECT_EQ(problem(sidecar), "\"modifiedAt\" lies outside the years 0 to 9999.");
}

TEST(DialogueJSON, HostileLabelsComeBackAndStayInTheirStrings) {
  for (const std::string& label :
       {std::string("\",\"start\":99,\"x\":\""), std::string("\x1B[31m\a\u202E\u009B"),
        std::string("line\nline\ttab\\"), std::string("a\0b", 3), std::string("{[,]}:"),
        std::string("\U0001F3A4")}) {
    auto sidecar = test::sampleSidecar();
    sidecar.regions[0].label = label;
    EXPECT_EQ(DialogueJSON::sidecar(DialogueJSON::text(sidecar)), sidecar);
  }
  auto sidecar = test::sampleSidecar();
  sidecar.audioFile.filename = "take\xFF.wav";
  EXPECT_EQ(DialogueJSON::sidecar(DialogueJSON::text(sidecar)).audioFile.filename,
            "take\uFFFD.wav");
}

}  // namespace
}  // namespace orvane
