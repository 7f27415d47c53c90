#include "orvane/text/json/json_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "orvane/report/report_records.h"
#include "orvane/text/json/json_text.h"

namespace orvane {
namespace {

using json::Style;
using json::Writer;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

template <typename Value>
std::string written(const Value& value, const Style& style = {}) {
  Writer writer(style);
  writer.value(value);
  return writer.take();
}

ReportViolations violations() {
  return {.shortTermThreshold = -10.5F, .momentaryCount = 1, .momentaryRanges = {{1, 2.5}, {3, 4}}};
}

TEST(JSONWriter, SpreadsADocumentOverLinesForPeople) {
  EXPECT_EQ(encodeJSON(violations(), {.isPretty = true}), R"({
  "shortTermThreshold": -10.5,
  "momentaryCount": 1,
  "shortTermCount": 0,
  "momentaryRanges": [
    {
      "start": 1,
      "end": 2.5
    },
    {
      "start": 3,
      "end": 4
    }
  ],
  "shortTermRanges": []
}
)");
}

TEST(JSONWriter, SortsTheKeysAtEveryLevel) {
  EXPECT_EQ(encodeJSON(violations(), {.sortsKeys = true}),
            R"({"momentaryCount":1,"momentaryRanges":[{"end":2.5,"start":1},{"end":4,"start":3}],)"
            R"("shortTermCount":0,"shortTermRanges":[],"shortTermThreshold":-10.5})");
}

TEST(JSONWriter, WritesTextInASCIIOnRequest) {
  const std::string text = "\"\\\n\r\t\b\f\x1B\x7F \u00E9\u202E\U0001F3A4 </a>\xFF";
  EXPECT_EQ(written(std::string_view(text), {.isASCII = true}),
            R"("\"\\\n\r\t\b\f\u001b\u007f \u00e9\u202e\ud83c\udfa4 </a>\ufffd")");
}

TEST(JSONWriter, RefusesWhatMustBeFiniteAndNamesItsPlace) {
  const auto problem = [](const ReportViolations& record) {
    try {
      return encodeJSON(record, {.mustBeFinite = true});
    } catch (const EncodingError& error) {
      return error.keyPath() + ": " + error.errorDescription();
    }
  };
  auto record = violations();
  EXPECT_EQ(problem(record), encodeJSON(record));
  record.momentaryRanges[1].end = std::nan("");
  EXPECT_EQ(problem(record),
            "momentaryRanges[1].end: \"momentaryRanges[1].end\" is not a finite number.");
  record = violations();
  record.momentaryThreshold = kInfinity;  // left out in other styles
  EXPECT_EQ(problem(record), "momentaryThreshold: \"momentaryThreshold\" is not a finite number.");
}

TEST(JSONWriter, LaysNumbersOutAsItIsTold) {
  constexpr Style kPlain{.numbers = Style::Numbers::plain};
  constexpr Style kReal{.numbers = Style::Numbers::real};
  EXPECT_EQ(written(48000.0), "48000");
  EXPECT_EQ(written(100000.0), "1e+05");
  EXPECT_EQ(written(100000.0, kPlain), "100000");
  EXPECT_EQ(written(100000.0, kReal), "100000.0");
  EXPECT_EQ(written(0.0001F, kReal), "0.0001");
  EXPECT_EQ(written(0.00001F, kReal), "1e-05");
  EXPECT_EQ(written(1e15, kReal), "1e+15");
  EXPECT_EQ(written(123456792e3F, kReal), "123456790528.0");
  EXPECT_EQ(written(-0.0, kReal), "-0.0");
  EXPECT_EQ(written(-0.0, kPlain), "0");
  EXPECT_EQ(written(std::int64_t{7}, kReal), "7");
  EXPECT_EQ(written(kInfinity, kReal), "null");
}

// The other writer takes another way to the digits, which finds another text of the same number,
// mostly a longer one, once in a thousand.
TEST(JSONWriter, WritesRealNumbersLikeAnIndependentWriter) {
  std::mt19937_64 generator(12);
  int others = 0;
  for (int i = 0; i < 20'000; ++i) {
    auto bits = generator();
    if (i % 2 == 0) bits = (bits & ~(0x7FFULL << 52U)) | ((1003 + bits % 40) << 52U);  // near 1
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) continue;
    const std::string ours = written(value, {.numbers = Style::Numbers::real});
    const std::string theirs = nlohmann::json(value).dump();
    if (ours == theirs) continue;
    ++others;
    EXPECT_LE(ours.size(), theirs.size()) << ours << " " << theirs;
    EXPECT_EQ(nlohmann::json::parse(ours).get<double>(), value);
  }
  EXPECT_LT(others, 100);
}

}  // namespace
}  // namespace orvane
