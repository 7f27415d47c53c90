#pragma once

#include <hwy/highway.h>

#include <cstdint>

#include "orvane/platform/export.h"

namespace orvane {

/// The choice among compiled instruction sets, one for both libraries.
ORVANE_API hwy::ChosenTarget& chosenInstructionSet();

/// Highway's bits of the sets among the compiled ones that this processor and its system have.
ORVANE_API std::int64_t supportedInstructionSets();

}  // namespace orvane
