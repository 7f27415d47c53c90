#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "orvane/platform/export.h"

namespace orvane {

/// One instruction set for which the vector kernels were compiled and which this machine has.
struct InstructionSet {
  std::int64_t target = 0;  ///< Highway's target bit
  std::string name{};       ///< "AVX2", "SSE4" …

  bool operator==(const InstructionSet&) const = default;
};

/// Best first.
ORVANE_API std::vector<InstructionSet> availableInstructionSets();

/// The one whose kernels run now.
ORVANE_API InstructionSet activeInstructionSet();

/// Makes every kernel use this instruction set from now on; for tests and benchmarks. Not to be
/// called while kernels run on other threads.
ORVANE_API void forceInstructionSet(const InstructionSet& set);

/// Back to the best one.
ORVANE_API void useBestInstructionSet();

}  // namespace orvane
