#include "orvane/platform/parallel.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
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
  const Batch* outer = ofThisThread();  ///< of which a task has made the call
  std::size_t begunTasks = 0;
  std::size_t threads = 0;  ///< at work on it
  std::exception_ptr failure{};

  /// The innermost one that the calling thread is at work on.
  static const Batch*& ofThisThread() {
    thread_local const Batch* batch = nullptr;
    return batch;
  }

  bool takesThread() const { return begunTasks < taskCount && threads < threadCount; }
  bool isWithin(const Batch* other) const {
    const Batch* batch = outer;
    while (batch != nullptr && batch != other) batch = batch->outer;
    return batch == other;
  }
};

/// The threads of an outermost call: the calling one, and helpers that stay until it ends.
///
/// Whoever waits for tasks of a batch helps with what these have shared out, and with nothing else:
/// another batch may take much longer, or need in turn what the waiting thread has begun.
class Crew {
 public:
  Crew() { ofThisThread() = this; }
  Crew(const Crew&) = delete;
  Crew& operator=(const Crew&) = delete;
  ~Crew() {
    ofThisThread() = nullptr;
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
    while (batch.threads > 0) helpWithin(&batch, lock);
    std::erase(batches_, &batch);
  }

  /// For a task of the calling thread's batch: returns after helping, or once `isOver()`.
  template <typename IsOver>
  void help(IsOver&& isOver) {
    std::unique_lock lock(mutex_);
    if (!isOver()) helpWithin(Batch::ofThisThread(), lock);
  }

  /// The same without waiting, and without the task's lock when there is something to help with.
  bool helpAtOnce(std::unique_lock<std::mutex>& taskLock) {
    std::unique_lock lock(mutex_);
    Batch* const batch = openBatchWithin(Batch::ofThisThread());
    if (batch == nullptr) return false;
    taskLock.unlock();
    work(*batch, lock);
    lock.unlock();
    taskLock.lock();
    return true;
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
      } catch (const std::exception&) {
        break;  // no more threads to be had: those that run do the work
      }
    }
  }

  void serve() {
    ofThisThread() = this;
    std::unique_lock lock(mutex_);
    while (!isClosed_) helpWithin(nullptr, lock);
  }

  /// Works on a batch within that one, of all if it is null, or waits for a change.
  void helpWithin(const Batch* outer, std::unique_lock<std::mutex>& lock) {
    if (Batch* const batch = openBatchWithin(outer))
      work(*batch, lock);
    else
      changed_.wait(lock);
  }

  /// That which has the fewest threads.
  Batch* openBatchWithin(const Batch* outer) const {
    Batch* open = nullptr;
    for (Batch* batch : batches_)
      if (batch->takesThread() && batch->isWithin(outer) &&
          (open == nullptr || batch->threads < open->threads))
        open = batch;
    return open;
  }

  /// Takes tasks until all are begun; the lock is held between them.
  void work(Batch& batch, std::unique_lock<std::mutex>& lock) {
    const Batch* const outer = std::exchange(Batch::ofThisThread(), &batch);
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
    Batch::ofThisThread() = outer;
    if (--batch.threads == 0) changed_.notify_all();
  }

  std::mutex mutex_{};
  std::condition_variable changed_{};
  std::vector<Batch*> batches_{};  ///< in the order of their calls
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
  if (Crew* const crew = Crew::ofThisThread())
    crew->run(batch);
  else
    Crew().run(batch);
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

bool HelpfulCondition::help(std::unique_lock<std::mutex>& lock) {
  Crew* const crew = Crew::ofThisThread();
  return crew != nullptr && crew->helpAtOnce(lock);
}

void HelpfulCondition::notifyAll() {
  Crew* const crew = Crew::ofThisThread();
  if (crew == nullptr)
    ++notifications_;
  else
    crew->notify([&] { ++notifications_; });
}

}  // namespace orvane
