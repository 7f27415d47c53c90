#pragma once

#include <gtest/gtest.h>

#include <string>

#include "orvane/platform/instruction_sets.h"

namespace orvane::test {

/// Runs `body` with every instruction set that this machine has, forced in turn.
template <class Body>
void onEachInstructionSet(Body body) {
  for (const auto& set : availableInstructionSets()) {
    const ::testing::ScopedTrace trace(__FILE__, __LINE__, set.name);
    forceInstructionSet(set);
    body();
  }
  useBestInstructionSet();
}

}  // namespace orvane::test
