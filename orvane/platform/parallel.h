#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <mutex>

#include "orvane/platform/export.h"

namespace orvane {

/// Calls `task(0) … task(taskCount − 1)`, each once, on up to `threadCount` threads (the calling
/// one included), and returns when all are done. With `threadCount` 1 the calls come in order on
/// the calling thread. The first exception that a task throws is passed on after the others have
/// ended; tasks not yet begun are then dropped.
///
/// A call from within a task is served by those threads of the outer call that have nothing to do,
/// at whatever time they come. However calls nest, there are never more threads than the largest of
/// them asks for.
ORVANE_API void parallelFor(std::size_t threadCount, std::size_t taskCount,
                            const std::function<void(std::size_t)>& task);

/// For tasks of one call that wait for what others of them do: a condition variable whose waiting
/// threads meanwhile help with the calls from within these tasks.
class ORVANE_API HelpfulCondition {
 public:
  /// Returns, like a condition variable, after a notification or for no reason. To be called in a
  /// task only, with the lock held under which what is waited for changes.
  void wait(std::unique_lock<std::mutex>& lock);

  /// Helps with a call from within another task, without the lock, until nothing of it is left to
  /// begin. False, with the lock held all the time, where there is nothing to help with.
  bool help(std::unique_lock<std::mutex>& lock);

  /// To be called by tasks of the same call, with or without that lock.
  void notifyAll();

 private:
  std::atomic<std::size_t> notifications_{0};
};

}  // namespace orvane
