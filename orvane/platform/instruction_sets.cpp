#include "orvane/platform/instruction_sets.h"

#include <hwy/targets.h>

namespace orvane {

std::vector<InstructionSet> availableInstructionSets() {
  std::vector<InstructionSet> sets;
  // HWY_TARGETS has a bit for each set that the kernels were compiled for; lower bits are better.
  auto targets = static_cast<std::uint64_t>(hwy::SupportedTargets() & HWY_TARGETS);
  while (targets != 0) {
    const std::uint64_t lowest = targets & (~targets + 1);
    targets &= targets - 1;
    const auto target = static_cast<std::int64_t>(lowest);
    sets.push_back({target, hwy::TargetName(target)});
  }
  return sets;
}

void forceInstructionSet(const InstructionSet& set) {
  hwy::SetSupportedTargetsForTest(set.target);
  hwy::GetChosenTarget().Update(set.target);
}

void useBestInstructionSet() {
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

}  // namespace orvane
