#pragma once

#include <cstddef>
#include <functional>

/// Treats many files at once and still reports them in their order.
namespace orvane::cli::JobRunner {

/// What remains to be done with one file once its turn to be reported has come.
using Report = std::function<void()>;

/// Calls `work(0) … work(count − 1)` on up to `jobs` threads, and each returned report in that
/// order, one at a time, as soon as all before it are done. With one job everything happens on the
/// calling thread. An exception stops what has not begun and is passed on.
void run(std::size_t jobs, std::size_t count, const std::function<Report(std::size_t)>& work);

/// Threads that one of `jobs` simultaneous files may use: all cores for a single one, else one.
std::size_t threadsPerJob(std::size_t jobs) noexcept;

}  // namespace orvane::cli::JobRunner
