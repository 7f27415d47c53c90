#include "orvane/platform/parallel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
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

/// How many are in some place at once.
class Crowd {
 public:
  /// Stays a little, so that others come meanwhile if they can.
  void visit() {
    {
      const std::lock_guard lock(mutex_);
      most_ = std::max(most_, ++present_);
    }
    std::this_thread::sleep_for(std::chrono::microseconds(200));
    const std::lock_guard lock(mutex_);
    --present_;
  }
  std::size_t most() const { return most_; }

 private:
  std::mutex mutex_{};
  std::size_t present_ = 0;
  std::size_t most_ = 0;
};

TEST(ParallelFor, NestedCallsRunEveryTaskOnceOnNoMoreThreads) {
  for (const std::size_t inner : {1U, 2U, 5U}) {
    SCOPED_TRACE(inner);
    Crowd crowd;
    std::vector<std::atomic<int>> counts(20 * 10 * 3);
    parallelFor(3, 20, [&](std::size_t i) {
      parallelFor(inner, 10, [&](std::size_t k) {
        parallelFor(2, 3, [&](std::size_t m) {
          crowd.visit();
          ++counts[(i * 10 + k) * 3 + m];
        });
      });
    });
    for (const auto& count : counts) EXPECT_EQ(count, 1);
    EXPECT_LE(crowd.most(), std::max<std::size_t>(inner, 3));
    EXPECT_GE(crowd.most(), 3U);
  }
}

/// Lets tasks go on once so many of them have come.
class Meeting {
 public:
  explicit Meeting(std::size_t count) : count_(count) {}
  void come() {
    std::unique_lock lock(mutex_);
    ++come_;
    changed_.notify_all();
    EXPECT_TRUE(changed_.wait_for(lock, std::chrono::minutes(1), [&] { return come_ >= count_; }))
        << "one has waited for the others in vain";
  }

 private:
  std::size_t count_;
  std::mutex mutex_{};
  std::condition_variable changed_{};
  std::size_t come_ = 0;
};

TEST(ParallelFor, ANestedCallGetsThreadsThatHaveDoneTheirOwn) {
  for (const std::size_t busy : {0U, 1U}) {
    SCOPED_TRACE(busy);
    Meeting begun(2);
    Meeting meeting(2);
    parallelFor(2, 2, [&](std::size_t i) {
      begun.come();
      if (i == busy) parallelFor(2, 2, [&](std::size_t) { meeting.come(); });
    });
  }
}

TEST(ParallelFor, ANestedCallThatAsksForMoreThreadsGetsThem) {
  Meeting meeting(4);
  parallelFor(2, 2, [&](std::size_t i) {
    if (i == 0) parallelFor(4, 4, [&](std::size_t) { meeting.come(); });
  });
}

TEST(ParallelFor, AFailureLeavesTheThreadAsItWas) {
  for (int round = 0; round < 3; ++round) {
    EXPECT_THROW(parallelFor(2, 4,
                             [](std::size_t) {
                               parallelFor(2, 2,
                                           [](std::size_t) { throw std::runtime_error("no"); });
                             }),
                 std::runtime_error);
    Meeting meeting(2);
    parallelFor(2, 2, [&](std::size_t) { meeting.come(); });
  }
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

TEST(HelpfulCondition, WhoHasSomethingElseToDoHelpsFirst) {
  std::mutex mutex;
  HelpfulCondition changed;
  bool isDone = false;
  std::atomic<int> helped{0};
  Meeting meeting(2);
  parallelFor(2, 2, [&](std::size_t i) {
    if (i == 1) {
      parallelFor(2, 2, [&](std::size_t) { meeting.come(); });
      const std::lock_guard lock(mutex);
      isDone = true;
      return;
    }
    std::unique_lock lock(mutex);
    while (!isDone) {
      if (changed.help(lock)) ++helped;
      EXPECT_TRUE(lock.owns_lock());
      lock.unlock();
      std::this_thread::yield();
      lock.lock();
    }
    EXPECT_FALSE(changed.help(lock));
  });
  EXPECT_EQ(helped, 1);
}

TEST(HelpfulCondition, HasNothingToHelpWithOnASingleThread) {
  std::mutex mutex;
  HelpfulCondition changed;
  parallelFor(1, 2, [&](std::size_t) {
    std::unique_lock lock(mutex);
    EXPECT_FALSE(changed.help(lock));
    EXPECT_TRUE(lock.owns_lock());
  });
}

TEST(HelpfulCondition, WhoWaitsHelpsWithNothingElse) {
  // The waiting task of the first call must not begin the second one's, which ends later.
  std::mutex mutex;
  HelpfulCondition changed;
  bool isDone = false;
  bool isReturned = false;
  std::condition_variable returned;
  Meeting begun(3);
  parallelFor(3, 3, [&](std::size_t i) {
    if (i == 2) return;
    if (i == 1) {
      begun.come();
      parallelFor(3, 3, [&](std::size_t) {
        std::unique_lock lock(mutex);
        EXPECT_TRUE(returned.wait_for(lock, std::chrono::minutes(1), [&] { return isReturned; }));
      });
      return;
    }
    parallelFor(2, 2, [&](std::size_t k) {
      begun.come();
      std::unique_lock lock(mutex);
      if (k == 0) {
        while (!isDone) changed.wait(lock);
        return;
      }
      lock.unlock();
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      lock.lock();
      isDone = true;
      changed.notifyAll();
    });
    const std::lock_guard lock(mutex);
    isReturned = true;
    returned.notify_all();
  });
}

TEST(HelpfulCondition, AFailureWakesWhoWaits) {
  std::mutex mutex;
  HelpfulCondition changed;
  bool hasFailed = false;
  EXPECT_THROW(parallelFor(3, 3,
                           [&](std::size_t i) {
                             std::unique_lock lock(mutex);
                             if (i < 2) {
                               while (!hasFailed) changed.wait(lock);
                               return;
                             }
                             hasFailed = true;
                             changed.notifyAll();
                             throw std::runtime_error("no");
                           }),
               std::runtime_error);
}

TEST(HelpfulCondition, LosesNoNotification) {
  constexpr int kTurns = 20'000;
  std::mutex mutex;
  HelpfulCondition changed;
  int turn = 0;
  parallelFor(3, 3, [&](std::size_t i) {
    std::unique_lock lock(mutex);
    while (turn < kTurns) {
      if (turn % 3 == static_cast<int>(i)) {
        ++turn;
        if (turn % 2 == 0) {
          lock.unlock();
          changed.notifyAll();
          lock.lock();
        } else {
          changed.notifyAll();
        }
      } else {
        changed.wait(lock);
      }
    }
  });
  EXPECT_EQ(turn, kTurns);
}

}  // namespace
}  // namespace orvane
