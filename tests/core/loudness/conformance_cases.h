#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace orvane::core::conformance {

/// What the standard asks for and what the meter tells.
struct Reading {
  double expected = 0;
  double actual = 0;

  double deviation() const { return actual - expected; }
};

/// One case of EBU Tech 3341 v4, Table 1, or of EBU Tech 3342 v4.
struct Case {
  std::string document{};  ///< "3341" or "3342"
  int number = 0;
  std::string signal{};
  std::string required{};  ///< the figures, as the document gives them
  double allowedBelow = 0, allowedAbove = 0;
  std::vector<std::uint32_t> sampleRates{};
  /// Makes the signal, measures it and gives every reading on which the case makes a demand.
  std::function<std::vector<Reading>(std::uint32_t sampleRate)> measure{};
};

/// All cases that can be made from their definition, in the documents' order: 7 and 8 of Tech 3341
/// and 5 and 6 of Tech 3342 are recordings.
const std::vector<Case>& cases();

/// The reading farthest from what is expected.
Reading farthest(const std::vector<Reading>& readings);

}  // namespace orvane::core::conformance
