#include "orvane/platform/parallel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
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

/// Threads that were seen.
class Threads {
 public:
  void note() {
    const std::lock_guard lock(mutex_);
    seen_.insert(std::this_thread::get_id());
  }
  std::size_t count() const { return seen_.size(); }

 private:
  std::mutex mutex_{};
  std::set<std::thread::id> seen_{};
};

TEST(ParallelFor, NestedCallsRunEveryTaskOnceOnNoMoreThreads) {
  for (const std::size_t inner : {1U, 2U, 5U}) {
    Threads threads;
    std::vector<std::atomic<int>> counts(40 * 30);
    parallelFor(3, 40, [&](std::size_t i) {
      parallelFor(inner, 30, [&](std::size_t k) {
        threads.note();
        ++counts[i * 30 + k];
      });
    });
    for (const auto& count : counts) EXPECT_EQ(count, 1);
    EXPECT_LE(threads.count(), std::max<std::size_t>(inner, 3));
  }
}

/// Lets tasks go on once so many of them have come; one that is alone would wait for ever.
class Meeting {
 public:
  explicit Meeting(std::size_t count) : count_(count) {}
  void come() {
    std::unique_lock lock(mutex_);
    ++come_;
    changed_.notify_all();
    changed_.wait(lock, [&] { return come_ >= count_; });
  }

 private:
  std::size_t count_;
  std::mutex mutex_{};
  std::condition_variable changed_{};
  std::size_t come_ = 0;
};

TEST(ParallelFor, ANestedCallGetsThreadsThatHaveDoneTheirOwn) {
  Meeting meeting(2);
  parallelFor(2, 2, [&](std::size_t i) {
    if (i == 0) parallelFor(2, 2, [&](std::size_t) { meeting.come(); });
  });
}

TEST(ParallelFor, ANestedCallThatAsksForMoreThreadsGetsThem) {
  Meeting meeting(4);
  parallelFor(2, 2, [&](std::size_t i) {
    if (i == 0) parallelFor(4, 4, [&](std::size_t) { meeting.come(); });
  });
}

TEST(ParallelFor, ANestedCallFailsByItself) {
  std::atomic<int> caught{0};
  std::atomic<int> done{0};
  parallelFor(2, 20, [&](std::size_t) {
    try {
      parallelFor(2, 3, [](std::size_t k) {
        if (k == 1) throw std::runtime_error("no");
      });
    } catch (const std::runtime_error&) {
      ++caught;
    }
    ++done;
  });
  EXPECT_EQ(caught, 20);
  EXPECT_EQ(done, 20);
}

TEST(HelpfulCondition, WhoWaitsHelpsMeanwhile) {
  std::mutex mutex;
  HelpfulCondition changed;
  bool isDone = false;
  Meeting meeting(2);
  parallelFor(2, 2, [&](std::size_t i) {
    std::unique_lock lock(mutex);
    if (i == 0) {
      while (!isDone) changed.wait(lock);
      return;
    }
    lock.unlock();
    parallelFor(2, 2, [&](std::size_t) { meeting.come(); });
    lock.lock();
    isDone = true;
    changed.notifyAll();
  });
  EXPECT_TRUE(isDone);
}

TEST(HelpfulCondition, LosesNoNotification) {
  constexpr int kTurns = 20'000;
  std::mutex mutex;
  HelpfulCondition changed;
  int turn = 0;
  parallelFor(2, 2, [&](std::size_t i) {
    std::unique_lock lock(mutex);
    while (turn < kTurns) {
      if (turn % 2 == static_cast<int>(i)) {
        ++turn;
        changed.notifyAll();
      } else {
        changed.wait(lock);
      }
    }
  });
  EXPECT_EQ(turn, kTurns);
}

}  // namespace
}  // namespace orvane
