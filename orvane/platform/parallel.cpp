#include "orvane/platform/parallel.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "orvane/platform/precondition.h"

namespace orvane {
namespace {

/// What one call shares out.
struct Batch {
  const std::function<void(std::size_t)>& task;
  std::size_t taskCount;
  std::size_t threadCount;
  std::size_t begunTasks = 0;
  std::size_t threads = 0;  ///< at work on it
  std::exception_ptr failure{};

  bool takesThread() const { return begunTasks < taskCount && threads < threadCount; }
};

/// What the calling thread is at work on, the innermost batch first.
struct Duty {
  const Batch* batch;
  const Duty* outer;

  static const Duty*& ofThisThread() {
    thread_local const Duty* duty = nullptr;
    return duty;
  }
  static bool includes(const Batch* batch) {
    const Duty* duty = ofThisThread();
    while (duty != nullptr && duty->batch != batch) duty = duty->outer;
    return duty != nullptr;
  }
};

/// The threads of an outermost call: the calling one, and helpers that stay until it ends.
class Crew {
 public:
  Crew() = default;
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;
  ~Crew() {
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    changed_.notify_all();
  }

  /// That of the calling thread; null outside of any call that has helpers.
  static Crew*& ofThisThread() {
    thread_local Crew* crew = nullptr;
    return crew;
  }

  void run(Batch& batch) {
    std::unique_lock lock(mutex_);
    hire(std::min(batch.threadCount, batch.taskCount) - 1);
    batches_.push_back(&batch);
    changed_.notify_all();
    work(batch, lock);
    changed_.wait(lock, [&] { return batch.threads == 0; });
    std::erase(batches_, &batch);
  }

  /// Returns after helping with something, or once `isOver()`.
  template <typename IsOver>
  void help(IsOver&& isOver) {
    std::unique_lock lock(mutex_);
    while (!isOver()) {
      if (Batch* const batch = openBatch()) return work(*batch, lock);
      changed_.wait(lock);
    }
  }

  template <typename Change>
  void notify(Change&& change) {
    const std::lock_guard lock(mutex_);
    change();
    changed_.notify_all();
  }

 private:
  void hire(std::size_t helpers) {
    while (helpers_.size() < helpers) {
      try {
        helpers_.emplace_back([this] { serve(); });
      } catch (const std::system_error&) {
        break;  // no more threads to be had: those that run do the work
      }
    }
  }

  void serve() {
    ofThisThread() = this;
    std::unique_lock lock(mutex_);
    while (!isClosed_) {
      if (Batch* const batch = openBatch())
        work(*batch, lock);
      else
        changed_.wait(lock);
    }
  }

  /// Not one that the calling thread is at work on: a task that waits for another one of its batch
  /// must not begin that on top of itself.
  Batch* openBatch() const {
    const auto open = std::ranges::find_if(batches_, [](const Batch* batch) {
      return batch->takesThread() && !Duty::includes(batch);
    });
    return open != batches_.end() ? *open : nullptr;
  }

  /// Takes tasks until all are begun; the lock is held between them.
  void work(Batch& batch, std::unique_lock<std::mutex>& lock) {
    const Duty duty{.batch = &batch, .outer = std::exchange(Duty::ofThisThread(), &duty)};
    ++batch.threads;
    while (batch.begunTasks < batch.taskCount) {
      const std::size_t index = batch.begunTasks++;
      lock.unlock();
      std::exception_ptr failure;
      try {
        batch.task(index);
      } catch (...) {
        failure = std::current_exception();
      }
      lock.lock();
      if (failure) {
        batch.begunTasks = batch.taskCount;
        if (!batch.failure) batch.failure = std::move(failure);
      }
    }
    Duty::ofThisThread() = duty.outer;
    if (--batch.threads == 0) changed_.notify_all();
  }

  std::mutex mutex_{};
  std::condition_variable changed_{};
  std::vector<Batch*> batches_{};  ///< the outermost first
  bool isClosed_ = false;
  std::vector<std::jthread> helpers_{};  ///< last, so that they have ended before the rest goes
};

}  // namespace

void parallelFor(std::size_t threadCount, std::size_t taskCount,
                 const std::function<void(std::size_t)>& task) {
  if (std::min(threadCount, taskCount) < 2) {
    for (std::size_t i = 0; i < taskCount; ++i) task(i);
    return;
  }
  Batch batch{.task = task, .taskCount = taskCount, .threadCount = threadCount};
  Crew*& crew = Crew::ofThisThread();
  if (crew != nullptr) {
    crew->run(batch);
  } else {
    Crew own;
    crew = &own;
    own.run(batch);
    crew = nullptr;
  }
  if (batch.failure) std::rethrow_exception(batch.failure);
}

void HelpfulCondition::wait(std::unique_lock<std::mutex>& lock) {
  Crew* const crew = Crew::ofThisThread();
  precondition(crew != nullptr, "only tasks that run beside others wait for them");
  const std::size_t seen = notifications_;
  lock.unlock();
  crew->help([&] { return notifications_ != seen; });
  lock.lock();
}

void HelpfulCondition::notifyAll() {
  Crew* const crew = Crew::ofThisThread();
  if (crew == nullptr)
    ++notifications_;
  else
    crew->notify([&] { ++notifications_; });
}

}  // namespace orvane
