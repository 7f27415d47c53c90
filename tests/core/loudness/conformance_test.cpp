// EBU Tech 3341 v4 and EBU Tech 3342 v4: every case that can be made from its definition, at every
// rate.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>

#include "tests/core/loudness/conformance_cases.h"
#include "tests/core/loudness/conformance_pins.h"
#include "tests/core/loudness/conformance_table.h"
#include "tests/support/test_places.h"

namespace orvane::core::conformance {
namespace {

struct CaseAtRate {
  const Case* entry;
  std::uint32_t sampleRate;
};

std::string nameOf(const CaseAtRate& at) {
  return "Tech" + at.entry->document + "Case" + std::to_string(at.entry->number) + "At" +
         std::to_string(at.sampleRate);
}

void PrintTo(const CaseAtRate& at, std::ostream* out) {
  *out << nameOf(at);
}

std::vector<CaseAtRate> allCases() {
  std::vector<CaseAtRate> all;
  for (const Case& entry : cases())
    for (const std::uint32_t rate : entry.sampleRates) all.push_back({&entry, rate});
  return all;
}

class Conformance : public ::testing::TestWithParam<CaseAtRate> {};

// Physical: the document's own tolerance for every reading it makes a demand on.
TEST_P(Conformance, LiesWithinTheStandard) {
  const auto& [entry, sampleRate] = GetParam();
  const auto readings = entry->measure(sampleRate);
  ASSERT_FALSE(readings.empty());
  // The document gives its limits to a tenth; a reading on the limit is within it.
  constexpr double kRounding = 1e-6;
  for (const Reading& reading : readings) {
    ASSERT_GE(reading.deviation(), -entry->allowedBelow - kRounding) << "reads " << reading.actual;
    ASSERT_LE(reading.deviation(), entry->allowedAbove + kRounding) << "reads " << reading.actual;
  }
}

// Pinned: figures are floats, one step of which is 1.9e-6 at these levels; the order of summation,
// which differs between instruction sets, moves them by 1e-9 and so by one step at most.
TEST_P(Conformance, ReadsWhatItReadBefore) {
  const CaseAtRate at = GetParam();
  const auto pin = std::find_if(kPins.begin(), kPins.end(), [&at](const Pin& candidate) {
    return std::to_string(candidate.document) == at.entry->document &&
           candidate.number == at.entry->number && candidate.sampleRate == at.sampleRate;
  });
  ASSERT_NE(pin, kPins.end());
  EXPECT_NEAR(farthest(at.entry->measure(at.sampleRate)).actual, pin->reading, 4e-6);
}

INSTANTIATE_TEST_SUITE_P(Ebu, Conformance, ::testing::ValuesIn(allCases()),
                         [](const auto& instance) { return nameOf(instance.param); });

TEST(ConformancePage, TellsWhatIsMeasured) {
  std::ifstream page(test::places::conformanceDocument);
  const std::string committed{std::istreambuf_iterator<char>(page), {}};
  EXPECT_EQ(committed, table());
}

}  // namespace
}  // namespace orvane::core::conformance
