#include "cli/commands/job_runner.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "orvane/platform/parallel.h"

namespace orvane::cli::JobRunner {

void run(std::size_t jobs, std::size_t count, const std::function<Report(std::size_t)>& work) {
  std::mutex mutex;
  std::map<std::size_t, Report> finished;  // waiting for their turn
  std::size_t next = 0;
  parallelFor(jobs, count, [&](std::size_t index) {
    Report report = work(index);
    const std::lock_guard lock(mutex);
    finished.emplace(index, std::move(report));
    while (!finished.empty() && finished.begin()->first == next) {
      const Report due = std::move(finished.begin()->second);
      finished.erase(finished.begin());
      ++next;
      due();
    }
  });
}

std::size_t threadsPerJob(std::size_t jobs) noexcept {
  return jobs > 1 ? 1 : std::max(1U, std::thread::hardware_concurrency());
}

}  // namespace orvane::cli::JobRunner
