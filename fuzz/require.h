#pragma once

#include <cstdlib>

namespace orvane::fuzz {

/// What must hold for every input; otherwise the fuzzer reports it.
inline void require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace orvane::fuzz
