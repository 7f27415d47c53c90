#include "cli/commands/job_runner.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <numeric>
#include <stdexcept>
#include <thread>
#include <vector>

namespace orvane::cli {
namespace {

std::vector<std::size_t> upTo(std::size_t count) {
  std::vector<std::size_t> numbers(count);
  std::iota(numbers.begin(), numbers.end(), std::size_t{0});
  return numbers;
}

TEST(JobRunner, ReportsInOrderWhateverEndsFirst) {
  constexpr std::size_t kCount = 40;
  std::vector<std::size_t> order;
  JobRunner::run(4, kCount, [&](std::size_t index) -> JobRunner::Report {
    // Every fourth piece of work takes longest.
    if (index % 4 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return [&order, index] { order.push_back(index); };
  });
  EXPECT_EQ(order, upTo(kCount));
}

TEST(JobRunner, ReportsEachPieceAsSoonAsThoseBeforeAreDone) {
  std::vector<std::size_t> order;
  std::vector<std::size_t> reportedBefore;
  JobRunner::run(1, 3, [&](std::size_t index) -> JobRunner::Report {
    reportedBefore.push_back(order.size());
    return [&order, index] { order.push_back(index); };
  });
  EXPECT_EQ(reportedBefore, upTo(3));
}

TEST(JobRunner, NeverReportsTwoPiecesAtOnce) {
  std::atomic<int> inside{0};
  std::atomic<bool> overlapped{false};
  JobRunner::run(4, 50, [&](std::size_t) -> JobRunner::Report {
    return [&] {
      if (++inside > 1) overlapped = true;
      std::this_thread::yield();
      --inside;
    };
  });
  EXPECT_FALSE(overlapped);
}

TEST(JobRunner, WorksOnAsManyPiecesAtOnceAsAskedFor) {
  std::atomic<int> inside{0};
  std::atomic<int> most{0};
  JobRunner::run(3, 12, [&](std::size_t) -> JobRunner::Report {
    const int now = ++inside;
    int seen = most.load();
    while (now > seen && !most.compare_exchange_weak(seen, now)) {
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    --inside;
    return [] {};
  });
  EXPECT_GT(most, 1);
  EXPECT_LE(most, 3);
}

TEST(JobRunner, PassesAnExceptionOnAndStopsWhatHasNotBegun) {
  std::vector<std::size_t> order;
  const auto run = [&](std::size_t jobs) {
    JobRunner::run(jobs, 1000, [&](std::size_t index) -> JobRunner::Report {
      if (index == 2) throw std::runtime_error("no");
      return [&order, index] { order.push_back(index); };
    });
  };
  EXPECT_THROW(run(1), std::runtime_error);
  EXPECT_EQ(order, upTo(2));
  EXPECT_THROW(run(4), std::runtime_error);
}

TEST(JobRunner, NeverReportsAPieceAgainWhoseReportFailed) {
  std::vector<std::size_t> reported;
  const auto run = [&] {
    JobRunner::run(4, 4, [&](std::size_t index) -> JobRunner::Report {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
      return [&reported, index] {
        reported.push_back(index);
        if (index == 0) throw std::runtime_error("output is gone");
      };
    });
  };
  EXPECT_THROW(run(), std::runtime_error);
  EXPECT_EQ(reported, upTo(reported.size()));
}

TEST(JobRunner, DoesNothingForNoFiles) {
  JobRunner::run(2, 0, [](std::size_t) -> JobRunner::Report {
    ADD_FAILURE() << "there is nothing to do";
    return [] {};
  });
}

TEST(JobRunner, GivesASingleFileAllCoresAndSimultaneousOnesOneEach) {
  EXPECT_GE(JobRunner::threadsPerJob(1), 1U);
  EXPECT_EQ(JobRunner::threadsPerJob(2), 1U);
  EXPECT_EQ(JobRunner::threadsPerJob(8), 1U);
}

}  // namespace
}  // namespace orvane::cli
