#include "orvane/platform/instruction_sets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "orvane/platform/instruction_sets.simd.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
// After foreach_target.h.
#include "hwy/highway.h"
#include "orvane/platform/highway_dispatch.h"

HWY_BEFORE_NAMESPACE();
namespace orvane::HWY_NAMESPACE {

std::int64_t ownTarget() {
  return HWY_TARGET;
}

}  // namespace orvane::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace orvane {
namespace {

InstructionSet described(std::int64_t target) {
  return {target, hwy::TargetName(target)};
}

}  // namespace

HWY_EXPORT(ownTarget);

std::vector<InstructionSet> availableInstructionSets() {
  // HWY_TARGETS has a bit for each set that the kernels were compiled for; lower bits are better.
  std::vector<InstructionSet> sets;
  auto targets = static_cast<std::uint64_t>(supportedInstructionSets() & HWY_TARGETS);
  while (targets != 0) {
    const std::uint64_t lowest = targets & (~targets + 1);
    targets &= targets - 1;
    sets.push_back(described(static_cast<std::int64_t>(lowest)));
  }
  return sets;
}

InstructionSet activeInstructionSet() {
  return described(HWY_DYNAMIC_DISPATCH(ownTarget)());
}

void forceInstructionSet(const InstructionSet& set) {
  chosenInstructionSet().Update(set.target);
}

void useBestInstructionSet() {
  chosenInstructionSet().Update(supportedInstructionSets());
}

}  // namespace orvane
#endif
