#include "orvane/platform/parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace orvane {

void parallelFor(std::size_t threadCount, std::size_t taskCount,
                 const std::function<void(std::size_t)>& task) {
  std::atomic<std::size_t> next{0};
  std::mutex mutex;
  std::exception_ptr failure;
  const auto work = [&] {
    for (;;) {
      const std::size_t index = next.fetch_add(1);
      if (index >= taskCount) return;
      try {
        task(index);
      } catch (...) {
        next = taskCount;
        const std::lock_guard lock(mutex);
        if (!failure) failure = std::current_exception();
      }
    }
  };
  {
    std::vector<std::jthread> helpers;
    const std::size_t helperCount = std::min(threadCount, taskCount);
    for (std::size_t i = 1; i < helperCount; ++i) {
      try {
        helpers.emplace_back(work);
      } catch (const std::system_error&) {
        break;  // no more threads to be had: those that run do the work
      }
    }
    work();
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace orvane
