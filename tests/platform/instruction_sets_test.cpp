#include "orvane/platform/instruction_sets.h"

#include <gtest/gtest.h>

#include <set>

namespace orvane {
namespace {

TEST(InstructionSets, AreListedBestFirstAndEndWithPlainCode) {
  const auto sets = availableInstructionSets();
  ASSERT_FALSE(sets.empty());
  for (std::size_t i = 1; i < sets.size(); ++i)
    EXPECT_LT(sets[i - 1].target, sets[i].target) << "lower bits are better";
  EXPECT_TRUE(sets.back().name == "SCALAR" || sets.back().name == "EMU128") << sets.back().name;
}

TEST(InstructionSets, ForcingMakesTheKernelsOfThatSetRun) {
  for (const auto& set : availableInstructionSets()) {
    forceInstructionSet(set);
    EXPECT_EQ(activeInstructionSet(), set) << set.name;
  }
  useBestInstructionSet();
  EXPECT_EQ(activeInstructionSet(), availableInstructionSets().front());
}

TEST(InstructionSets, AreAllListedWhileOneIsForced) {
  const auto before = availableInstructionSets();
  forceInstructionSet(before.back());
  EXPECT_EQ(availableInstructionSets(), before);
  useBestInstructionSet();
}

}  // namespace
}  // namespace orvane
