#include "orvane/platform/parallel.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <vector>

namespace orvane {
namespace {

TEST(ParallelFor, RunsEveryTaskOnce) {
  std::vector<std::atomic<int>> counts(100);
  parallelFor(4, counts.size(), [&](std::size_t i) { ++counts[i]; });
  for (const auto& count : counts) EXPECT_EQ(count, 1);
}

TEST(ParallelFor, OneThreadKeepsTheOrder) {
  std::vector<std::size_t> order;
  parallelFor(1, 5, [&](std::size_t i) { order.push_back(i); });
  EXPECT_EQ(order, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
}

TEST(ParallelFor, PassesTheFirstExceptionOnAndDropsTheRest) {
  std::atomic<int> begun{0};
  EXPECT_THROW(parallelFor(2, 1'000'000,
                           [&](std::size_t) {
                             ++begun;
                             throw std::runtime_error("no");
                           }),
               std::runtime_error);
  EXPECT_LE(begun, 4);
}

TEST(ParallelFor, DoesNothingForNoTasks) {
  parallelFor(2, 0, [](std::size_t) { FAIL(); });
}

}  // namespace
}  // namespace orvane
