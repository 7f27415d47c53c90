// Highway's headers look for these two functions when a kernel is called for the first time. Its
// library, which defines them, is not linked: on being loaded it measures the resolution of a clock,
// which takes several milliseconds of every start of a program. Each of our libraries has this file.

#include "orvane/platform/highway_dispatch.h"

namespace hwy {

ChosenTarget& GetChosenTarget() {
  return orvane::chosenInstructionSet();
}

std::int64_t SupportedTargets() {
  return orvane::supportedInstructionSets();
}

}  // namespace hwy
